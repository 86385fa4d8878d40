// The world behind the driver as a library of its own: put into a program that has the bench in it, so that
// the program's instruments and its table are of one world.
#include <windows.h>

#include "tests/windows/Relay.h"

namespace {

J4Test::Relay* relay = nullptr;

DWORD WINAPI Start(void*)
{
    relay = new J4Test::Relay;  // for the life of the process
    if (const HANDLE ready = OpenEventA(EVENT_MODIFY_STATE, FALSE, J4Test::Relay::readyEvent)) {
        SetEvent(ready);
        CloseHandle(ready);
    }
    return 0;
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_ATTACH) {
        CloseHandle(CreateThread(nullptr, 0, Start, nullptr, 0, nullptr));
    } else if (reason == DLL_PROCESS_DETACH && relay != nullptr) {
        relay->Abandon();  // or the requests of a library that ends later would wait for ever
    }
    return TRUE;
}
