// What the tool says to people. Serial numbers, names and texts come from files and devices, and a terminal obeys what it
// finds in them: nothing is shown but by these functions.
#pragma once

#include <cstdio>
#include <string>

namespace J4Tool {

/// The text with what a terminal would obey, or what is not UTF-8, as "\x1b" byte by byte: all control characters but line
/// feed and tab, and those that turn the direction of writing.
std::string Printable(const std::string& text);

/// std::fprintf of what is printable in the result. Carriage returns in the format are for the caller to write.
__attribute__((format(gnu_printf, 2, 3))) void Print(std::FILE* stream, const char* format, ...);

}  // namespace J4Tool
