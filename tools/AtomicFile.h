// Writes a file so that it is there whole or not at all: into a temporary file beside it, through to the disk,
// then renamed.
#pragma once

#include <string>

namespace J4Tool {

/// @throws ToolError; the file is as it was then
void WriteAtomically(const std::string& fileName, const std::string& content);

/// Tries whether the file could be written, before a long work is done for it.
/// @throws ToolError
void RequireWritable(const std::string& fileName);

}  // namespace J4Tool
