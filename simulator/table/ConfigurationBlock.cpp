#include "simulator/table/ConfigurationBlock.h"

#include <array>
#include <bit>
#include <cmath>

namespace J4Bench {

namespace {

constexpr size_t WordCount = 90;
constexpr uint32_t SmallestSize = 16;
constexpr uint32_t LargestSize = 8192;
constexpr uint32_t Unused = 0xffffffff;
constexpr uint32_t DeliveryTime = 1704067200;  // 2024-01-01 00:00:00 UTC, seconds since 1970

// Places of the words in the block.
constexpr size_t Size = 0;
constexpr size_t VersionMark = 1;
constexpr size_t RevisionWord = 2;
constexpr size_t WhiteBase = 22;
constexpr size_t WhiteBaseTime = 58;
constexpr size_t CalibratedIntegrationTime = 60;

struct MachineWord {
    size_t index;
    int32_t Machine::*field;
};

constexpr MachineWord MachineWords[] = {
    {3, &Machine::armLength}, {4, &Machine::sensorReach}, {5, &Machine::visorSide},     {6, &Machine::visorBack},
    {7, &Machine::tileX},     {8, &Machine::tileY},       {11, &Machine::xMax},         {12, &Machine::xMin},
    {13, &Machine::yMax},     {14, &Machine::yMin},       {15, &Machine::maximumSpeed},
};

uint32_t WordAt(std::span<const uint8_t> bytes, size_t offset)
{
    return bytes[offset] | bytes[offset + 1] << 8 | bytes[offset + 2] << 16 |
           static_cast<uint32_t>(bytes[offset + 3]) << 24;
}

void Append(std::vector<uint8_t>& bytes, uint32_t word)
{
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<uint8_t>(word >> shift));
    }
}

/// The number that makes the sum of all bytes and itself 0.
uint32_t Checksum(std::span<const uint8_t> bytes)
{
    uint32_t sum = 0;
    for (const uint8_t byte : bytes) {
        sum -= byte;
    }
    return sum;
}

}  // namespace

const Spectrum& ConfigurationBlock::FactoryWhiteBase()
{
    // A white ceramic: absorbing a little towards the violet, flat from the green on.
    static const Spectrum white = [] {
        Spectrum values{};
        for (int band = 0; band < SpectrumLength; ++band) {
            const float fromViolet = static_cast<float>(band * WavelengthStep);
            values[static_cast<size_t>(band)] = 0.925f - 0.065f * std::exp(-fromViolet / 45.0f);
        }
        return values;
    }();
    return white;
}

std::vector<uint8_t> ConfigurationBlock::Factory()
{
    std::array<uint32_t, WordCount - 1> words;
    words.fill(Unused);
    words[Size] = WordCount * 4;
    words[VersionMark] = 'V' | ('0' + Version / 10) << 8 | '.' << 16 | ('0' + Version % 10) << 24;
    words[RevisionWord] = Revision;
    const Machine machine;
    for (const MachineWord& word : MachineWords) {
        words[word.index] = static_cast<uint32_t>(machine.*word.field);
    }
    for (size_t band = 0; band < SpectrumLength; ++band) {
        words[WhiteBase + band] = std::bit_cast<uint32_t>(FactoryWhiteBase()[band]);
    }
    words[WhiteBaseTime] = DeliveryTime;
    words[CalibratedIntegrationTime] = std::bit_cast<uint32_t>(0.0f);

    std::vector<uint8_t> block;
    for (const uint32_t word : words) {
        Append(block, word);
    }
    Append(block, Checksum(block));
    return block;
}

ConfigurationBlock::ConfigurationBlock(std::span<const uint8_t> memory)
{
    const uint32_t size = memory.size() < SmallestSize ? 0 : WordAt(memory, 0);
    if (size < SmallestSize || size > LargestSize || size > memory.size()) {
        return;
    }
    if (WordAt(memory, size - 4) != Checksum(memory.first(size - 4))) {
        state = State::Damaged;
        return;
    }
    state = State::Valid;
    for (const MachineWord& word : MachineWords) {
        if ((word.index + 1) * 4 < size) {
            machine.*word.field = static_cast<int32_t>(WordAt(memory, word.index * 4));
        }
    }
}

}  // namespace J4Bench
