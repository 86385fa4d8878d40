/*
 * An application that knows nothing of the library but its file name: takes every function by name and by ordinal,
 * uses the table with handlers written in C, and ends without giving anything back; or, with the argument "unload",
 * unloads the library before. The exit code is 0 when all went as it should, otherwise the number of the step that didn't.
 */
#include <stdio.h>
#include <string.h>
#include <windows.h>

#include "c_sdk/include/j4tavla.h"

/* In the order of their ordinals. */
static char names[] =
    "J4_Calibrate J4_TriggerMeasurement J4_GetNumberOfAvailableSamples J4_GetSpectrum "
    "J4_GetTriStimulus J4_GetDensity J4_SetSubstrate J4_SetOption J4_GetOption J4_KeyPressed "
    "J4_IsConnected J4_GetDensities J4_TriggerCountedScan J4_RegisterErrorHandler "
    "J4_RegisterDeviceMessageHandler J4_GetPosition J4_SetPosition J4_GoToHomePosition J4_Scan "
    "J4_IsTableConnected J4_SynchronizeWhitebases J4_Private";
static const unsigned firstOrdinal = 4;

static int errors;
static char lastFunction[64];
static int lastStatus;
static char lastMessage[256];
static int messages;

static void OnError(const char* functionName, int32_t status, const char* message)
{
    ++errors;
    lastStatus = (int)status;
    snprintf(lastFunction, sizeof lastFunction, "%s", functionName);
    snprintf(lastMessage, sizeof lastMessage, "%s", message);
}

static void OnDeviceMessage(int32_t message, const char* text)
{
    messages += message == 1 && strcmp(text, "240117") == 0;
}

static int step;

/* Counts the steps; the first one that fails ends the program. */
static void Expect(int good)
{
    ++step;
    if (!good) {
        fprintf(stderr, "step %d failed; last error: %s %d %s\n", step, lastFunction, lastStatus, lastMessage);
        ExitProcess((UINT)step);
    }
}

int main(int argc, char** argv)
{
    const HMODULE library = LoadLibraryA("j4tavla64.dll");
    Expect(library != NULL);
    unsigned ordinal = firstOrdinal;
    for (const char* name = strtok(names, " "); name != NULL; name = strtok(NULL, " ")) {
        const FARPROC byName = GetProcAddress(library, name);
        Expect(byName != NULL && byName == GetProcAddress(library, (LPCSTR)(ULONG_PTR)ordinal++));
    }
#define TAKE(ordinal) (void*)GetProcAddress(library, (LPCSTR)(ULONG_PTR)(ordinal))
    J4_Result (*getSpectrum)(float*, uint32_t) = TAKE(7);
    J4_Result (*setOption)(const char*, const char*) = TAKE(11);
    const char* (*getOption)(const char*) = TAKE(12);
    J4_Result (*isConnected)(void) = TAKE(14);
    J4_ErrorHandler (*registerErrorHandler)(J4_ErrorHandler) = TAKE(17);
    J4_DeviceMessageHandler (*registerDeviceMessageHandler)(J4_DeviceMessageHandler) = TAKE(18);
    J4_Result (*setPosition)(float, float) = TAKE(20);
    J4_Result (*goToHomePosition)(void) = TAKE(21);
    J4_Result (*isTableConnected)(void) = TAKE(23);

    Expect(registerErrorHandler(OnError) == NULL && registerErrorHandler(OnError) == OnError);
    Expect(registerDeviceMessageHandler(OnDeviceMessage) == NULL);
    Expect(strcmp(getOption("J4TVersion"), "Version 1.1.4  Build 104") == 0);
    Expect(getSpectrum(NULL, 0) == 10 && errors == 1 && strcmp(lastFunction, "J4_GetSpectrum") == 0);
    Expect(lastStatus == 10 && strcmp(lastMessage, "parameter must not be null") == 0);

    /* The table stands on another bench than the instruments of this process. */
    Expect(setOption("J4TUseableWithoutJ4", "yes") == 0);
    Expect(isTableConnected() == 0);
    Expect(goToHomePosition() == 0);
    Expect(setPosition(5000.0f, 5000.0f) == 102 && errors == 2 && lastStatus == 102);
    Expect(setPosition(300.0f, 300.0f) == 0);
    Expect(setOption("Simulator.Unplug", "240117") == 0 && isConnected() == 1 && messages == 1 && errors == 3);

    /* All that the table has to be freed of again. */
    Expect(setOption("J4THoldPosition", "yes") == 0);
    Expect(setOption("J4TEnableElectrostaticFoil", "yes") == 0);
    Expect(setOption("J4TEnableElectrostaticFoilButton", "no") == 0);
    Expect(errors == 3);

    if (argc > 1 && strcmp(argv[1], "unload") == 0) {
        Expect(FreeLibrary(library) && GetModuleHandleA("j4tavla64.dll") == NULL);
        Expect(GetModuleHandleA("sorvane64.dll") == NULL);
        /* Who has the instrument's library open keeps it. */
        const HMODULE again = LoadLibraryA("j4tavla64.dll");
        const HMODULE own = LoadLibraryA("sorvane64.dll");
        isTableConnected = (void*)GetProcAddress(again, "J4_IsTableConnected");
        Expect(own != NULL && isTableConnected() == 100);
        Expect(FreeLibrary(again) && GetModuleHandleA("sorvane64.dll") == own);
        Expect(FreeLibrary(own) && GetModuleHandleA("sorvane64.dll") == NULL);
    }
    return 0;
}
