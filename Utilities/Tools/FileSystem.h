// What writing a file safely needs of the operating system beyond the language's library. Each platform's folder defines
// it.
#pragma once

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace Kestrelon::Utilities::Tools {

/// Opens a file for writing that must not exist yet. @return null with errno when that failed
std::FILE* CreateNew(const std::filesystem::path& file);

/// Returns when everything written to the stream is on the disk. @return false with errno when that failed
bool WriteThrough(std::FILE* stream);

/// Puts a file in the place of another, which may exist; readers see the one or the other.
/// @param isLasting  returns when also the new name is on the disk
/// @return the system's reason when that failed
std::error_code MoveOver(const std::filesystem::path& from, const std::filesystem::path& to, bool isLasting);

}  // namespace Kestrelon::Utilities::Tools
