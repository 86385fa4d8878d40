#include "trace/WireText.h"

#include <charconv>

namespace J4Trace {

std::string ToHex(uint32_t value, int digits)
{
    std::string text(static_cast<size_t>(digits), '0');
    for (auto digit = text.rbegin(); digit != text.rend(); ++digit, value >>= 4) {
        *digit = "0123456789abcdef"[value & 15];
    }
    return text;
}

std::optional<uint32_t> FromHex(std::string_view text)
{
    uint32_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, value, 16);
    if (text.empty() || text.size() > 8 || stop != end || failure != std::errc{}) {
        return std::nullopt;
    }
    return value;
}

std::string WireChecksum(std::string_view text)
{
    uint32_t sum = 0;
    for (const char character : text) {
        sum -= static_cast<unsigned char>(character);
    }
    return ToHex(sum, 2);
}

bool HasWireChecksum(std::string_view text)
{
    if (text.size() < 2) {
        return false;
    }
    const size_t length = text.size() - 2;
    return FromHex(text.substr(length)) == FromHex(WireChecksum(text.substr(0, length)));
}

}  // namespace J4Trace
