// Numbers with a fixed number of decimals.
#pragma once

#include <charconv>
#include <string>

namespace J4Tool {

/// With a point in every locale, and no minus before zero.
/// @param value  finite
inline std::string FixedText(double value, int decimals)
{
    char text[400];  // the largest has 309 digits before the point
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr;
    const std::string fixed(text, end);
    return fixed.find_first_not_of("-0.") == std::string::npos && fixed.front() == '-' ? fixed.substr(1) : fixed;
}

}  // namespace J4Tool
