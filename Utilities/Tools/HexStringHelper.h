// The hexadecimal text of the table's protocol: lower case when written, either case when read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Kestrelon::Utilities::Tools {

class HexStringHelper {
public:
    /// Two digits for each byte.
    static std::string ToHexString(const std::vector<uint8_t>& bytes);

    /// Digits of the value, padded with "0" to the width. The width is a minimum: more digits are not cut,
    /// so that a negative value prints as its two's complement at full size.
    static std::string ToHexString(uint32_t value, uint16_t width);
    static std::string ToHexString(int32_t value, uint16_t width);
    static std::string ToHexString(uint16_t value, uint16_t width);
    static std::string ToHexString(uint8_t value, uint16_t width);

    /// @throws RuntimeException for an odd number of digits
    static std::vector<uint8_t> ByteBlockFromHexString(const std::string& text);

    /// The numeric readers refuse nothing: an odd number of digits is padded, digits beyond the type's
    /// width are lost or wrap, and a pair is what a stream makes of it ("1g" is 1, "g1" is 0).
    static uint32_t LongFromHexString(const std::string& text);
    static int32_t SignedLongFromHexString(const std::string& text);
    static uint16_t ShortFromHexString(const std::string& text);
    static int16_t SignedShortFromHexString(const std::string& text);
    static uint8_t CharFromHexString(const std::string& text);
};

}  // namespace Kestrelon::Utilities::Tools
