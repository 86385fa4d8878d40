#include "Utilities/Tools/StringTools.h"

#include <cstddef>

namespace Kestrelon::Utilities::Tools {

std::vector<std::string> SplitAtBlanks(const std::string& text)
{
    std::vector<std::string> words;
    std::size_t begin = text.find_first_not_of(' ');
    while (begin != std::string::npos) {
        const std::size_t end = text.find(' ', begin);
        words.push_back(text.substr(begin, end - begin));
        begin = text.find_first_not_of(' ', end);
    }
    return words;
}

std::string DropFirstTwoLines(const std::string& text)
{
    const std::size_t first = text.find('\n');
    const std::size_t second = first == std::string::npos ? first : text.find('\n', first + 1);
    return second == std::string::npos ? text : text.substr(second + 1);
}

}  // namespace Kestrelon::Utilities::Tools
