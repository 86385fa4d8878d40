// The few things of the operating system that the tool needs beyond the language's library. Each platform's
// folder defines them.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

namespace J4Tool::Platform {

/// Folder of the running program.
std::filesystem::path ProgramFolder();

/// File name of a shared library, for instance "libj4tavla64.so" for "j4tavla64".
std::string LibraryFileName(const std::string& name);

/// Lets the system look into a folder for libraries, and for what they need; never into the current one, where anybody's
/// files may lie. Each call's folder takes the place of the one before.
void AddLibraryFolder(const std::filesystem::path& folder);

/// Where programs keep what they know from one run to the next, for this user; empty where nobody knows.
std::filesystem::path StateFolder();

/// Has the console show UTF-8 as long as the program runs.
void PrepareConsole();

/// True when a person reads the stream, or types into it.
bool IsTerminal(std::FILE* stream);

/// Lets bytes that are written to a stream arrive as they are: line ends stay what they were.
void KeepBytes(std::FILE* stream);

/// Waits for what a person types into standard input. @return false when nothing came for this long
bool WaitForInput(int milliseconds);

/// Characters in a line of the terminal; 80 where nobody knows.
int TerminalWidth();

/// Has a function called when the person or the system asks the program to end: Ctrl-C, a closed terminal or pipe, a
/// logoff. It is called at any moment, may do only what a signal handler may, and the program goes on.
void OnEndRequest(void (*handler)());

/// While it lives no signal ends or stops the program but those of OnEndRequest, which are only noted, and those that
/// nothing can keep off; the others wait.
class SignalShield {
public:
    SignalShield();
    ~SignalShield();
    SignalShield(const SignalShield&) = delete;
    SignalShield& operator=(const SignalShield&) = delete;

private:
    struct Mask;
    std::unique_ptr<Mask> before;
};

/// Writes a text to standard error at once; a signal handler may call it.
void WriteNow(const char* text);

/// Opens a file for appending that must exist. @return null with errno when that failed
std::FILE* OpenToAppend(const std::filesystem::path& file);

/// Cuts a file that is open for writing to a length, in bytes. @return false with errno when that failed
bool CutTo(std::FILE* stream, long long length);

}  // namespace J4Tool::Platform
