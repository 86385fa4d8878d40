// The few operations on texts that facade and table share.
#pragma once

#include <string>
#include <vector>

namespace Kestrelon::Utilities::Tools {

/// The words of a text, separated by blanks. Leading, trailing and repeated blanks never make empty words.
std::vector<std::string> SplitAtBlanks(const std::string& text);

/// The instrument's library puts two lines of its own in front of its extended error text: what follows
/// the second line feed, or the whole text when there are fewer than two.
std::string DropFirstTwoLines(const std::string& text);

}  // namespace Kestrelon::Utilities::Tools
