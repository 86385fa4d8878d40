#include "simulator/table/ConfigurationBlock.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <bit>
#include <numeric>
#include <utility>
#include <vector>

namespace J4Bench {
namespace {

TEST(ConfigurationBlock, FactoryBlockHasTheHostsLayout)
{
    const std::vector<uint8_t> block = ConfigurationBlock::Factory();
    ASSERT_EQ(block.size(), 360u);
    std::vector<uint32_t> words;
    for (size_t i = 0; i < block.size(); i += 4) {
        words.push_back(block[i] | block[i + 1] << 8 | block[i + 2] << 16 | static_cast<uint32_t>(block[i + 3]) << 24);
    }
    constexpr uint32_t unused = 0xffffffff;
    constexpr uint32_t least = static_cast<uint32_t>(-100);
    EXPECT_THAT(std::vector(words.begin(), words.begin() + 17),
                testing::ElementsAre(360, 0x322e3156, 3, 5000, 4000, 300, 500, 1000, 800, unused, unused, 800, least,
                                     800, least, 400, unused));
    EXPECT_THAT(std::vector(words.begin() + 58, words.begin() + 62),
                testing::ElementsAre(1704067200, unused, 0, unused));
    EXPECT_EQ(words[88], unused);
    float before = 0.85f;
    for (size_t band = 0; band < SpectrumLength; ++band) {
        const float white = std::bit_cast<float>(words[22 + band]);
        EXPECT_EQ(white, ConfigurationBlock::FactoryWhiteBase()[band]);
        EXPECT_LT(white, 0.94f);
        EXPECT_NEAR(white, before, 0.02f) << "smooth";
        before = white;
    }
    EXPECT_EQ(std::accumulate(block.begin(), block.end() - 4, words[89]), 0u);
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
    std::swap_ranges(&block[44], &block[48], &block[60]);  // leaves the checksum as it is
    block.resize(512, 0xff);
    const ConfigurationBlock read(block);
    ASSERT_EQ(read.GetState(), ConfigurationBlock::State::Valid);
    const Machine& machine = read.GetMachine();
    EXPECT_EQ(machine.xMax, 400);
    EXPECT_EQ(machine.maximumSpeed, 800);
    EXPECT_EQ(machine.visorBack, 500);
    EXPECT_EQ(machine.visorSide, 300);
}

}  // namespace
}  // namespace J4Bench
