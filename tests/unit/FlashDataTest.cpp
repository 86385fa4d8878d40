// The configuration block: its layout and checksum, and the way from the table's flash and back.
#include "src/Flash/j4TableFlashData.h"

#include <limits>
#include <numeric>
#include <sstream>
#include <utility>

#include "Utilities/Tools/HexStringHelper.h"
#include "src/Flash/j4TableFlashDataHandle.h"
#include "tests/support/ScriptedClock.h"
#include "tests/support/ScriptedUsb.h"
#include "tests/unit/UnitTest.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::Generic::Configuration::Property;
using Kestrelon::DeviceDriver::J4T::j4TableFlashData;
using Kestrelon::DeviceDriver::J4T::j4TableFlashDataHandle;
using Kestrelon::DeviceDriver::J4T::Communication::j4TableComManager;
using Kestrelon::Utilities::Tools::HexStringHelper;
using Kestrelon::Utilities::Tools::SmartPointer;
using Keys = std::list<uint16_t>;

void SetWord(Bytes& block, std::size_t offset, uint32_t word)
{
    for (std::size_t i = 0; i < 4; ++i) {
        block[offset + i] = static_cast<uint8_t>(word >> (8 * i));
    }
}

void SetFloat(Bytes& block, std::size_t offset, float value) { SetWord(block, offset, std::bit_cast<uint32_t>(value)); }

/// Puts the checksum right: all bytes before it and its value as a number add up to 0.
void Seal(Bytes& block) { SetWord(block, block.size() - 4, -std::accumulate(block.begin(), block.end() - 4, 0u)); }

/// A sealed block of so many bytes. Its words are their offsets, but for the floats: the white base is 0.5,
/// 0.51 and so on, the integration time 0.0125.
Bytes Block(std::size_t size)
{
    Bytes block(size);
    SetWord(block, 0, static_cast<uint32_t>(size));
    for (std::size_t offset = 4; offset + 4 <= size; offset += 4) {
        if (offset == 240) {
            SetFloat(block, offset, 0.0125f);
        } else if (offset >= 88 && offset < 232) {
            SetFloat(block, offset, 0.5f + 0.01f * static_cast<float>((offset - 88) / 4));
        } else {
            SetWord(block, offset, static_cast<uint32_t>(offset));
        }
    }
    Seal(block);
    return block;
}

/// The values in their order: the id, the first number of each and, of a list, how many there are.
std::string Layout(const j4TableFlashData& data)
{
    std::ostringstream text;
    for (const uint16_t id : data.GetPropertyKeys()) {
        const Property value = data.GetProperty(id);
        const Property::LongVector longs = value.AsLongVector();
        const Property::FloatVector floats = value.AsFloatVector();
        text << id << ":" << (longs.empty() ? static_cast<double>(floats.front()) : longs.front());
        if (const std::size_t count = longs.size() + floats.size(); count > 1) {
            text << "*" << count;
        }
        text << " ";
    }
    return text.str();
}

TEST(FlashData, EveryValueHasItsPlace)
{
    const j4TableFlashData data(Block(368));
    EXPECT_EQ(data.GetProperty(1).GetType(), Property::TypeLong);
    EXPECT_EQ(data.GetProperty(3003).GetType(), Property::TypeFloat);
    EXPECT_THAT(
        Layout(data),
        testing::StartsWith("1:368 2:4 3:8 1001:12 1002:16 1003:20 1004:24 1005:28 1006:32 1007:36 "
                            "1008:40 1009:44 1010:48 1011:52 1012:56 1013:60 1014:64 2001:68 2002:72 2003:76 "
                            "2004:80 2005:84 3000:0.5*36 3001:232 3002:236 3003:0.0125 3099:244*25 3100:344 3101:348 "
                            "3102:352 3999:356*2 4000:"));
    EXPECT_EQ(data.GetProperty(3000).AsFloatVector().back(), 0.5f + 0.01f * 35.0f);
    EXPECT_EQ(data.GetProperty(3099).AsLongVector().back(), 340);
    EXPECT_EQ(data.GetProperty(3999).AsLongVector().back(), 360);
}

TEST(FlashData, BlocksOfAnySizeComeBackByteForByte)
{
    const struct {
        std::size_t size;
        uint16_t lastKnown;
    } cases[] = {{16, 3},     {20, 1001},  {92, 2005},  {236, 3000}, {240, 3001},  {248, 3003},
                 {348, 3099}, {360, 3102}, {364, 3102}, {368, 3102}, {8188, 3102}, {8192, 3102}};
    for (const auto& test : cases) {
        const Bytes block = Block(test.size);
        j4TableFlashData data(block);
        EXPECT_EQ(Thrown([&] { data.CheckChecksum(); }), "") << test.size;
        EXPECT_EQ(data.Dump(1), block) << test.size;
        Keys keys = data.GetPropertyKeys();
        EXPECT_EQ(keys.back(), 4000);
        keys.pop_back();
        EXPECT_EQ(data.Contains(3999), test.size > 360) << test.size;
        keys.remove(3999);
        EXPECT_EQ(keys.back(), test.lastKnown) << test.size;
        data.UpdateChecksum();
        EXPECT_EQ(data.Dump(1), block) << test.size;
        EXPECT_EQ(data.Dump(0).size(), block.size() + 2 * data.GetItemCount());
        Bytes longer = block;
        longer.insert(longer.end(), 100, 0xFF);
        EXPECT_EQ(j4TableFlashData(longer).Dump(1), block) << "what is behind the block is not of it";
    }
}

TEST(FlashData, ABlockThatEndsInsideAVectorIsFoundOutByItsChecksum)
{
    for (const auto& [size, end] : {std::pair(100u, " 3000:0.5*36 4000:"), std::pair(300u, " 3099:244*25 4000:")}) {
        const j4TableFlashData data(Block(size));
        EXPECT_EQ(Thrown([&] { data.CheckChecksum(); }), "EEPromException: Checksum error in flash.") << size;
        EXPECT_THAT(Layout(data), testing::HasSubstr(end));
        EXPECT_EQ(size == 100 ? data.GetProperty(3000).AsFloatVector().back()
                              : static_cast<float>(data.GetProperty(3099).AsLongVector().back()),
                  0.0f)
            << "zeros beyond the data";
    }
}

TEST(FlashData, TheChecksumIsOneNumber)
{
    Bytes block(16);
    block[0] = 16;
    j4TableFlashData data(block);
    EXPECT_EQ(data.CalculateChecksum(), 0xFFFFFFF0u);
    EXPECT_NE(Thrown([&] { data.CheckChecksum(); }), "");
    data.UpdateChecksum();
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
    const struct {
        std::size_t bytes;
        uint32_t size;
        const char* thrown;
    } cases[] = {{4, 16, "Too less flash data."},
                 {16, 15, "Invalid flash size."},
                 {9000, 8193, "Invalid flash size."},
                 {16, 0, "Invalid flash size."},
                 {16, UINT32_MAX, "Invalid flash size."},
                 {359, 360, "Too less flash data."},
                 {15, 16, "Too less flash data."},
                 {16, 16, ""},
                 {8192, 8192, ""}};
    for (const auto& test : cases) {
        Bytes block(test.bytes);
        SetWord(block, 0, test.size);
        EXPECT_EQ(Thrown([&] { j4TableFlashData{block}; }),
                  *test.thrown == '\0' ? "" : std::string("EEPromException: ") + test.thrown)
            << test.bytes;
    }
    EXPECT_EQ(Thrown([] { j4TableFlashData{Bytes{16, 0, 0}}; }), "EEPromException: Too less flash data.");
    EXPECT_EQ(j4TableFlashData::GetConfigDataSize({0, 32, 0, 0}), 8192u) << "the size alone needs no more";
}

/// A table with a block in the flash, under a real manager and a real handle.
struct FlashTable {
    explicit FlashTable(const Bytes& block = Block(360)) : memory(0x1E000, 0xFF)
    {
        Put(block);
        usb.SetTable([this](const std::string& request) { return Answer(request); });
        usb.Clear();
        ScriptedClock::Reset();
    }

    void Put(const Bytes& block) { std::copy(block.begin(), block.end(), memory.begin() + 0xE000); }

    Strings Answer(const std::string& request)
    {
        const auto number = [&](std::size_t begin, std::size_t length) {
            return static_cast<std::ptrdiff_t>(std::stoul(request.substr(begin, length), nullptr, 16));
        };
        const std::string header = request.substr(0, 2);
        std::string data;
        if (header[0] == 'k') {
            data =
                HexStringHelper::ToHexString(blockId, 2) + HexStringHelper::ToHexString(blockAddress, 4) + "00000063";
        } else if (header == "u8") {
            const auto begin = memory.begin() + number(2, 8);
            data = HexStringHelper::ToHexString(Bytes(begin, begin + number(10, 4)));
        } else if (header == "u9") {
            const Bytes bytes = HexStringHelper::ByteBlockFromHexString(request.substr(7));
            std::copy(bytes.begin(), bytes.end(), ram.begin() + number(2, 4));
        } else if (header == "u2") {
            std::fill_n(memory.begin() + 0x2000 * number(2, 1), 0x2000, 0xFF);
        } else if (header == "u1") {
            std::copy_n(ram.begin(), 512, memory.begin() + number(2, 5));
        }
        return {Reply("$" + header + (header == failing ? '7' : '0') + data)};
    }

    /// What was asked since the last time: the first two characters of each request, runs of them counted.
    std::string Asked()
    {
        std::string text;
        for (std::size_t i = 0, count = 0; i < usb.requests.size(); i += count) {
            const std::string header = usb.requests[i].substr(0, 2);
            for (count = 1; i + count < usb.requests.size() && usb.requests[i + count].starts_with(header); ++count) {}
            text += (text.empty() ? "" : " ") + header + (count > 1 ? "*" + std::to_string(count) : "");
        }
        usb.requests.clear();
        return text;
    }

    /// The data of a table that has just been asked for them.
    j4TableFlashData Data()
    {
        j4TableFlashData data = handle.GetCachedFlashData();
        usb.requests.clear();
        return data;
    }

    ScriptedUsb usb;
    SmartPointer<j4TableComManager> manager{new j4TableComManager(0)};
    j4TableFlashDataHandle handle{manager};
    Bytes memory;
    Bytes ram = Bytes(512);
    uint8_t blockId = 12;
    uint32_t blockAddress = 0xE000;
    std::string failing;  ///< the command that is answered by an error
};

TEST(FlashDataHandle, ReadsTheBlockOnceAndWritesWholePieces)
{
    const std::string piece = " u9*2 u0 u1";
    const struct {
        std::size_t size;
        const char* read;
        std::string written;  ///< behind k3
    } cases[] = {{16, "k2 u8", " r uA u0 u2" + piece + " uB"},
                 {248, "k2 u8", " r uA u0 u2" + piece + " uB"},
                 {508, "k2 u8*2", " r uA u0 u2" + piece + " uB"},
                 {512, "k2 u8*2", " r uA u0 u2" + Repeated(2, piece) + " uB"},
                 {8188, "k2 u8*32", " r uA u0 u2" + Repeated(16, piece) + " uB"},
                 {8192, "k2 u8*32", ""}};
    for (const auto& test : cases) {
        FlashTable table(Block(test.size));
        j4TableFlashData copy = table.handle.GetCachedFlashData();
        EXPECT_EQ(copy.Dump(1), Block(test.size));
        EXPECT_EQ(table.Asked(), test.read) << test.size;
        copy.SetProperty(3, Property(-7));
        EXPECT_EQ(table.handle.GetCachedFlashData().GetProperty(3).AsLong(), 8) << "a copy is a copy";
        EXPECT_EQ(table.Asked(), "");
        EXPECT_EQ(Thrown([&] { table.handle.WriteToFlash(copy); }),
                  test.written.empty() ? "EEPromException: Flash data is too big." : "");
        EXPECT_EQ(table.Asked(), "k3" + test.written) << test.size;
        const Bytes written = copy.Dump(1);
        EXPECT_EQ(std::equal(written.begin(), written.end(), table.memory.begin() + 0xE000), !test.written.empty());
    }
}

TEST(FlashDataHandle, AnUnusableBlockIsNotKept)
{
    const struct {
        std::size_t offset;
        uint32_t word;
        const char* thrown;
        const char* asked;
    } cases[] = {{0, 15, "EEPromException: Invalid flash size.", "k2 u8"},
                 {0, UINT32_MAX, "EEPromException: Invalid flash size.", "k2 u8"},
                 {100, 1, "EEPromException: Checksum error in flash.", "k2 u8*2"}};
    for (const auto& test : cases) {
        Bytes bad = Block(360);
        SetWord(bad, test.offset, test.word);
        FlashTable table(bad);
        EXPECT_EQ(Thrown([&] { table.handle.GetCachedFlashData(); }), test.thrown);
        EXPECT_EQ(table.Asked(), test.asked);
        table.Put(Block(360));
        EXPECT_EQ(table.handle.GetCachedFlashData().Dump(1), Block(360));
    }
    FlashTable table;
    table.failing = "k2";
    EXPECT_EQ(Thrown([&] { table.handle.GetCachedFlashData(); }), "FirmwareException: Can't get config block7)");
}

TEST(FlashDataHandle, RewritesWithTheWholeSequence)
{
    FlashTable table;
    j4TableFlashData data = table.Data();
    data.SetProperty(3002, Property(4711));
    table.handle.WriteToFlash(data);
    ASSERT_EQ(table.usb.requests.size(), 10u);
    EXPECT_EQ(ScriptedClock::sleeps, Sleeps{1000}) << "the controller comes up again";
    const Strings& requests = table.usb.requests;
    EXPECT_EQ(Strings(requests.begin(), requests.begin() + 5), (Strings{"k3", "r", "uA317598", "u077", "u277"}));
    EXPECT_EQ(Strings(requests.begin() + 7, requests.end()), (Strings{"u077", "u10e00000003", "uB"}));

    Bytes expected = Block(360);
    SetWord(expected, 4, 0x322E3156);  // V1.2
    SetWord(expected, 8, 0x63);
    SetWord(expected, 236, 4711);
    Seal(expected);
    EXPECT_EQ(data.Dump(1), expected);
    table.Asked();
    EXPECT_EQ(table.handle.GetCachedFlashData().Dump(1), expected);
    EXPECT_EQ(table.Asked(), "k2 u8*2") << "what was written is read back";
    expected.resize(513, 0xFF);
    EXPECT_EQ(Bytes(table.memory.begin() + 0xE000, table.memory.begin() + 0xE000 + 513), expected);
}

TEST(FlashDataHandle, AFailureOnTheWayDropsTheCache)
{
    const std::string locked = ": sector locked (7).";
    const struct {
        const char* command;
        std::string thrown;
        const char* asked;
    } cases[] = {{"k3", "FirmwareException: Can't get config block7)", "k3"},
                 {"r", "TableException: Can't reset table (7).", "k3 r"},
                 {"uA", "FirmwareException: Can't unlock" + locked, "k3 r uA"},
                 {"u0", "FirmwareException: Can't prepare sector" + locked, "k3 r uA u0"},
                 {"u2", "FirmwareException: Can't erase sector" + locked, "k3 r uA u0 u2"},
                 {"u9", "FirmwareException: Can't write to ram" + locked, "k3 r uA u0 u2 u9"},
                 {"u1", "FirmwareException: Can't copy ram to flash" + locked, "k3 r uA u0 u2 u9*2 u0 u1"},
                 {"uB", "FirmwareException: Can't Lock" + locked, "k3 r uA u0 u2 u9*2 u0 u1 uB"}};
    for (const auto& test : cases) {
        FlashTable table;
        j4TableFlashData data = table.Data();
        table.failing = test.command;
        EXPECT_EQ(Thrown([&] { table.handle.WriteToFlash(data); }), test.thrown);
        EXPECT_EQ(table.Asked(), test.asked);
        Thrown([&] { table.handle.GetCachedFlashData(); });
        EXPECT_EQ(table.Asked().substr(0, 5), test.command[0] == 'k' ? "" : "k2 u8") << "kept before anything is done";
    }
    FlashTable table;
    j4TableFlashData data = table.Data();
    table.blockAddress = 0xE200;
    EXPECT_EQ(Thrown([&] { table.handle.WriteToFlash(data); }), "EEPromException: Config data are not in one sector.");
    table.handle.GetCachedFlashData();
    EXPECT_EQ(table.Asked(), "k3");
}

TEST(FlashDataHandle, VersionMarksAreFourCharacters)
{
    FlashTable table;
    j4TableFlashData data = table.Data();
    for (const auto& [id, mark] : std::vector<std::pair<uint8_t, std::string>>{
             {0, "V0.0"}, {9, "V0.9"}, {12, "V1.2"}, {99, "V9.9"}, {100, "VK.0"}, {255, "VZ.5"}}) {
        table.blockId = id;
        table.handle.WriteToFlash(data);
        EXPECT_EQ(data.GetProperty(2).AsByteVector(false), Bytes(mark.begin(), mark.end())) << mark;
    }
}

TEST(FlashDataHandle, AnUnusableWhiteBaseTouchesNothing)
{
    FlashTable table;
    table.Data();
    std::vector<float> zero(36, 0.9f);
    zero[20] = -0.0f;
    for (const std::vector<float>& white : {std::vector<float>(35, 0.9f), std::vector<float>(37, 0.0f), {}, zero}) {
        EXPECT_EQ(Thrown([&] { table.handle.SynchronizeWhitebases(white); }),
                  white.size() == 36 ? "WhiteBaseException: White data contains zero values."
                                     : "WhiteBaseException: Invalid white data length.");
    }
    table.handle.GetCachedFlashData();
    EXPECT_EQ(table.Asked(), "");
    std::vector<float> odd(36, 0.875f);
    odd[20] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(Thrown([&] { table.handle.SynchronizeWhitebases(odd); }), "") << "not a number is not zero";
    std::vector<float> white;
    int32_t time = 0;
    table.handle.GetWhitebaseCorrection(white, time);
    EXPECT_EQ(white[19], 0.875f);
    EXPECT_GT(time, 1700000000) << "the time of the transfer";

    Bytes dark = Block(360);
    SetFloat(dark, 100, 0.0f);
    Seal(dark);
    for (const auto& [block, thrown] : std::vector<std::pair<Bytes, const char*>>{
             {dark, "WhiteBaseException: White data contains zero values."},
             {Block(16), "ResourceException: id 3000 doesn't exist"}}) {  // of an early table
        FlashTable unusable(block);
        EXPECT_EQ(Thrown([&] { unusable.handle.GetWhitebaseCorrection(white, time); }), thrown);
    }
}

}  // namespace
}  // namespace J4Test
