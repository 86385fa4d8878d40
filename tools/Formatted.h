// A number in a text for people, by a format of printf.
#pragma once

#include <cstdio>
#include <string>

namespace J4Tool {

/// @param format  with one place for a double; what it makes is cut at 63 characters
inline std::string Formatted(const char* format, double value)
{
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

}  // namespace J4Tool
