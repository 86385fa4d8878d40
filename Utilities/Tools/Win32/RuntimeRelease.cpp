// Gives back, when the DLL is unloaded, what its statically linked run-time never does: the slot for data of each
// thread, which it takes from the process when the first exception is thrown, and the memory that it keeps for
// exceptions when there is no other. A process has 1088 slots, and one that loads and unloads the library again and
// again would run out of them.
#include <windows.h>

#include <cstdlib>

extern "C" const IMAGE_TLS_DIRECTORY _tls_used;

namespace __gnu_cxx {
void __freeres();
}

namespace {

constexpr LONG MaximumSlots = 8;

DWORD slots[MaximumSlots];
LONG slotCount = 0;
HINSTANCE library = nullptr;
bool isUnloading = false;

/// The run-time's TlsAlloc. Past the maximum a slot is given and not kept. Nothing in it may need the slot itself, such as
/// an object that is made at its first use.
DWORD WINAPI AllocateSlot()
{
    const auto allocate = GetProcAddress(GetModuleHandleA("kernel32.dll"), "TlsAlloc");
    const DWORD slot = reinterpret_cast<DWORD(WINAPI*)()>(reinterpret_cast<void*>(allocate))();
    if (slot != TLS_OUT_OF_INDEXES && slotCount < MaximumSlots) {
        slots[slotCount++] = slot;
    }
    return slot;
}

void Release()
{
    if (!isUnloading) {
        return;  // at the end of the process the system takes all, and other threads may have ended amid anything
    }
    // The run-time frees a thread's data when the thread ends; to its eyes this one does so now.
    auto callback = reinterpret_cast<const PIMAGE_TLS_CALLBACK*>(_tls_used.AddressOfCallBacks);
    for (; *callback != nullptr; ++callback) {
        (*callback)(library, DLL_THREAD_DETACH, nullptr);
    }
    while (slotCount > 0) {
        TlsFree(slots[--slotCount]);
    }
    __gnu_cxx::__freeres();
}

/// Before all other constructors, so that it comes after all destructors: they may throw and catch.
[[gnu::constructor(101)]] void ReleaseAtTheEnd() { std::atexit(Release); }

}  // namespace

extern "C" {

/// The entry of the import table through which the run-time calls; this one is taken in place of the system's.
extern DWORD(WINAPI* const __imp_TlsAlloc)();
DWORD(WINAPI* const __imp_TlsAlloc)() = AllocateSlot;

/// Called before the destructors.
BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved)
{
    library = instance;
    isUnloading = reason == DLL_PROCESS_DETACH && reserved == nullptr;
    return TRUE;
}
}
