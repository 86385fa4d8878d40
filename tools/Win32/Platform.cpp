#include "tools/Platform.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "Utilities/Tools/Environment.h"
#include "Utilities/Tools/FilePath.h"

namespace J4Tool::Platform {

std::filesystem::path ProgramFolder()
{
    std::wstring name(32768, L'\0');
    name.resize(GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
    return std::filesystem::path(name).parent_path();
}

std::filesystem::path StateFolder()
{
    return Kestrelon::Utilities::Tools::PathOf(Kestrelon::Utilities::Tools::EnvironmentText("LOCALAPPDATA"));
}

std::string LibraryFileName(const std::string& name) { return name + ".dll"; }

void AddLibraryFolder(const std::filesystem::path& folder) { SetDllDirectoryW(folder.c_str()); }

void PrepareConsole()
{
    // The code page is the console's, not the program's: who sits at it gets it back.
    static const UINT before = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    std::atexit([] { SetConsoleOutputCP(before); });
}

bool IsTerminal(std::FILE* stream)
{
    // Not _isatty: that calls NUL a terminal too.
    DWORD mode = 0;
    return GetConsoleMode(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream))), &mode) != 0;
}

void KeepBytes(std::FILE* stream)
{
    std::fflush(stream);
    _setmode(_fileno(stream), _O_BINARY);
}

bool WaitForInput(int)
{
    return true;  // reading a line ends by itself at Ctrl-C
}

int TerminalWidth()
{
    CONSOLE_SCREEN_BUFFER_INFO info{};
    return GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info) != 0
               ? info.srWindow.Right - info.srWindow.Left + 1
               : 80;
}

namespace {

void (*endHandler)() = nullptr;

BOOL WINAPI OnConsoleEvent(DWORD event)
{
    endHandler();
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        // Once this returns the system ends the program; the work ends it sooner, and lets the table go.
        Sleep(INFINITE);
    }
    return TRUE;
}

}  // namespace

void OnEndRequest(void (*handler)())
{
    endHandler = handler;
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

// Console events come to a handler on a thread of their own, which only notes them; there is nothing else to keep off.
struct SignalShield::Mask {};

SignalShield::SignalShield() = default;

SignalShield::~SignalShield() = default;

void WriteNow(const char* text)
{
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, static_cast<DWORD>(std::strlen(text)), &written, nullptr);
}

std::FILE* OpenToAppend(const std::filesystem::path& file)
{
    const int handle = _wopen(file.c_str(), _O_WRONLY | _O_APPEND | _O_BINARY);
    return handle < 0 ? nullptr : _fdopen(handle, "ab");
}

bool CutTo(std::FILE* stream, long long length) { return _chsize_s(_fileno(stream), length) == 0; }

}  // namespace J4Tool::Platform
