#include "tools/make/PdfText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "Utilities/Tools/Utf8.h"

namespace J4Tool::PdfText {

namespace Utf8 = Kestrelon::Utilities::Tools::Utf8;

namespace {

constexpr char32_t Unknown = '?';

/// Takes the first character off a text; each byte that is not UTF-8 is unknown.
char32_t TakeCharacter(std::string_view& text)
{
    const auto character = Utf8::CharacterAt(text);
    text.remove_prefix(character ? character->length : 1);
    return character ? character->code : Unknown;
}

/// The code of a character in WinAnsi.
unsigned char WinAnsi(char32_t character)
{
    if ((character >= 0x20 && character < 0x7f) || (character >= 0xa0 && character < 0x100)) {
        return static_cast<unsigned char>(character);
    }
    struct Special {
        char32_t character;
        unsigned char code;
    };
    constexpr std::array<Special, 9> specials = {{{0x20ac, 0x80},
                                                  {0x2026, 0x85},
                                                  {0x2018, 0x91},
                                                  {0x2019, 0x92},
                                                  {0x201c, 0x93},
                                                  {0x201d, 0x94},
                                                  {0x2022, 0x95},
                                                  {0x2013, 0x96},
                                                  {0x2014, 0x97}}};
    for (const Special& special : specials) {
        if (special.character == character) {
            return special.code;
        }
    }
    return Unknown;
}

/// Advance of a character in bold Helvetica, thousandths of the font's height; of those beyond ASCII the widest of them.
int Advance(unsigned char code)
{
    constexpr unsigned char first = 0x20;
    constexpr std::array<short, 95> widths = {
        278, 333, 474, 556, 556, 889, 722, 238, 333, 333, 389, 584, 278, 333, 278, 278, 556, 556, 556,
        556, 556, 556, 556, 556, 556, 556, 333, 333, 584, 584, 584, 611, 975, 722, 722, 722, 722, 667,
        611, 778, 722, 278, 556, 722, 611, 833, 722, 778, 667, 778, 722, 667, 611, 722, 667, 944, 667,
        667, 611, 333, 278, 333, 584, 556, 333, 556, 611, 556, 611, 556, 333, 611, 611, 278, 278, 556,
        278, 889, 611, 611, 611, 611, 389, 556, 333, 611, 556, 778, 556, 556, 500, 389, 280, 389, 584};
    constexpr int widest = 1000;       // long dash, ellipsis, the Danish letters
    constexpr int widestAccent = 778;  // letters with accents
    return code < 0x7f                    ? widths[code - first]
           : code < 0xc0                  ? widest
           : code == 0xc6 || code == 0xe6 ? widest
                                          : widestAccent;
}

std::string Formatted(const char* format, unsigned value)
{
    char text[16];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

}  // namespace

std::string Shown(std::string_view text)
{
    std::string shown = "(";
    while (!text.empty()) {
        const unsigned char code = WinAnsi(TakeCharacter(text));
        if (code == '(' || code == ')' || code == '\\') {
            shown += '\\';
        }
        shown += code < 0x7f ? std::string(1, static_cast<char>(code)) : Formatted("\\%03o", code);
    }
    return shown + ")";
}

bool IsShown(std::string_view text)
{
    while (!text.empty()) {
        const uint32_t character = TakeCharacter(text);
        if (character != Unknown && WinAnsi(character) == Unknown) {
            return false;
        }
    }
    return true;
}

double Width(std::string_view text)
{
    int width = 0;
    while (!text.empty()) {
        width += Advance(WinAnsi(TakeCharacter(text)));
    }
    return width / 1000.0;
}

std::string Fitting(std::string_view text, double width)
{
    if (Width(text) <= width) {
        return std::string(text);
    }
    const std::string ellipsis = "\xe2\x80\xa6";
    double taken = Width(ellipsis);
    std::string_view rest = text;
    size_t kept = 0;
    while (!rest.empty() && (taken += Advance(WinAnsi(TakeCharacter(rest))) / 1000.0) <= width) {
        kept = text.size() - rest.size();
    }
    return std::string(text.substr(0, kept)) + ellipsis;
}

std::string About(std::string_view text)
{
    std::string about = "<FEFF";
    while (!text.empty()) {
        const uint32_t character = TakeCharacter(text);
        if (character >= 0x10000) {
            about += Formatted("%04X", 0xd800 + ((character - 0x10000) >> 10));
            about += Formatted("%04X", 0xdc00 + ((character - 0x10000) & 0x3ff));
        } else {
            about += Formatted("%04X", character);
        }
    }
    return about + ">";
}

std::string Name(std::string_view name)
{
    std::string text = "/";
    for (const char character : name) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isRegular =
            byte > 0x20 && byte < 0x7f && std::string_view("()<>[]{}/%#").find(character) == std::string_view::npos;
        text += isRegular ? std::string(1, character) : Formatted("#%02X", byte);
    }
    return text;
}

std::string Number(double value)
{
    constexpr int decimals = 4;
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr;
    std::string number(text, end);
    number.erase(number.find_last_not_of('0') + 1);
    number.erase(number.find_last_not_of('.') + 1);
    return number == "-0" ? "0" : number;
}

}  // namespace J4Tool::PdfText
