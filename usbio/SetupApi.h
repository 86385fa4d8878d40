// The four functions of the Windows Setup API that find device interfaces, taken from "setupapi.dll" at the
// first use, so that nothing is linked to it.
#pragma once

#include <windows.h>
// The Setup API's header has to follow.
#include <setupapi.h>

class SetupApi {
public:
    /// The process's table of functions, or null when the Setup API is missing; a failed load is tried again
    /// at the next call.
    static const SetupApi* Instance();

    decltype(&SetupDiGetClassDevsA) getClassDevs = nullptr;
    decltype(&SetupDiDestroyDeviceInfoList) destroyDeviceInfoList = nullptr;
    decltype(&SetupDiEnumDeviceInterfaces) enumDeviceInterfaces = nullptr;
    decltype(&SetupDiGetDeviceInterfaceDetailA) getDeviceInterfaceDetail = nullptr;

    SetupApi(const SetupApi&) = delete;
    SetupApi& operator=(const SetupApi&) = delete;

private:
    SetupApi() = default;
    ~SetupApi();
    bool Load();
    void Unload();

    HMODULE library = nullptr;
};
