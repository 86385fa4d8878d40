#include "tools/Terminal.h"

#include <cstdarg>
#include <cstdint>
#include <vector>

#include "Utilities/Tools/HexStringHelper.h"
#include "Utilities/Tools/Utf8.h"

namespace J4Tool {

using Kestrelon::Utilities::Tools::HexStringHelper;
namespace Utf8 = Kestrelon::Utilities::Tools::Utf8;

namespace {

bool IsObeyed(char32_t character)
{
    const auto isIn = [character](char32_t first, char32_t last) { return character >= first && character <= last; };
    return (isIn(0, 0x1F) && character != '\n' && character != '\t') || isIn(0x7F, 0x9F) || isIn(0x200E, 0x200F) ||
           isIn(0x2028, 0x202E) || isIn(0x2066, 0x2069);
}

}  // namespace

std::string Printable(const std::string& text)
{
    std::string shown;
    for (size_t at = 0; at < text.size();) {
        const auto character = Utf8::CharacterAt(text, at);
        const size_t bytes = character ? character->length : 1;
        if (!character || IsObeyed(character->code)) {
            for (size_t i = 0; i < bytes; ++i) {
                shown += "\\x" + HexStringHelper::ToHexString(static_cast<uint8_t>(text[at + i]), 2);
            }
        } else {
            shown.append(text, at, bytes);
        }
        at += bytes;
    }
    return shown;
}

void Print(std::FILE* stream, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::vector<char> text(static_cast<size_t>(length < 0 ? 0 : length) + 1);
    std::vsnprintf(text.data(), text.size(), format, again);
    va_end(again);
    std::fputs(Printable(std::string(text.data(), text.size() - 1)).c_str(), stream);
}

}  // namespace J4Tool
