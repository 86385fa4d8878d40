#include "simulator/table/ConfigurationBlock.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <numeric>

namespace J4Bench {
namespace {

uint32_t Word(const std::vector<uint8_t>& block, size_t offset)
{
    return block[offset] | block[offset + 1] << 8 | block[offset + 2] << 16 |
           static_cast<uint32_t>(block[offset + 3]) << 24;
}

void SetWord(std::vector<uint8_t>& block, size_t offset, uint32_t value)
{
    for (size_t i = 0; i < 4; ++i) {
        block[offset + i] = static_cast<uint8_t>(value >> (8 * i));
    }
}

/// Makes bytes and checksum word add up to 0.
void Seal(std::vector<uint8_t>& block)
{
    const size_t end = Word(block, 0) - 4;
    SetWord(block, end, -std::accumulate(block.begin(), block.begin() + static_cast<long>(end), 0u));
}

TEST(ConfigurationBlock, FactoryBlockHasTheHostsLayout)
{
    const std::vector<uint8_t> block = ConfigurationBlock::Factory();
    ASSERT_EQ(block.size(), 360u);
    const auto words = [&](size_t first, size_t past) {
        std::vector<uint32_t> found;
        for (size_t index = first; index < past; ++index) {
            found.push_back(Word(block, 4 * index));
        }
        return found;
    };
    constexpr uint32_t unused = 0xffffffff;
    constexpr uint32_t least = static_cast<uint32_t>(-100);
    EXPECT_EQ(words(0, 9), (std::vector<uint32_t>{360, 0x322e3156, 3, 5000, 4000, 300, 500, 1000, 800}));
    EXPECT_EQ(words(9, 17), (std::vector<uint32_t>{unused, unused, 800, least, 800, least, 400, unused}));
    EXPECT_EQ(words(58, 62), (std::vector<uint32_t>{1704067200, unused, 0, unused}));
    EXPECT_EQ(words(88, 89), std::vector<uint32_t>{unused});
    float before = 0.85f;
    for (size_t band = 0; band < SpectrumLength; ++band) {
        const float white = std::bit_cast<float>(Word(block, 88 + 4 * band));
        EXPECT_EQ(white, ConfigurationBlock::FactoryWhiteBase()[band]);
        EXPECT_LT(white, 0.94f);
        EXPECT_NEAR(white, before, 0.02f) << "smooth";
        before = white;
    }
    const uint32_t sum = std::accumulate(block.begin(), block.begin() + 356, 0u);
    EXPECT_EQ(sum + Word(block, 356), 0u);
}

TEST(ConfigurationBlock, JudgesWhatTheFlashHolds)
{
    using State = ConfigurationBlock::State;
    const std::vector<uint8_t> factory = ConfigurationBlock::Factory();
    std::vector<uint8_t> changed = factory;
    changed[100] ^= 1;
    const std::pair<std::vector<uint8_t>, State> memories[] = {
        {factory, State::Valid},
        {{16, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xf0, 0xff, 0xff, 0xff}, State::Valid},  // the smallest
        {{12, 0, 0, 0, 0, 0, 0, 0, 0xf4, 0xff, 0xff, 0xff, 0, 0, 0, 0}, State::Missing},
        {{}, State::Missing},
        {std::vector<uint8_t>(512, 0xff), State::Missing},
        {{factory.begin(), factory.begin() + 359}, State::Missing},
        {changed, State::Damaged},
    };
    for (const auto& [memory, state] : memories) {
        EXPECT_EQ(ConfigurationBlock(memory).GetState(), state) << memory.size();
    }
}

TEST(ConfigurationBlock, TellsTheMachineThatIsWritten)
{
    std::vector<uint8_t> block = ConfigurationBlock::Factory();
    SetWord(block, 44, 123);
    SetWord(block, 60, 77);
    Seal(block);
    block.resize(512, 0xff);
    const ConfigurationBlock read(block);
    ASSERT_EQ(read.GetState(), ConfigurationBlock::State::Valid);
    EXPECT_EQ(read.GetMachine().xMax, 123);
    EXPECT_EQ(read.GetMachine().maximumSpeed, 77);
    EXPECT_EQ(read.GetMachine().visorBack, 500);
    EXPECT_EQ(read.GetMachine().visorSide, 300);
}

}  // namespace
}  // namespace J4Bench
