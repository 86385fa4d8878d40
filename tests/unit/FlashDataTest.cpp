#include <gtest/gtest.h>

#include "src/Flash/j4TableFlashData.h"
#include "tests/support/Thrown.h"
#include "tests/unit/FlashBlock.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::Generic::Configuration::Property;
using Kestrelon::DeviceDriver::J4T::j4TableFlashData;
using Keys = std::list<uint16_t>;

TEST(FlashData, EveryValueHasItsPlace)
{
    const j4TableFlashData data(Block(368));
    const struct {
        uint16_t id;
        int32_t value;
    } longs[] = {
        {1, 368},   {2, 4},     {3, 8},     {1001, 12}, {1004, 24}, {1005, 28},  {1009, 44},  {1010, 48},  {1011, 52},
        {1012, 56}, {1013, 60}, {1014, 64}, {2001, 68}, {2005, 84}, {3001, 232}, {3002, 236}, {3100, 344}, {3102, 352},
    };
    for (const auto& entry : longs) {
        EXPECT_EQ(data.GetProperty(entry.id).GetType(), Property::TypeLong) << entry.id;
        EXPECT_EQ(data.GetProperty(entry.id).AsLong(), entry.value) << entry.id;
    }
    const Property::FloatVector white = data.GetProperty(3000).AsFloatVector();
    ASSERT_EQ(white.size(), 36u);
    EXPECT_EQ(white.front(), 0.5f);
    EXPECT_EQ(white.back(), 0.5f + 0.01f * 35.0f);
    EXPECT_EQ(data.GetProperty(3003).AsFloat(), 0.0125f);
    const Property::LongVector carried = data.GetProperty(3099).AsLongVector();
    ASSERT_EQ(carried.size(), 25u);
    EXPECT_EQ(carried.front(), 244);
    EXPECT_EQ(carried.back(), 340);
    EXPECT_EQ(data.GetProperty(3999).AsLongVector(), (Property::LongVector{356, 360}));
    EXPECT_EQ(data.GetPropertyKeys().back(), 4000);
}

TEST(FlashData, BlocksOfAnySizeComeBackByteForByte)
{
    const struct {
        std::size_t size;
        uint16_t lastKnown;
        bool hasUnknown;
    } cases[] = {
        {16, 3, false},     {20, 1001, false},  {92, 2005, false},  {236, 3000, false},
        {240, 3001, false}, {248, 3003, false}, {348, 3099, false}, {360, 3102, false},
        {364, 3102, true},  {368, 3102, true},  {8188, 3102, true}, {8192, 3102, true},
    };
    for (const auto& test : cases) {
        const Bytes block = Block(test.size);
        j4TableFlashData data(block);
        EXPECT_EQ(Thrown([&] { data.CheckChecksum(); }), "") << test.size;
        EXPECT_EQ(data.Dump(1), block) << test.size;
        Keys keys = data.GetPropertyKeys();
        EXPECT_EQ(keys.back(), 4000);
        keys.pop_back();
        EXPECT_EQ(data.Contains(3999), test.hasUnknown) << test.size;
        keys.remove(3999);
        EXPECT_EQ(keys.back(), test.lastKnown) << test.size;
        data.UpdateChecksum();
        EXPECT_EQ(data.Dump(1), block) << test.size;
        EXPECT_EQ(data.Dump(0).size(), block.size() + 2 * data.GetItemCount());

        Bytes longer = block;
        longer.insert(longer.end(), 100, 0xFF);
        EXPECT_EQ(j4TableFlashData(longer).Dump(1), block) << "what is behind the block is not of it";
    }
    EXPECT_EQ(Thrown([] { j4TableFlashData(Block(16)).GetProperty(3000); }),
              "ResourceException: id 3000 doesn't exist");
}

TEST(FlashData, ABlockThatEndsInsideAVectorIsFoundOutByItsChecksum)
{
    for (const std::size_t size : {100u, 228u, 300u}) {
        const Bytes block = Block(size);
        const j4TableFlashData data(block);
        EXPECT_EQ(Thrown([&] { data.CheckChecksum(); }), "EEPromException: Checksum error in flash.") << size;
        const bool inWhite = size < 236;
        EXPECT_EQ(data.GetProperty(3000).AsFloatVector().size(), 36u);
        EXPECT_EQ(inWhite ? data.GetProperty(3000).AsFloatVector().back()
                          : static_cast<float>(data.GetProperty(3099).AsLongVector().back()),
                  0.0f)
            << "zeros beyond the data";
        EXPECT_EQ(data.GetPropertyKeys().back(), 4000);
        EXPECT_FALSE(data.Contains(inWhite ? 3001 : 3100));
    }
}

TEST(FlashData, TheChecksumIsOneNumber)
{
    Bytes block(16);
    block[0] = 16;
    j4TableFlashData data(block);
    EXPECT_EQ(data.CalculateChecksum(), 0xFFFFFFF0u);
    EXPECT_EQ(Thrown([&] { data.CheckChecksum(); }), "EEPromException: Checksum error in flash.");
    data.UpdateChecksum();
    EXPECT_EQ(Thrown([&] { data.CheckChecksum(); }), "");
    SetWord(block, 12, 0xFFFFFFF0u);
    EXPECT_EQ(data.Dump(1), block);

    // A value added behind the checksum moves it to the end; the size is the caller's.
    data.SetProperty(3999, Property(Property::LongVector{1}));
    data.UpdateChecksum();
    EXPECT_EQ(data.GetPropertyKeys(), (Keys{1, 2, 3, 3999, 4000}));
    EXPECT_EQ(data.GetProperty(4000).AsLong(), -17);
    EXPECT_EQ(data.GetProperty(1).AsLong(), 16);

    for (std::size_t offset = 0; offset < 360; offset += 7) {
        Bytes damaged = Block(360);
        damaged[offset] = static_cast<uint8_t>(damaged[offset] + 1);
        EXPECT_NE(Thrown([&] { j4TableFlashData(damaged).CheckChecksum(); }), "") << offset;
    }
}

TEST(FlashData, WhatIsNoBlockIsRejectedWhole)
{
    const auto sized = [](std::size_t bytes, uint32_t size) {
        Bytes block(bytes);
        SetWord(block, 0, size);
        return block;
    };
    const struct {
        Bytes data;
        const char* thrown;
    } cases[] = {
        {{}, "EEPromException: Too less flash data."},
        {{16, 0, 0}, "EEPromException: Too less flash data."},
        {sized(16, 15), "EEPromException: Invalid flash size."},
        {sized(9000, 8193), "EEPromException: Invalid flash size."},
        {sized(16, 0xFFFFFFFF), "EEPromException: Invalid flash size."},
        {sized(16, 0), "EEPromException: Invalid flash size."},
        {sized(359, 360), "EEPromException: Too less flash data."},
        {sized(15, 16), "EEPromException: Too less flash data."},
        {sized(16, 16), ""},
        {sized(8192, 8192), ""},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(Thrown([&] { j4TableFlashData{test.data}; }), test.thrown) << test.data.size();
    }
    EXPECT_EQ(j4TableFlashData::GetConfigDataSize(sized(4, 8192)), 8192u) << "the size alone needs no more";
}

}  // namespace
}  // namespace J4Test
