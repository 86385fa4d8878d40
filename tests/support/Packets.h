// Characters of the table's line as the bridge hands them to the host.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace J4Test {

/// One transfer: in packets of 64 bytes, each of which begins with two status bytes; without characters these alone.
inline std::vector<uint8_t> Packed(const std::string& text)
{
    std::vector<uint8_t> transfer{0x01, 0x60};
    for (const char character : text) {
        if (transfer.size() % 64 == 0) {
            transfer.insert(transfer.end(), {0x01, 0x60});
        }
        transfer.push_back(static_cast<uint8_t>(character));
    }
    return transfer;
}

}  // namespace J4Test
