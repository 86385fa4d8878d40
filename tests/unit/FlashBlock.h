// Configuration blocks as the table's flash holds them, made without the library.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

namespace J4Test {

using Bytes = std::vector<uint8_t>;

inline void SetWord(Bytes& block, std::size_t offset, uint32_t word)
{
    for (std::size_t i = 0; i < 4; ++i) {
        block[offset + i] = static_cast<uint8_t>(word >> (8 * i));
    }
}

inline void SetFloat(Bytes& block, std::size_t offset, float value)
{
    uint32_t word = 0;
    std::memcpy(&word, &value, sizeof word);
    SetWord(block, offset, word);
}

/// Puts the checksum right: all bytes before it and its value as a number add up to 0.
inline void Seal(Bytes& block)
{
    uint32_t sum = 0;
    for (std::size_t i = 0; i + 4 < block.size(); ++i) {
        sum -= block[i];
    }
    SetWord(block, block.size() - 4, sum);
}

/// A sealed block of so many bytes. Its words are their offsets, but for the floats: the white base is 0.5,
/// 0.51 and so on, the integration time 0.0125.
inline Bytes Block(std::size_t size)
{
    Bytes block(size);
    SetWord(block, 0, static_cast<uint32_t>(size));
    for (std::size_t offset = 4; offset + 4 <= size; offset += 4) {
        if (offset >= 88 && offset < 232) {
            SetFloat(block, offset, 0.5f + 0.01f * static_cast<float>((offset - 88) / 4));
        } else if (offset == 240) {
            SetFloat(block, offset, 0.0125f);
        } else {
            SetWord(block, offset, static_cast<uint32_t>(offset));
        }
    }
    Seal(block);
    return block;
}

}  // namespace J4Test
