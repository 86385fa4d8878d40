// Texts as their characters, where they are UTF-8 (RFC 3629): the shortest form of each, no surrogates, up to U+10FFFF.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace Kestrelon::Utilities::Tools::Utf8 {

/// What some programs put before a text.
inline constexpr std::string_view ByteOrderMark = "\xef\xbb\xbf";

struct Character {
    char32_t code = 0;
    size_t length = 0;  ///< in bytes
};

/// The character that begins at a place within the text.
/// @return nothing where the bytes there are none
std::optional<Character> CharacterAt(std::string_view text, size_t at = 0);

/// True for a byte that goes on with a character.
constexpr bool IsFurther(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

/// Characters of a text, for the width of a column.
size_t Count(std::string_view text);

}  // namespace Kestrelon::Utilities::Tools::Utf8
