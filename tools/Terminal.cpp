#include "tools/Terminal.h"

#include <cstdarg>
#include <cstdint>
#include <vector>

#include "Utilities/Tools/HexStringHelper.h"

namespace J4Tool {

using Kestrelon::Utilities::Tools::HexStringHelper;

namespace {

/// Bytes of the UTF-8 character at a place, 0 where there is none.
size_t CharacterLength(const std::string& text, size_t at, uint32_t& character)
{
    constexpr uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto first = static_cast<unsigned char>(text[at]);
    const size_t length = first < 0x80   ? 1
                          : first < 0xC0 ? 0
                          : first < 0xE0 ? 2
                          : first < 0xF0 ? 3
                          : first < 0xF8 ? 4
                                         : 0;
    if (length == 0 || length > text.size() - at) {
        return 0;
    }
    character = length == 1 ? first : first & (0x7Fu >> length);
    for (size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[at + i]);
        if ((next & 0xC0) != 0x80) {
            return 0;
        }
        character = character << 6 | (next & 0x3Fu);
    }
    const bool isValid =
        character >= smallest[length] && character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
    return isValid ? length : 0;
}

bool IsObeyed(uint32_t character)
{
    const auto isIn = [character](uint32_t first, uint32_t last) { return character >= first && character <= last; };
    return (isIn(0, 0x1F) && character != '\n' && character != '\t') || isIn(0x7F, 0x9F) || isIn(0x200E, 0x200F) ||
           isIn(0x2028, 0x202E) || isIn(0x2066, 0x2069);
}

}  // namespace

std::string Printable(const std::string& text)
{
    std::string shown;
    for (size_t at = 0; at < text.size();) {
        uint32_t character = 0;
        const size_t length = CharacterLength(text, at, character);
        const size_t bytes = length == 0 ? 1 : length;
        if (length == 0 || IsObeyed(character)) {
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
