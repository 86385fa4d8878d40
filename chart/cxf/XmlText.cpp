#include "chart/cxf/XmlText.h"

#include <cstdint>
#include <cstdio>

#include "Utilities/Tools/Utf8.h"
#include "chart/cgats/CgatsError.h"

namespace J4Chart {

namespace Utf8 = Kestrelon::Utilities::Tools::Utf8;

namespace {

constexpr char32_t NoCharacter = 0xFFFFFFFF;

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
        const auto found = Utf8::CharacterAt(text, at);
        const char32_t character = found ? found->code : NoCharacter;
        at += found ? found->length : 1;
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
