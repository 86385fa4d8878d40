// Numbers to and from bytes in either byte order. Floats go by their IEEE 754 bit pattern.
#pragma once

#include <cstdint>

namespace Kestrelon::DeviceDriver::Generic::Utilities {

/// All targets and sources are raw pointers to at least 2 (short) or 4 bytes; nothing is tested.
/// bigEndian puts the most significant byte first.
class EndianConversion {
public:
    static void ShortToByteArray(uint16_t value, uint8_t* bytes, bool bigEndian);
    static void LongToByteArray(uint32_t value, uint8_t* bytes, bool bigEndian);
    static void ByteArrayToLong(const uint8_t* bytes, uint32_t& value, bool bigEndian);
    static void FloatToByteArray(float value, uint8_t* bytes, bool bigEndian);
    static void ByteArrayToFloat(const uint8_t* bytes, float& value, bool bigEndian);
};

}  // namespace Kestrelon::DeviceDriver::Generic::Utilities
