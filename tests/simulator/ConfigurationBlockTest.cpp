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
    const struct {
        size_t offset;
        uint32_t value;
    } words[] = {
        {0, 360},
        {4, 0x322e3156},
        {8, ConfigurationBlock::Revision},
        {12, 5000},
        {16, 4000},
        {20, 300},
        {24, 500},
        {44, 800},
        {48, static_cast<uint32_t>(-100)},
        {52, 800},
        {56, static_cast<uint32_t>(-100)},
        {60, 400},
        {232, 1704067200},
        {236, 0xffffffff},
        {240, 0},
        {244, 0xffffffff},
        {352, 0xffffffff},
    };
    for (const auto& word : words) {
        EXPECT_EQ(Word(block, word.offset), word.value) << word.offset;
    }
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
    const auto stateOf = [](const std::vector<uint8_t>& memory) { return ConfigurationBlock(memory).GetState(); };
    const std::vector<uint8_t> factory = ConfigurationBlock::Factory();
    EXPECT_EQ(stateOf(factory), State::Valid);
    EXPECT_EQ(stateOf({}), State::Missing);
    EXPECT_EQ(stateOf(std::vector<uint8_t>(512, 0xff)), State::Missing);
    EXPECT_EQ(stateOf({factory.begin(), factory.begin() + 359}), State::Missing);
    EXPECT_EQ(stateOf({12, 0, 0, 0, 0, 0, 0, 0, 0xf4, 0xff, 0xff, 0xff, 0, 0, 0, 0}), State::Missing);
    std::vector<uint8_t> changed = factory;
    changed[100] ^= 1;
    EXPECT_EQ(stateOf(changed), State::Damaged);
    const std::vector<uint8_t> smallest = {16, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xf0, 0xff, 0xff, 0xff};
    EXPECT_EQ(stateOf(smallest), State::Valid);
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
