// The few operations on texts that several classes share.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "Utilities/Tools/ClassicStream.h"

namespace Kestrelon::Utilities::Tools {

/// The parts, one after the other, as text.
template <class... Parts>
std::string Text(const Parts&... parts)
{
    ClassicStream<std::ostringstream> stream;
    (stream << ... << parts);
    return stream.str();
}

/// The words of a text, separated by blanks. Leading, trailing and repeated blanks never make empty words.
std::vector<std::string> SplitAtBlanks(const std::string& text);

/// The instrument's library puts two lines of its own in front of its extended error text: what follows
/// the second line feed, or the whole text when there are fewer than two.
std::string DropFirstTwoLines(const std::string& text);

}  // namespace Kestrelon::Utilities::Tools
