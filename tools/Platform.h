// The few things of the operating system that the tool needs beyond the language's library. Each platform's
// folder defines them.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

namespace J4Tool::Platform {

/// Folder of the running program.
std::filesystem::path ProgramFolder();

/// File name of a shared library, for instance "libj4tavla64.so" for "j4tavla64".
std::string LibraryFileName(const std::string& name);

/// Lets the system look into a folder for what a library there needs.
void AddLibraryFolder(const std::filesystem::path& folder);

/// True when a person reads the stream, or types into it.
bool IsTerminal(std::FILE* stream);

/// Characters in a line of the terminal; 80 where nobody knows.
int TerminalWidth();

/// Opens a file for writing that must not exist yet. @return null with errno when that failed
std::FILE* CreateNew(const std::filesystem::path& file);

/// Returns when everything written to the stream is on the disk. @return false with errno when that failed
bool WriteThrough(std::FILE* stream);

/// Puts a file in the place of another, which may exist; readers see the one or the other. @return the system's
/// reason when that failed
std::error_code MoveOver(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace J4Tool::Platform
