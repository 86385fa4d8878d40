#include <functional>
#include <numeric>

#include "tests/unit/Channel.h"

namespace J4Test {
namespace {

using namespace Kestrelon::DeviceDriver::J4T::Communication;

/// A table that does whatever it is told, with an error character of the test's choice.
struct Flash : Channel {
    Flash()
    {
        usb.SetTable(
            [this](const std::string& request) { return Strings{Reply("$" + request.substr(0, 2) + error + data)}; });
    }

    char error = '0';
    std::string data;
    Kestrelon::Utilities::Tools::SmartPointer<j4TableComFlash> flash = manager.GetFlash();
};

Bytes Counting(std::size_t count)
{
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), uint8_t{0});
    return bytes;
}

TEST(FlashCommands, BordersAndWords)
{
    Flash table;
    j4TableComFlash& flash = *table.flash;
    Bytes result;
    uint8_t id = 0;
    uint32_t address = 0;
    int32_t third = 0;
    const struct {
        std::function<void()> call;
        std::string outcome;  ///< the request that goes out, or the words
    } cases[] = {
        {[&] { flash.PrepareSector(1, 14); }, "u01e"},
        {[&] { flash.PrepareSector(10, 13); }, "u0ad"},
        {[&] { flash.PrepareSector(0, 14); }, "Invalid StartSector: 0"},
        {[&] { flash.PrepareSector(15, 0); }, "Invalid StartSector: 15"},
        {[&] { flash.PrepareSector(1, 15); }, "Invalid EndSector: 15"},
        {[&] { flash.EraseSector(11, 12); }, "u2bc"},
        {[&] { flash.EraseSector(0, 1); }, "Invalid start sector: 0"},
        {[&] { flash.EraseSector(14, 65535); }, "Invalid end sector: 65535"},
        {[&] { flash.CopyRamToFlash(0x2000, 0, 512); }, "u10200000003"},
        {[&] { flash.CopyRamToFlash(0x1DFFF, 0x1000, 1024); }, "u11dfff10004"},
        {[&] { flash.CopyRamToFlash(0xE000, 0xABC, 4096); }, "u10e0000abc6"},
        {[&] { flash.CopyRamToFlash(0x1FFF, 0, 512); }, "Invalid Flash address: 8191"},
        {[&] { flash.CopyRamToFlash(0x1E000, 0x1001, 1); }, "Invalid Flash address: 122880"},
        {[&] { flash.CopyRamToFlash(0x2000, 0x1001, 1); }, "Invalid Ram address: 4097"},
        {[&] { flash.CopyRamToFlash(0x2000, 0, 256); }, "Invalid number of bytes."},
        {[&] { flash.CopyRamToFlash(0x2000, 0, 2048); }, "Invalid number of bytes."},
        {[&] { flash.ReadMemory(result, 0x1DFFF, 0, 1); }, "u80001dfff0000"},
        {[&] { flash.ReadMemory(result, 0x1E000, 257, 1); }, "Invalid start address: 122880"},
        {[&] { flash.ReadMemory(result, 0, 257, 1); }, "Invalid number of bytes: 257"},
        {[&] { flash.ReadBigMemory(result, 0, 0, 1); }, "u8000000000000"},
        {[&] { flash.ReadBigMemory(result, 0, 0x1E000, 1); }, "Invalid end address: 122880"},
        {[&] { flash.WriteToRam(Bytes(128, 0xFF), 0x1000, 1); }, "u910001" + Repeated(128, "ff")},
        {[&] { flash.WriteToRam(Bytes(256, 0x0A), 0, 1); }, "u900002" + Repeated(256, "0a")},
        {[&] { flash.WriteToRam(Bytes(127), 0x1001, 1); }, "Invalid start address: 4097"},
        {[&] { flash.WriteToRam(Bytes(255), 0, 1); }, "Invalid number of bytes."},
        {[&] { flash.WriteToRam(Bytes(), 0, 1); }, "Invalid number of bytes."},
        {[&] { flash.WriteToFlash(Bytes(), 0x1E000, 1); }, "Invalid flash address: 122880"},
        {[&] { flash.WriteToFlash(Bytes(), 0x1FFF, 1); }, "Invalid flash address: 8191"},
        {[&] { flash.WriteToFlash(Bytes(), 0x1DFFF, 1); }, "Flash address not on boundary."},
        {[&] { flash.WriteToFlash(Bytes(), 0x2100, 1); }, "Flash address not on boundary."},
        {[&] { flash.WriteToFlash(Bytes(), 0x2200, 1); }, "No data to send."},
        {[&] { flash.WriteToFlash(Bytes(8193), 0x2000, 1); }, "Data are not in same sector."},
        {[&] { flash.WriteToFlash(Bytes(513), 0x3E00, 1); }, "Data are not in same sector."},
        {[&] { flash.Unlock(0); }, "uA850462"},
        {[&] { flash.Unlock(1); }, "uA317598"},
        {[&] { flash.Unlock(2); }, "uA264083"},
        {[&] { flash.Unlock(3); }, "Invalid block."},
        {[&] { flash.Unlock(-1); }, "Invalid block."},
        {[&] { flash.Lock(); }, "uB"},
        {[&] { flash.ConfigDataBlockStatus(4, id, address, third, true); }, "Invalid block structure."},
        {[&] { flash.ConfigDataBlockStatus(-1, id, address, third, false); }, "Invalid block structure."},
    };
    for (const auto& test : cases) {
        table.usb.Clear();
        const std::string thrown = Thrown(test.call);
        if (test.outcome.front() == 'u') {
            EXPECT_EQ(thrown, "") << test.outcome;
            EXPECT_EQ(table.usb.requests, Strings{test.outcome});
        } else {
            EXPECT_EQ(thrown, "FirmwareException: " + test.outcome);
            EXPECT_TRUE(table.usb.journal.empty()) << test.outcome;
        }
    }
    EXPECT_EQ(table.usb.idlePolls, 0);
}

TEST(FlashCommands, TheTablesErrorsAreNamed)
{
    Flash table;
    j4TableComFlash& flash = *table.flash;
    Bytes result;
    const struct {
        std::function<void()> call;
        char error;
        const char* thrown;
    } cases[] = {
        {[&] { flash.PrepareSector(1, 1); }, '7', "Can't prepare sector: sector locked (7)."},
        {[&] { flash.EraseSector(1, 1); }, '8', "Can't erase sector: sector not prepared for write operation (8)."},
        {[&] { flash.CopyRamToFlash(0x2000, 0, 512); }, '9', "Can't copy ram to flash: FLASH address boundary (9)."},
        {[&] { flash.ReadMemory(result, 0, 0, 3); }, '3', "Can't read memory: interval (3)."},
        {[&] { flash.WriteToRam(Bytes(128), 0, 3); }, 'Z', "Can't write to ram: unknown firmware error (35)."},
        {[&] { flash.Unlock(1); }, 'A', "Can't unlock: Wrong unlock ID (10)."},
        {[&] { flash.Lock(); }, '1', "Can't Lock: unknown command (1)."},
    };
    for (const auto& test : cases) {
        table.error = test.error;
        EXPECT_EQ(Thrown(test.call), std::string("FirmwareException: ") + test.thrown);
    }
    EXPECT_EQ(table.usb.requests.size(), std::size(cases)) << "an error of the table is no reason to try again";

    const char* const words[] = {"no error (0)",
                                 "unknown command (1)",
                                 "command length (2)",
                                 "interval (3)",
                                 "address aligment (4)",
                                 "invalid destination or block size (5)",
                                 "FLASH busy (6)",
                                 "sector locked (7)",
                                 "sector not prepared for write operation (8)",
                                 "FLASH address boundary (9)",
                                 "Wrong unlock ID (10)",
                                 "Unlockable block (11)",
                                 "Config data only in 'S' mode writeable (12)",
                                 "unknown firmware error (13)"};
    for (std::size_t error = 0; error < std::size(words); ++error) {
        EXPECT_EQ(j4TableComFlash::GetFlashErrorString(static_cast<uint8_t>(error)), words[error]);
    }
    EXPECT_EQ(j4TableComFlash::GetFlashErrorString(255), "unknown firmware error (255)");
}

TEST(FlashCommands, BlockStatusIsDecodedAlsoWithAnError)
{
    Flash table;
    table.data = "0Ce000fffffffe";
    const struct {
        char error;
        const char* thrown;
    } cases[] = {
        {'0', ""},
        {'1', "FirmwareException: No config block."},
        {'2', "FirmwareException: Checksum error in config block."},
        {'A', "FirmwareException: Can't get config block10)"},
    };
    for (const auto& test : cases) {
        table.error = test.error;
        for (int32_t selector = 0; selector <= 3; ++selector) {
            uint8_t id = 0;
            uint32_t address = 0;
            int32_t third = 0;
            const auto status = [&](bool throwOnError) {
                return table.flash->ConfigDataBlockStatus(selector, id, address, third, throwOnError);
            };
            EXPECT_EQ(Thrown([&] { status(true); }), test.thrown);
            EXPECT_EQ(id, *test.thrown == '\0' ? 12 : 0);
            EXPECT_EQ(status(false), test.error == 'A' ? 10 : test.error - '0');
            EXPECT_EQ(id, 12);
            EXPECT_EQ(address, 0xE000u);
            EXPECT_EQ(third, -2);
            EXPECT_EQ(table.usb.requests.back(), "k" + std::to_string(selector));
        }
    }
}

TEST(FlashCommands, BigReadsGoInPieces)
{
    Flash table;
    Bytes result{1, 2, 3};
    table.usb.Expect("u8000020000100", {Reply("$u80" + Repeated(256, "A5"))});
    table.usb.Expect("u8000021000001", {Reply("$u805a")});
    table.flash->ReadBigMemory(result, 0x2000, 257, 1);
    Bytes expected(256, 0xA5);
    expected.push_back(0x5A);
    EXPECT_EQ(result, expected);

    table.usb.Expect("u80001dfff0001", {Reply("$u8011")});
    table.flash->ReadBigMemory(result, 0x1DFFF, 1, 1);
    EXPECT_EQ(result, Bytes{0x11});
    table.usb.Expect("u80001df010100", {});
    EXPECT_EQ(Thrown([&] { table.flash->ReadMemory(result, 0x1DF01, 256, 1); }),
              "CommunicationTimeoutException: Read timeout.");
    // Beyond the first piece the address is out of the memory.
    table.usb.Expect("u80001dfff0100", {Reply("$u80" + Repeated(256, "00"))});
    EXPECT_EQ(Thrown([&] { table.flash->ReadBigMemory(result, 0x1DFFF, 257, 1); }),
              "FirmwareException: Invalid start address: 123135");
}

TEST(FlashCommands, ReadsHaveToBringWhatWasAskedFor)
{
    const struct {
        const char* reply;
        const char* thrown;
    } cases[] = {
        {"$u8012345678", ""},  // what is behind is left out
        {"!u801", "FirmwareException: Memory size not as expected (3)."},
        {"!u8", "FirmwareException: Can't read memory: unknown firmware error (255)."},
    };
    for (const auto& test : cases) {
        Flash table;
        Bytes result;
        table.usb.Expect("u8000000000003", Strings(test.reply[0] == '!' ? 2 : 1, Reply(test.reply)));
        EXPECT_EQ(Thrown([&] { table.flash->ReadMemory(result, 0, 3, 1); }), test.thrown) << test.reply;
    }
}

TEST(FlashCommands, TransfersAreTriedAgainAfterATenthOfASecond)
{
    for (const int32_t attempts : {1, 2}) {
        Flash table;
        Bytes result;
        table.usb.Expect("u8000000000001", {":$u801200\r"});
        if (attempts == 2) {
            table.usb.Expect("u8000000000001", {Reply("$u8012")});
        }
        EXPECT_EQ(Thrown([&] { table.flash->ReadMemory(result, 0, 1, attempts); }),
                  attempts == 2 ? "" : "CommunicationDataException: Checksum not valid.");
        EXPECT_EQ(ScriptedClock::sleeps, Sleeps(attempts - 1, 100));
    }
    Flash table;
    table.usb.Expect("u900001" + Repeated(128, "00"), {""});
    table.flash->WriteToRam(Bytes(128), 0, 2);
    EXPECT_EQ(table.usb.requests.size(), 2u);
    EXPECT_EQ(ScriptedClock::sleeps, Sleeps{100});
}

TEST(FlashCommands, AWholeSectorIsSixteenPasses)
{
    Flash table;
    const Bytes data = Counting(8192);
    table.flash->WriteToFlash(data, 0x1C000, 2);
    ASSERT_EQ(table.usb.requests.size(), 16u * 4);
    std::string slot;
    for (int value = 0; value < 256; ++value) {
        slot += std::string(1, "0123456789abcdef"[value >> 4]) + "0123456789abcdef"[value & 15];
    }
    for (std::size_t pass = 0; pass < 16; ++pass) {
        const Strings::const_iterator begin = table.usb.requests.begin() + static_cast<std::ptrdiff_t>(4 * pass);
        static constexpr char digits[] = "0123456789abcdef";
        const std::size_t address = 0x1C000 + 512 * pass;
        EXPECT_EQ(Strings(begin, begin + 4),
                  (Strings{"u900002" + slot, "u901002" + slot, "u0ee",
                           std::string("u11") + digits[address >> 12 & 15] + digits[address >> 8 & 15] + "0000003"}))
            << pass;
    }
}

TEST(FlashCommands, ARaggedEndFailsAfterWhatIsBeforeIt)
{
    const struct {
        std::size_t size;
        Strings tail;  ///< requests after the first pass, without their data
    } cases[] = {
        {600, {}},                      // 88 bytes are no size of the RAM buffer
        {512 + 256, {"u90000", "u0"}},  // 256 bytes can be loaded, not copied
        {512 + 128, {"u90000", "u0"}},
        {512 + 300, {"u90000"}},
    };
    for (const auto& test : cases) {
        Flash table;
        EXPECT_EQ(Thrown([&] { table.flash->WriteToFlash(Counting(test.size), 0x2000, 1); }),
                  "FirmwareException: Invalid number of bytes.");
        ASSERT_EQ(table.usb.requests.size(), 4 + test.tail.size()) << test.size;
        EXPECT_EQ(table.usb.requests[3], "u10200000003");
        for (std::size_t i = 0; i < test.tail.size(); ++i) {
            EXPECT_EQ(table.usb.requests[4 + i].rfind(test.tail[i], 0), 0u) << test.size;
        }
    }
}

}  // namespace
}  // namespace J4Test
