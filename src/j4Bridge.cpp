#include "src/j4Bridge.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/StaticObject.h"

namespace Kestrelon::DeviceDriver::J4T {

using Utilities::Exceptions::LengthException;
using Utilities::Exceptions::RuntimeException;
using Utilities::Tools::LibraryLoader;
using Utilities::Tools::SmartPointer;

namespace {

constexpr const char* libraryFileName = "sorvane64.dll";

}  // namespace

const std::array<const char*, j4Bridge::SlotCount> j4Bridge::functionNames = {
    "J4_IsConnected", "J4_KeyPressed",           "J4_GetNumberOfAvailableSamples",
    "J4_Calibrate",   "J4_TriggerMeasurement",   "J4_TriggerCountedScan",
    "J4_GetSpectrum", "J4_GetTriStimulus",       "J4_GetDensities",
    "J4_GetDensity",  "J4_SetSubstrate",         "J4_SetOption",
    "J4_GetOption",   "J4_RegisterErrorHandler", "J4_RegisterDeviceMessageHandler",
    "J4_Private",
};

std::string CopyLibraryText(const char* text)
try {
    const std::size_t length = text != nullptr ? strnlen(text, MaximumTextLength + 1) : 0;
    if (length > MaximumTextLength) {
        throw LengthException("Text in j4 SDK is too long.");
    }
    return std::string(text != nullptr ? text : "", length);
}
J4T_TRACE_FRAME

SmartPointer<j4Bridge>& j4Bridge::StaticInstance()
{
    return Utilities::Tools::StaticObject<[] { return SmartPointer<j4Bridge>(); }>::Get();
}

SmartPointer<j4Bridge> j4Bridge::Instance()
try {
    SmartPointer<j4Bridge>& instance = StaticInstance();
    if (instance.IsNull()) {
        instance = SmartPointer<j4Bridge>(new j4Bridge());
    }
    instance->ThrowIfInvalid();
    return instance;
}
J4T_TRACE_FRAME

void j4Bridge::UnloadInstance() { StaticInstance() = 0; }

j4Bridge::j4Bridge()
try {
    LoadLibraryA();
}
J4T_TRACE_FRAME

/// Whatever is wrong with the library becomes a J4LibraryException, so that callers see one type.
void j4Bridge::LoadLibraryA()
try {
    library = SmartPointer<LibraryLoader>(new LibraryLoader(libraryFileName, 0));
    for (std::size_t slot = 0; slot < SlotCount; ++slot) {
        functions[slot] = library->doResolve(functionNames[slot]);
    }
    ThrowIfInvalid();
} catch (J4LibraryException& exception) {
    exception.AddTrace(J4T_TRACE_HERE);
    throw;
} catch (const std::bad_alloc&) {
    Utilities::Exceptions::RethrowTraced(J4T_TRACE_HERE);
} catch (const RuntimeException& exception) {
    throw J4LibraryException(exception.text(), J4T_TRACE_HERE);
} catch (...) {
    throw J4LibraryException(std::string("Can't load ") + libraryFileName + ".", J4T_TRACE_HERE);
}

void j4Bridge::ThrowIfInvalid() const
try {
    if (std::find(functions.begin(), functions.end(), nullptr) != functions.end()) {
        throw J4LibraryException("Invalid j4SDK function pointer.");
    }
}
J4T_TRACE_FRAME

std::string j4Bridge::GetPath()
try {
    return library.IsNull() ? std::string() : library->GetLibraryPath();
}
J4T_TRACE_FRAME

void j4Bridge::SetHandlers()
try {
    if (handlersPending) {
        J4_RegisterErrorHandler(errorHandler);
        J4_RegisterDeviceMessageHandler(deviceMessageHandler);
        handlersPending = false;
    }
}
J4T_TRACE_FRAME

int32_t j4Bridge::J4_IsConnected()
try {
    return Forward<SlotIsConnected>();
}
J4T_TRACE_FRAME

int32_t j4Bridge::J4_KeyPressed()
try {
    return Forward<SlotKeyPressed>();
}
J4T_TRACE_FRAME

int32_t j4Bridge::J4_GetNumberOfAvailableSamples()
try {
    return Forward<SlotGetNumberOfAvailableSamples>();
}
J4T_TRACE_FRAME

int32_t j4Bridge::J4_Calibrate()
try {
    return Forward<SlotCalibrate>();
}
J4T_TRACE_FRAME

int32_t j4Bridge::J4_TriggerMeasurement()
try {
    return Forward<SlotTriggerMeasurement>();
}
J4T_TRACE_FRAME

int32_t j4Bridge::J4_TriggerCountedScan(uint32_t count)
try {
    return Forward<SlotTriggerCountedScan>(count);
}
J4T_TRACE_FRAME

int32_t j4Bridge::J4_GetSpectrum(float* spectrum, uint32_t index)
try {
    return Forward<SlotGetSpectrum>(spectrum, index);
}
J4T_TRACE_FRAME

int32_t j4Bridge::J4_GetTriStimulus(float* tristimulus, uint32_t index)
try {
    return Forward<SlotGetTriStimulus>(tristimulus, index);
}
J4T_TRACE_FRAME

int32_t j4Bridge::J4_GetDensities(float* densities, int32_t* densityIndex, uint32_t index)
try {
    return Forward<SlotGetDensities>(densities, densityIndex, index);
}
J4T_TRACE_FRAME

int32_t j4Bridge::J4_GetDensity(float* density, uint32_t index)
try {
    return Forward<SlotGetDensity>(density, index);
}
J4T_TRACE_FRAME

int32_t j4Bridge::J4_SetSubstrate(float* substrate)
try {
    return Forward<SlotSetSubstrate>(substrate);
}
J4T_TRACE_FRAME

int32_t j4Bridge::J4_SetOption(const std::string& key, const std::string& value)
try {
    if (key == "Reset") {
        // The library forgets its handlers with it; the next forwarded call brings them back.
        handlersPending = true;
        return Call<SlotSetOption>(key.c_str(), value.c_str());
    }
    return Forward<SlotSetOption>(key.c_str(), value.c_str());
}
J4T_TRACE_FRAME

std::string j4Bridge::J4_GetOption(const std::string& key)
try {
    return CopyLibraryText(Forward<SlotGetOption>(key.c_str()));
}
J4T_TRACE_FRAME

J4_ErrorHandler j4Bridge::J4_RegisterErrorHandler(J4_ErrorHandler handler)
try {
    errorHandler = handler;
    return Call<SlotRegisterErrorHandler>(handler);
}
J4T_TRACE_FRAME

J4_DeviceMessageHandler j4Bridge::J4_RegisterDeviceMessageHandler(J4_DeviceMessageHandler handler)
try {
    deviceMessageHandler = handler;
    return Call<SlotRegisterDeviceMessageHandler>(handler);
}
J4T_TRACE_FRAME

intptr_t j4Bridge::J4_Private(uint32_t operation, void* record)
try {
    return Call<SlotPrivate>(operation, record);
}
J4T_TRACE_FRAME

intptr_t j4Bridge::J4_Private(PrivateOperation operation, void* record)
{
    return J4_Private(static_cast<uint32_t>(operation), record);
}

}  // namespace Kestrelon::DeviceDriver::J4T
