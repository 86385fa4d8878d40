#include "tests/windows/RealLibrary.h"

#include <stdexcept>

#include "c_sdk/include/j4tavla.h"
#include "tests/windows/DriverTest.h"

namespace J4Test {

namespace {

HMODULE current = nullptr;

template <class Function>
Function* Loaded(Function*, const char* name)
{
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(current, name)));
}

}  // namespace

RealLibrary::RealLibrary() : module(LoadLibraryA(File().c_str()))
{
    if (module == nullptr) {
        throw std::runtime_error(File() + " can't be loaded, error " + std::to_string(GetLastError()));
    }
    current = module;
}

RealLibrary::~RealLibrary()
{
    current = nullptr;
    FreeLibrary(module);
}

std::string RealLibrary::File()
{
    const std::string folder = ProgramFolder();
    return folder.substr(0, folder.rfind('\\', folder.size() - 2) + 1) + "real\\j4tavla64.dll";
}

}  // namespace J4Test

#define J4_LOADED(name) J4Test::Loaded(&name, #name)

extern "C" {

J4_Result J4_Calibrate(void) { return J4_LOADED(J4_Calibrate)(); }

J4_Result J4_TriggerMeasurement(void) { return J4_LOADED(J4_TriggerMeasurement)(); }

int32_t J4_GetNumberOfAvailableSamples(void) { return J4_LOADED(J4_GetNumberOfAvailableSamples)(); }

J4_Result J4_GetSpectrum(float* spectrum, uint32_t index) { return J4_LOADED(J4_GetSpectrum)(spectrum, index); }

J4_Result J4_SetOption(const char* key, const char* value) { return J4_LOADED(J4_SetOption)(key, value); }

const char* J4_GetOption(const char* key) { return J4_LOADED(J4_GetOption)(key); }

J4_Result J4_IsConnected(void) { return J4_LOADED(J4_IsConnected)(); }

J4_ErrorHandler J4_RegisterErrorHandler(J4_ErrorHandler handler) { return J4_LOADED(J4_RegisterErrorHandler)(handler); }

J4_DeviceMessageHandler J4_RegisterDeviceMessageHandler(J4_DeviceMessageHandler handler)
{
    return J4_LOADED(J4_RegisterDeviceMessageHandler)(handler);
}

J4_Result J4_GetPosition(float* x, float* y) { return J4_LOADED(J4_GetPosition)(x, y); }

J4_Result J4_SetPosition(float x, float y) { return J4_LOADED(J4_SetPosition)(x, y); }

J4_Result J4_GoToHomePosition(void) { return J4_LOADED(J4_GoToHomePosition)(); }

J4_Result J4_Scan(float startX, float startY, float endX, float endY)
{
    return J4_LOADED(J4_Scan)(startX, startY, endX, endY);
}

J4_Result J4_IsTableConnected(void) { return J4_LOADED(J4_IsTableConnected)(); }

}  // extern "C"
