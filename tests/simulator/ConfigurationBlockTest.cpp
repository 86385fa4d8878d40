#include "simulator/table/ConfigurationBlock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace J4Bench {
namespace {

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
