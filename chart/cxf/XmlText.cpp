#include "chart/cxf/XmlText.h"

#include <cstdint>
#include <cstdio>

#include "chart/cgats/CgatsError.h"

namespace J4Chart {

namespace {

/// Takes the character of a text that begins at a place, and goes on to the next.
/// @return nothing that is a character where the bytes are not UTF-8
char32_t NextCharacter(const std::string& text, size_t& at)
{
    constexpr char32_t none = 0xffffffff;
    const auto byte = [&text](size_t place) { return static_cast<uint8_t>(text[place]); };
    const uint8_t first = byte(at++);
    if (first < 0x80) {
        return first;
    }
    const int further = first >= 0xf0 ? 3 : first >= 0xe0 ? 2 : 1;
    if (first < 0xc2 || first > 0xf4) {
        return none;
    }
    char32_t character = first & (0x3f >> further);
    for (int i = 0; i < further; ++i, ++at) {
        if (at >= text.size() || (byte(at) & 0xc0) != 0x80) {
            return none;
        }
        character = (character << 6) | (byte(at) & 0x3f);
    }
    constexpr char32_t smallest[] = {0, 0x80, 0x800, 0x10000};
    return character < smallest[further] ? none : character;
}

bool IsOfXml(char32_t character)
{
    return character == '\t' || character == '\n' || character == '\r' || (character >= 0x20 && character < 0xd800) ||
           (character >= 0xe000 && character < 0xfffe) || (character >= 0x10000 && character < 0x110000);
}

}  // namespace

std::string XmlText(const std::string& text, int line)
{
    std::string escaped;
    for (size_t at = 0; at < text.size();) {
        const size_t begin = at;
        const char32_t character = NextCharacter(text, at);
        if (!IsOfXml(character)) {
            char byte[8];
            std::snprintf(byte, sizeof byte, "0x%02x", static_cast<uint8_t>(text[begin]));
            throw CgatsError(line, std::string("no XML file can hold a text with the ") +
                                       (character < 0x20 ? "control character " : "byte ") + byte +
                                       (character < 0x20 ? "" : ", which is not UTF-8 for any of its characters"));
        }
        switch (character) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\t':
        case '\n':
        case '\r':
            escaped += "&#" + std::to_string(static_cast<int>(character)) + ";";
            break;
        default:
            escaped.append(text, begin, at - begin);
        }
    }
    return escaped;
}

}  // namespace J4Chart
