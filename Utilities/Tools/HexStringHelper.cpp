#include "Utilities/Tools/HexStringHelper.h"

#include <cstddef>
#include <iomanip>
#include <sstream>

#include "Utilities/Exceptions/Exceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/ClassicStream.h"

namespace Kestrelon::Utilities::Tools {

using Exceptions::RuntimeException;

namespace {

template <class T>
std::string ToHexStringImpl(T value, uint16_t width, bool upperCase = false)
{
    ClassicStream<std::ostringstream> stream;
    stream << std::hex << (upperCase ? std::uppercase : std::nouppercase) << std::setw(width) << std::setfill('0')
           << value;
    return stream.str();
}

int DigitValue(char digit)
{
    return digit >= '0' && digit <= '9'   ? digit - '0'
           : digit >= 'a' && digit <= 'f' ? digit - 'a' + 10
           : digit >= 'A' && digit <= 'F' ? digit - 'A' + 10
                                          : -1;
}

/// Value of the two characters at the position, as a stream reads them.
uint32_t PairValue(const std::string& text, std::size_t position)
{
    const int high = DigitValue(text[position]);
    const int low = DigitValue(text[position + 1]);
    if (high >= 0 && low >= 0) {
        return static_cast<uint32_t>(16 * high + low);
    }
    ClassicStream<std::istringstream> stream(text.substr(position, 2));
    uint32_t value = 0;
    stream >> std::hex >> value;
    return value;
}

template <class T>
T HexStringToImpl(std::string text)
{
    if (text.size() % 2 != 0) {
        text.insert(text.begin(), '0');
    }
    uint32_t result = 0;
    for (std::size_t fromRight = 0; fromRight < text.size(); fromRight += 2) {
        result += PairValue(text, text.size() - fromRight - 2) << (4 * fromRight % 32);
    }
    return static_cast<T>(result);
}

}  // namespace

std::string HexStringHelper::ToHexString(const std::vector<uint8_t>& bytes)
try {
    static constexpr char digits[] = "0123456789abcdef";
    std::string result;
    result.reserve(2 * bytes.size());
    for (const uint8_t byte : bytes) {
        result += digits[byte >> 4];
        result += digits[byte & 15];
    }
    return result;
}
J4T_TRACE_FRAME

std::string HexStringHelper::ToHexString(uint32_t value, uint16_t width)
try {
    return ToHexStringImpl(value, width);
}
J4T_TRACE_FRAME

std::string HexStringHelper::ToHexString(int32_t value, uint16_t width)
try {
    return ToHexStringImpl(value, width);
}
J4T_TRACE_FRAME

std::string HexStringHelper::ToHexString(uint16_t value, uint16_t width)
try {
    return ToHexStringImpl(value, width);
}
J4T_TRACE_FRAME

std::string HexStringHelper::ToHexString(uint8_t value, uint16_t width)
try {
    return ToHexStringImpl(static_cast<uint16_t>(value), width);
}
J4T_TRACE_FRAME

std::vector<uint8_t> HexStringHelper::ByteBlockFromHexString(const std::string& text)
try {
    if (text.size() % 2 != 0) {
        throw RuntimeException("Hex String contains odd number of digits!");
    }
    std::vector<uint8_t> bytes(text.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<uint8_t>(PairValue(text, 2 * i));
    }
    return bytes;
}
J4T_TRACE_FRAME

uint32_t HexStringHelper::LongFromHexString(const std::string& text)
try {
    return HexStringToImpl<uint32_t>(text);
}
J4T_TRACE_FRAME

int32_t HexStringHelper::SignedLongFromHexString(const std::string& text)
try {
    return HexStringToImpl<int32_t>(text);
}
J4T_TRACE_FRAME

uint16_t HexStringHelper::ShortFromHexString(const std::string& text)
try {
    return HexStringToImpl<uint16_t>(text);
}
J4T_TRACE_FRAME

int16_t HexStringHelper::SignedShortFromHexString(const std::string& text)
try {
    return HexStringToImpl<int16_t>(text);
}
J4T_TRACE_FRAME

uint8_t HexStringHelper::CharFromHexString(const std::string& text)
try {
    return static_cast<uint8_t>(ShortFromHexString(text));
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::Utilities::Tools
