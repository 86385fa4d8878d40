// Writes a file so that it is there whole or not at all: into a temporary file beside it, through to the disk,
// then renamed.
#pragma once

#include <optional>
#include <string>

namespace J4Tool {

/// @throws ToolError; the file is as it was then
void WriteAtomically(const std::string& fileName, const std::string& content);

/// The whole content of a file; nothing where it can't be opened or read to its end.
std::optional<std::string> ContentOf(const std::string& fileName);

/// Tries whether the file could be written, before a long work is done for it.
/// @throws ToolError
void RequireWritable(const std::string& fileName);

}  // namespace J4Tool
