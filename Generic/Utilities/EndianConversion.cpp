#include "Generic/Utilities/EndianConversion.h"

#include <bit>

namespace Kestrelon::DeviceDriver::Generic::Utilities {

namespace {

template <class T>
void Write(T value, uint8_t* bytes, bool bigEndian)
{
    for (unsigned i = 0; i < sizeof(T); ++i) {
        bytes[bigEndian ? sizeof(T) - 1 - i : i] = static_cast<uint8_t>(value >> (8 * i));
    }
}

}  // namespace

void EndianConversion::ShortToByteArray(uint16_t value, uint8_t* bytes, bool bigEndian)
{
    Write(value, bytes, bigEndian);
}

void EndianConversion::LongToByteArray(uint32_t value, uint8_t* bytes, bool bigEndian)
{
    Write(value, bytes, bigEndian);
}

void EndianConversion::ByteArrayToLong(const uint8_t* bytes, uint32_t& value, bool bigEndian)
{
    value = 0;
    for (unsigned i = 0; i < 4; ++i) {
        value |= static_cast<uint32_t>(bytes[bigEndian ? 3 - i : i]) << (8 * i);
    }
}

void EndianConversion::FloatToByteArray(float value, uint8_t* bytes, bool bigEndian)
{
    LongToByteArray(std::bit_cast<uint32_t>(value), bytes, bigEndian);
}

void EndianConversion::ByteArrayToFloat(const uint8_t* bytes, float& value, bool bigEndian)
{
    uint32_t pattern = 0;
    ByteArrayToLong(bytes, pattern, bigEndian);
    value = std::bit_cast<float>(pattern);
}

}  // namespace Kestrelon::DeviceDriver::Generic::Utilities
