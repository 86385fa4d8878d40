// The text forms of the table's serial protocol: hexadecimal fields and the checksum of a frame.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace J4Trace {

/// The low digits * 4 bits of value as lower-case hexadecimal text.
std::string ToHex(uint32_t value, int digits);

/// Reads the whole of text as hexadecimal digits of either case; nothing when a character is no digit, or
/// text is empty or longer than eight digits.
std::optional<uint32_t> FromHex(std::string_view text);

/// Two digits that make the bytes of text and the checksum's value add up to 0 modulo 256.
std::string WireChecksum(std::string_view text);

/// Whether the last two characters are the checksum, in digits of either case, of those before them.
bool HasWireChecksum(std::string_view text);

}  // namespace J4Trace
