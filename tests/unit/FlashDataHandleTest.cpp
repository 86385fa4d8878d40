#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Utilities/Tools/HexStringHelper.h"
#include "src/Flash/j4TableFlashDataHandle.h"
#include "tests/support/ScriptedClock.h"
#include "tests/support/ScriptedUsb.h"
#include "tests/support/Thrown.h"
#include "tests/unit/FlashBlock.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::Generic::Configuration::Property;
using Kestrelon::DeviceDriver::J4T::j4TableFlashData;
using Kestrelon::DeviceDriver::J4T::j4TableFlashDataHandle;
using Kestrelon::DeviceDriver::J4T::Communication::j4TableComManager;
using Kestrelon::Utilities::Tools::SmartPointer;
using Sleeps = std::vector<uint32_t>;
using Strings = std::vector<std::string>;

/// A table with a block in the flash, under a real manager and a real handle.
struct FlashTable {
    explicit FlashTable(const Bytes& block) : memory(0x1E000, 0xFF)
    {
        std::copy(block.begin(), block.end(), memory.begin() + 0xE000);
        usb.SetTable([this](const std::string& request) { return Answer(request); });
        usb.Clear();
        ScriptedClock::Reset();
    }

    Strings Answer(const std::string& request)
    {
        const auto number = [&](std::size_t begin, std::size_t length) {
            return std::stoul(request.substr(begin, length), nullptr, 16);
        };
        using Kestrelon::Utilities::Tools::HexStringHelper;
        const std::string header = request.substr(0, 2);
        const char error = header == failing ? '7' : '0';
        std::string data;
        if (header[0] == 'k') {
            data = HexStringHelper::ToHexString(blockId, 2);
            data += HexStringHelper::ToHexString(blockAddress, 4) + "00000063";
        } else if (header == "u8") {
            const auto begin = memory.begin() + static_cast<std::ptrdiff_t>(number(2, 8));
            data = HexStringHelper::ToHexString(Bytes(begin, begin + static_cast<std::ptrdiff_t>(number(10, 4))));
        } else if (header == "u9") {
            const Bytes bytes = HexStringHelper::ByteBlockFromHexString(request.substr(7));
            std::copy(bytes.begin(), bytes.end(), ram.begin() + static_cast<std::ptrdiff_t>(number(2, 4)));
        } else if (header == "u2") {
            std::fill_n(memory.begin() + static_cast<std::ptrdiff_t>(0x2000 * number(2, 1)), 0x2000, 0xFF);
        } else if (header == "u1") {
            std::copy_n(ram.begin(), 512, memory.begin() + static_cast<std::ptrdiff_t>(number(2, 5)));
        }
        return {Reply("$" + header + error + data)};
    }

    /// What was asked since the last time: the first two characters of each request, runs of them counted.
    std::string Asked()
    {
        std::string text;
        for (std::size_t i = 0; i < usb.requests.size();) {
            std::size_t end = i;
            while (end < usb.requests.size() && usb.requests[end].substr(0, 2) == usb.requests[i].substr(0, 2)) {
                ++end;
            }
            text += (text.empty() ? "" : " ") + usb.requests[i].substr(0, 2);
            text += end - i > 1 ? "*" + std::to_string(end - i) : "";
            i = end;
        }
        usb.requests.clear();
        return text;
    }

    Bytes Memory(std::size_t count) const
    {
        return Bytes(memory.begin() + 0xE000, memory.begin() + 0xE000 + static_cast<std::ptrdiff_t>(count));
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

TEST(FlashDataHandle, ReadsTheBlockOnce)
{
    const struct {
        std::size_t size;
        const char* asked;
    } cases[] = {{16, "k2 u8"}, {256, "k2 u8"}, {360, "k2 u8*2"}, {8192, "k2 u8*32"}};
    for (const auto& test : cases) {
        Bytes block = Block(test.size);
        if (test.size == 256) {
            block = Block(248);
        }
        FlashTable table(block);
        EXPECT_EQ(table.Asked(), "");
        j4TableFlashData copy = table.handle.GetCachedFlashData();
        EXPECT_EQ(copy.Dump(1), block);
        EXPECT_EQ(table.Asked(), test.asked) << test.size;
        copy.SetProperty(2, Property(-7));
        EXPECT_EQ(table.handle.GetCachedFlashData().GetProperty(2).AsLong(), 4) << "a copy is a copy";
        EXPECT_EQ(table.Asked(), "");
    }
    FlashTable table(Block(360));
    table.handle.GetCachedFlashData();
    EXPECT_EQ(table.usb.requests, (Strings{"k2", "u80000e0000100", "u80000e1000068"}));
}

TEST(FlashDataHandle, AnUnusableBlockIsNotKept)
{
    const struct {
        std::size_t offset;
        uint32_t word;
        const char* thrown;
        const char* asked;
    } cases[] = {
        {0, 15, "EEPromException: Invalid flash size.", "k2 u8"},
        {0, 0xFFFFFFFF, "EEPromException: Invalid flash size.", "k2 u8"},
        {100, 1, "EEPromException: Checksum error in flash.", "k2 u8*2"},
    };
    for (const auto& test : cases) {
        const Bytes good = Block(360);
        Bytes bad = good;
        SetWord(bad, test.offset, test.word);
        FlashTable table(bad);
        EXPECT_EQ(Thrown([&] { table.handle.GetCachedFlashData(); }), test.thrown);
        EXPECT_EQ(table.Asked(), test.asked);
        std::copy(good.begin(), good.end(), table.memory.begin() + 0xE000);
        EXPECT_EQ(table.handle.GetCachedFlashData().Dump(1), good);
    }
    FlashTable table(Block(360));
    table.failing = "k2";
    EXPECT_EQ(Thrown([&] { table.handle.GetCachedFlashData(); }), "FirmwareException: Can't get config block7)");
}

TEST(FlashDataHandle, RewritesWithTheWholeSequence)
{
    FlashTable table(Block(360));
    j4TableFlashData data = table.handle.GetCachedFlashData();
    table.usb.Clear();
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
    Bytes image = expected;
    image.resize(512 + 1, 0xFF);
    EXPECT_EQ(table.Memory(513), image);

    table.Asked();
    EXPECT_EQ(table.handle.GetCachedFlashData().Dump(1), expected);
    EXPECT_EQ(table.Asked(), "k2 u8*2") << "what was written is read back";
}

TEST(FlashDataHandle, ImagesFillWholeWrites)
{
    const struct {
        std::size_t size;
        const char* asked;  ///< behind k3, or nothing when it is too big
    } cases[] = {
        {16, " r uA u0 u2 u9*2 u0 u1 uB"},
        {508, " r uA u0 u2 u9*2 u0 u1 uB"},
        {512, " r uA u0 u2 u9*2 u0 u1 u9*2 u0 u1 uB"},
        {8188, nullptr},
        {8192, ""},
    };
    for (const auto& test : cases) {
        FlashTable table(Block(test.size));
        j4TableFlashData data = table.handle.GetCachedFlashData();
        table.Asked();
        const bool tooBig = test.asked != nullptr && *test.asked == '\0';
        EXPECT_EQ(Thrown([&] { table.handle.WriteToFlash(data); }),
                  tooBig ? "EEPromException: Flash data is too big." : "")
            << test.size;
        if (test.asked != nullptr) {
            EXPECT_EQ(table.Asked(), std::string("k3") + test.asked) << test.size;
        } else {
            EXPECT_EQ(table.usb.requests.size(), 5u + 16 * 4 + 1);
        }
        const Bytes written = data.Dump(1);
        EXPECT_EQ(table.Memory(test.size) == written, !tooBig) << test.size;
    }
}

TEST(FlashDataHandle, RefusalsComeBeforeAnythingIsDone)
{
    FlashTable table(Block(360));
    j4TableFlashData data = table.handle.GetCachedFlashData();
    table.Asked();
    table.blockAddress = 0xE200;
    EXPECT_EQ(Thrown([&] { table.handle.WriteToFlash(data); }), "EEPromException: Config data are not in one sector.");
    table.failing = "k3";
    EXPECT_EQ(Thrown([&] { table.handle.WriteToFlash(data); }), "FirmwareException: Can't get config block7)");
    EXPECT_EQ(table.Asked(), "k3*2");
    table.handle.GetCachedFlashData();
    EXPECT_EQ(table.Asked(), "") << "the cache is kept";
}

TEST(FlashDataHandle, AFailureOnTheWayDropsTheCache)
{
    const struct {
        const char* command;
        const char* thrown;
        const char* asked;
    } cases[] = {
        {"r", "TableException: Can't reset table (7).", "k3 r"},
        {"uA", "FirmwareException: Can't unlock: sector locked (7).", "k3 r uA"},
        {"u0", "FirmwareException: Can't prepare sector: sector locked (7).", "k3 r uA u0"},
        {"u2", "FirmwareException: Can't erase sector: sector locked (7).", "k3 r uA u0 u2"},
        {"u9", "FirmwareException: Can't write to ram: sector locked (7).", "k3 r uA u0 u2 u9"},
        {"u1", "FirmwareException: Can't copy ram to flash: sector locked (7).", "k3 r uA u0 u2 u9*2 u0 u1"},
        {"uB", "FirmwareException: Can't Lock: sector locked (7).", "k3 r uA u0 u2 u9*2 u0 u1 uB"},
    };
    for (const auto& test : cases) {
        FlashTable table(Block(360));
        j4TableFlashData data = table.handle.GetCachedFlashData();
        table.Asked();
        table.failing = test.command;
        EXPECT_EQ(Thrown([&] { table.handle.WriteToFlash(data); }), test.thrown);
        EXPECT_EQ(table.Asked(), test.asked);
        Thrown([&] { table.handle.GetCachedFlashData(); });
        EXPECT_EQ(table.Asked().substr(0, 5), "k2 u8") << test.command;
    }
}

TEST(FlashDataHandle, VersionMarksAreFourCharacters)
{
    const struct {
        uint8_t id;
        const char* mark;
    } cases[] = {{0, "V0.0"}, {9, "V0.9"}, {12, "V1.2"}, {99, "V9.9"}, {100, "VK.0"}, {255, "VZ.5"}};
    FlashTable table(Block(360));
    j4TableFlashData data = table.handle.GetCachedFlashData();
    for (const auto& test : cases) {
        table.blockId = test.id;
        table.handle.WriteToFlash(data);
        const Bytes mark = data.GetProperty(2).AsByteVector(false);
        EXPECT_EQ(std::string(mark.begin(), mark.end()), test.mark);
    }
}

TEST(FlashDataHandle, TheWhiteBaseComesAndGoesWhole)
{
    FlashTable table(Block(360));
    std::vector<float> white;
    int32_t time = 0;
    table.handle.GetWhitebaseCorrection(white, time);
    ASSERT_EQ(white.size(), 36u);
    EXPECT_EQ(white[1], 0.51f);
    EXPECT_EQ(time, 232);

    std::vector<float> newWhite(36, 0.875f);
    newWhite[35] = std::numeric_limits<float>::quiet_NaN();
    table.handle.SynchronizeWhitebases(newWhite);
    table.handle.GetWhitebaseCorrection(white, time);
    EXPECT_EQ(std::vector<float>(white.begin(), white.end() - 1), std::vector<float>(35, 0.875f));
    EXPECT_TRUE(std::isnan(white[35])) << "not a number is not zero";
    EXPECT_GT(time, 1700000000) << "the time of the transfer";
}

TEST(FlashDataHandle, AnUnusableWhiteBaseTouchesNothing)
{
    FlashTable table(Block(360));
    table.handle.GetCachedFlashData();
    table.Asked();
    std::vector<float> zero(36, 0.9f);
    zero[20] = -0.0f;
    const struct {
        std::vector<float> white;
        const char* thrown;
    } cases[] = {
        {std::vector<float>(35, 0.9f), "WhiteBaseException: Invalid white data length."},
        {std::vector<float>(37, 0.0f), "WhiteBaseException: Invalid white data length."},
        {{}, "WhiteBaseException: Invalid white data length."},
        {zero, "WhiteBaseException: White data contains zero values."},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(Thrown([&] { table.handle.SynchronizeWhitebases(test.white); }), test.thrown);
    }
    table.handle.GetCachedFlashData();
    EXPECT_EQ(table.Asked(), "");

    Bytes block = Block(360);
    SetFloat(block, 100, 0.0f);
    Seal(block);
    FlashTable dark(block);
    std::vector<float> white;
    int32_t time = 0;
    EXPECT_EQ(Thrown([&] { dark.handle.GetWhitebaseCorrection(white, time); }),
              "WhiteBaseException: White data contains zero values.");
    // A block of an early table has no white base at all.
    FlashTable early(Block(16));
    EXPECT_EQ(Thrown([&] { early.handle.GetWhitebaseCorrection(white, time); }),
              "ResourceException: id 3000 doesn't exist");
}

}  // namespace
}  // namespace J4Test
