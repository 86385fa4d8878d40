#include "Utilities/Tools/Utf8.h"

#include <algorithm>

namespace Kestrelon::Utilities::Tools::Utf8 {

std::optional<Character> CharacterAt(std::string_view text, size_t at)
{
    constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto first = static_cast<unsigned char>(text[at]);
    const size_t length = first < 0x80   ? 1
                          : first < 0xC0 ? 0
                          : first < 0xE0 ? 2
                          : first < 0xF0 ? 3
                          : first < 0xF8 ? 4
                                         : 0;
    if (length == 0 || length > text.size() - at) {
        return std::nullopt;
    }
    char32_t code = length == 1 ? first : first & (0x7Fu >> length);
    for (size_t i = 1; i < length; ++i) {
        if (!IsFurther(text[at + i])) {
            return std::nullopt;
        }
        code = code << 6 | (static_cast<unsigned char>(text[at + i]) & 0x3Fu);
    }
    if (code < smallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
        return std::nullopt;
    }
    return Character{code, length};
}

size_t Count(std::string_view text)
{
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char byte) { return !IsFurther(byte); }));
}

}  // namespace Kestrelon::Utilities::Tools::Utf8
