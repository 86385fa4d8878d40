#include "usbio/SetupApi.h"

namespace {

template <class Function>
bool Resolve(HMODULE library, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    return function != nullptr;
}

}  // namespace

const SetupApi* SetupApi::Instance()
{
    static SetupApi instance;
    return instance.library != nullptr || instance.Load() ? &instance : nullptr;
}

SetupApi::~SetupApi() { Unload(); }

bool SetupApi::Load()
{
    library = LoadLibraryA("setupapi.dll");
    if (library == nullptr) {
        return false;
    }
    if (Resolve(library, "SetupDiGetClassDevsA", getClassDevs) &&
        Resolve(library, "SetupDiDestroyDeviceInfoList", destroyDeviceInfoList) &&
        Resolve(library, "SetupDiEnumDeviceInterfaces", enumDeviceInterfaces) &&
        Resolve(library, "SetupDiGetDeviceInterfaceDetailA", getDeviceInterfaceDetail)) {
        return true;
    }
    Unload();
    return false;
}

void SetupApi::Unload()
{
    if (library != nullptr) {
        FreeLibrary(library);
    }
    library = nullptr;
    getClassDevs = nullptr;
    destroyDeviceInfoList = nullptr;
    enumDeviceInterfaces = nullptr;
    getDeviceInterfaceDetail = nullptr;
}
