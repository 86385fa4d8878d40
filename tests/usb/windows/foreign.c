/*
 * An application that knows nothing of the library but its file name and ordinals: uses the table and ends without giving
 * anything back; or, with the argument "unload", unloads the library before. The exit code is 0 when all went as it
 * should, otherwise the number of the step that didn't.
 */
#include <stdio.h>
#include <string.h>
#include <windows.h>

#include "c_sdk/include/j4tavla.h"

static int step;

/* Counts the steps; the first one that fails ends the program. */
static void Expect(int good)
{
    ++step;
    if (!good) {
        fprintf(stderr, "step %d failed\n", step);
        ExitProcess((UINT)step);
    }
}

/* The slot for data of each thread that the process would get next. */
static DWORD NextSlot(void)
{
    const DWORD slot = TlsAlloc();
    TlsFree(slot);
    return slot;
}

int main(int argc, char** argv)
{
    const HMODULE library = LoadLibraryA("j4tavla64.dll");
    Expect(library != NULL);
#define TAKE(ordinal) (void*)GetProcAddress(library, (LPCSTR)(ULONG_PTR)(ordinal))
    J4_Result (*setOption)(const char*, const char*) = TAKE(11);
    const char* (*getOption)(const char*) = TAKE(12);
    J4_Result (*goToHomePosition)(void) = TAKE(21);
    J4_Result (*isTableConnected)(void) = TAKE(23);

    Expect(strcmp(getOption("J4TVersion"), "Version 1.1.4  Build 104") == 0);
    /* The table stands on another bench than the instruments of this process. */
    Expect(setOption("J4TUseableWithoutJ4", "yes") == 0);
    Expect(isTableConnected() == 0);
    Expect(goToHomePosition() == 0);

    /* All that the table has to be freed of again. */
    Expect(setOption("J4THoldPosition", "yes") == 0);
    Expect(setOption("J4TEnableElectrostaticFoil", "yes") == 0);
    Expect(setOption("J4TEnableElectrostaticFoilButton", "no") == 0);

    if (argc > 1 && strcmp(argv[1], "unload") == 0) {
        Expect(FreeLibrary(library) && GetModuleHandleA("j4tavla64.dll") == NULL);
        Expect(GetModuleHandleA("sorvane64.dll") == NULL);
        /* Who has the instrument's library open keeps it. */
        const HMODULE own = LoadLibraryA("sorvane64.dll");
        Expect(own != NULL);
        /* Exceptions are thrown in each round, and their slot is free again after it. */
        DWORD slot = 0;
        for (int round = 0; round < 5; ++round) {
            const HMODULE again = LoadLibraryA("j4tavla64.dll");
            isTableConnected = (void*)GetProcAddress(again, "J4_IsTableConnected");
            Expect(isTableConnected() == 100);
            Expect(FreeLibrary(again) && GetModuleHandleA("sorvane64.dll") == own);
            Expect(round == 0 || NextSlot() == slot);
            slot = NextSlot();
        }
        Expect(FreeLibrary(own) && GetModuleHandleA("sorvane64.dll") == NULL);
    }
    return 0;
}
