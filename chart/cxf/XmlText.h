// Texts as they stand in an XML 1.0 file, between tags and in attributes alike.
#pragma once

#include <string>

namespace J4Chart {

/// With the characters escaped that XML or the normalising of attributes would take for something else.
/// @param line  where the text came from
/// @throws CgatsError for a text that no XML file can hold: control characters, what is not UTF-8
std::string XmlText(const std::string& text, int line);

}  // namespace J4Chart
