// Integer arithmetic in 32 bits that wraps instead of being undefined, for numbers that come from the
// table's configuration or the application and may be anything.
#pragma once

#include <cstdint>

namespace Kestrelon::Utilities::Tools {

constexpr int32_t WrapAdd(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

constexpr int32_t WrapSubtract(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

constexpr int32_t WrapMultiply(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

/// Truncates toward zero. Values beyond 32 bits keep their low bits; beyond 64 bits, and for what is not a
/// number, the result is 0.
constexpr int32_t TruncateToInt32(double value)
{
    constexpr double limit = 9223372036854775808.0;  // 2^63
    return value > -limit && value < limit ? static_cast<int32_t>(static_cast<int64_t>(value)) : 0;
}

/// Whether the integer that a value truncates to exists and has 32 bits.
constexpr bool TruncationFitsInt32(double value) { return value > -2147483649.0 && value < 2147483648.0; }

}  // namespace Kestrelon::Utilities::Tools
