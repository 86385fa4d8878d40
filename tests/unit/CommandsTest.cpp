// Every command of the table: what goes over the line, what is made of the answer, and what is refused before.
#include <array>
#include <functional>
#include <sstream>

#include "tests/unit/Channel.h"

namespace J4Test {
namespace {

using namespace Kestrelon::DeviceDriver::J4T::Communication;
using testing::StartsWith;

struct Commands : testing::Test, Channel {
    Commands() { motors->SetLimits(-9000, 9000, -9000, 9000, 10, 400, 5000, 4000, 500, 300); }

    /// Writes what a call gave.
    template <class Values>
    void Tell(const Values& values)
    {
        for (const auto value : values) {
            told << +value << " ";
        }
    }

    void TellPosition(bool isVisor)
    {
        int32_t x = 0;
        int32_t y = 0;
        motors->GetPosition(x, y, isVisor);
        Tell(std::array{x, y});
    }

    void TellBlock(int32_t selector, bool throwOnError)
    {
        uint8_t id = 0;
        uint32_t address = 0;
        int32_t number = 0;
        const int error = flash->ConfigDataBlockStatus(selector, id, address, number, throwOnError);
        told << error << ": " << int{id} << " " << address << " " << number;
    }

    std::ostringstream told;
    Bytes bytes;
    Kestrelon::Utilities::Tools::SmartPointer<j4TableComMotors> motors = manager.GetMotors();
    Kestrelon::Utilities::Tools::SmartPointer<j4TableComInfo> info = manager.GetInfo();
    Kestrelon::Utilities::Tools::SmartPointer<j4TableComMisc> misc = manager.GetMisc();
    Kestrelon::Utilities::Tools::SmartPointer<j4TableComFlash> flash = manager.GetFlash();
};

TEST_F(Commands, RequestsAnswersAndRefusals)
{
    const auto initialize = [&] { motors->Initialize(); };
    const auto move = [&] { motors->Move(1000, 2000, 300, false, false); };
    const auto mode = [&] { told << int{info->GetMode()}; };
    const auto metrics = [&] {
        std::array<uint32_t, 7> values{};
        info->GetTableMetrics(values);
        Tell(values);
    };
    const auto ramp = [&] {
        uint32_t up = 0;
        uint32_t down = 0;
        uint16_t speed = 0;
        info->GetRampData(up, down, speed);
        Tell(std::array<uint32_t, 3>{up, down, speed});
    };
    const auto deviation = [&] {
        std::array<int32_t, 6> values{};
        info->GetControllerDeviation(values);
        Tell(values);
    };
    const auto read = [&](uint32_t address, uint32_t count) {
        flash->ReadMemory(bytes, address, count, 1);
        Tell(bytes);
    };
    const auto readMore = [&](uint32_t address, uint32_t count) {
        flash->ReadBigMemory(bytes, address, count, 1);
        Tell(bytes);
    };
    const std::string unready = "DeviceErrorException: Device initialization failed : ";
    const std::string unknown = "DeviceErrorException: unknown error - ";
    const std::string late = "CommunicationTimeoutException: Read timeout. after idle polls: ";
    const std::string firmware = "FirmwareException: ";

    const struct {
        std::function<void()> call;
        std::string request;  ///< empty: nothing is sent
        Strings replies;
        testing::Matcher<std::string> outcome;  ///< result or exception, and how long the line was silent
    } cases[] = {
        {initialize, "i0", {"!i0", "$i00"}, ""},
        {initialize, "i0", {"$i00"}, ""},
        {initialize, "i0", {"!i0"}, late + "625"},
        {initialize, "i0", {"!i0", "$i01"}, unready + "Position out of range. (1)."},
        {initialize, "i0", {"!i0", "$i02"}, unready + "unknown error (2)."},
        {initialize, "i0", {"!i0", "$i03"}, unready + "Maximum accuracy exceeded. (3)."},
        {initialize, "i0", {"!i0", "$i04"}, unready + "Current limit reached. (4)."},
        {initialize, "i0", {"!i0", "$i05"}, unready + "Null indices not fount. (5)."},
        {initialize, "i0", {"!i0", "$i06"}, unready + "Initialisation interrupted. (6)."},
        {initialize, "i0", {"!i0", "$i07"}, unready + "Invalid command in current mode. (7)."},
        {initialize, "i0", {"!i0", "$i08"}, unready + "No configuration data available. (8)."},
        {initialize, "i0", {"!i0", "$i09"}, unready + "Invalid configuration data. (9)."},
        {initialize, "i0", {"!i0", "$i0A"}, unready + "Wrong hardware. (10)."},
        {initialize, "i0", {"!i0", "$i0b"}, unready + "unknown error (11)."},
        {[&] { motors->GoHome(); }, "i1", {"!i1", "$i10"}, ""},
        {[&] { motors->GoHome(); }, "i1", {"!i1"}, late + "938"},
        {[&] { motors->GoHome(); }, "i1", {"!i1", "$i15"}, "DeviceErrorException: Can't find white plate (5)."},
        {move, "m003e807d0012c", {"!m0", "$m00"}, ""},
        {[&] { motors->Move(2000, 2500, 10, true, false); }, "m107d009c4000a", {"!m1", "$m10"}, ""},
        {[&] { motors->Move(1000, 2000, 400, false, true); }, "m203e807d00190", {"!m2", "$m20"}, ""},
        {[&] { motors->Move(2000, 2500, 300, true, true); }, "m307d009c4012c", {"!m3", "$m30"}, ""},
        {[&] { motors->Move(-1000, 2000, 300, false, false); }, "m0fffffc1807d0012c", {"!m0", "$m00"}, ""},
        {move, "m003e807d0012c", {"!m0"}, late + "938"},
        {move, "m003e807d0012c", {"#m0"}, "DeviceErrorException: Device busy."},
        {move, "m003e807d0012c", {"!m0", "$m01"}, "IllegalPositionException: Position out of range."},
        {move, "m003e807d0012c", {"!m0", "$m02"}, "ResourceException: Speed out of range."},
        {move, "m003e807d0012c", {"!m0", "$m03"}, "PositionNotReachedException: Maximum accuracy exceeded."},
        {move, "m003e807d0012c", {"!m0", "$m04"}, "PositionNotReachedException: Current limit reached."},
        {move, "m003e807d0012c", {"!m0", "$m05"}, unknown + "\x05"},
        {move, "m003e807d0012c", {"!m0", "$m08"}, firmware + "No configuration data available."},
        {move, "m003e807d0012c", {"!m0", "$m09"}, firmware + "Invalid configuration data."},
        {move, "m003e807d0012c", {"!m0", "$m0a"}, unknown + "\n"},
        {move, "m003e807d0012c", {"!m0", "!m0"}, unknown + "\xff"},
        {[&] { motors->Move(1000, 2000, 9, false, false); },
         "",
         {},
         "ResourceException: Invalid speed (9 != [10,400])."},
        {[&] { motors->Move(1000, 2000, 401, false, false); },
         "",
         {},
         "ResourceException: Invalid speed (401 != [10,400])."},
        {[&] { motors->Move(9001, 2000, 401, false, false); },
         "",
         {},
         "IllegalPositionException: Invalid position (9001/2000)."},
        {[&] { TellPosition(false); }, "p0", {"$p00ff3807d0"}, "-200 2000 "},
        {[&] { TellPosition(true); }, "p1", {"$p107FFF8000"}, "32767 -32768 "},
        {[&] { TellPosition(false); }, "p0", {"$p0100010001"}, firmware + "No config block."},
        {[&] { TellPosition(false); }, "p0", {"$p0200000000"}, firmware + "Logical error in config block."},
        {[&] { TellPosition(false); }, "p0", {"$p0300000000"}, unknown + "\x03"},
        {[&] { motors->HoldPosition(true); }, "s1", {"$s10"}, ""},
        {[&] { motors->HoldPosition(true); }, "s1", {"$s11"}, unknown + "\x01"},
        {[&] { motors->HoldPosition(true); }, "s1", {"!s1"}, late + "125"},
        {[&] { motors->HoldPosition(false); }, "s0", {"$s00"}, ""},
        {[&] { motors->SetScanDelay(200); }, "d100c8", {"$d1000c8"}, ""},
        {[&] { motors->SetScanDelay(200); }, "d100c8", {"$d1Z00c8"}, unknown + "#"},

        {[&] { Tell(info->GetStatus()); }, "a0", {"$a000a12f0"}, "10 18 240 "},
        {mode, "a0", {"$a050a12f0"}, "2"},        // decoded whatever the error character
        {mode, "a0", {"$a0000ff08"}, "0"},        // bits of the first byte
        {mode, "a0", {"!a000c", "!a000c"}, "4"},  // a short body brings its checksum and CR along, an odd number here
        {mode, "a0", {"!a0", "!a0"}, "RuntimeException: Status empty"},
        {metrics,
         "a2",
         {"$a200000000100000200ffffffff80000000000000050000beef12345678"},
         "1 512 4294967295 2147483648 5 48879 305419896 "},
        {metrics, "a2", {"!a2", "!a2"}, StartsWith("OutOfRangeException: ")},
        {ramp, "a3", {"$a30000001f4000109a0ffff"}, "500 68000 65535 "},
        {deviation, "a4", {"$a40ffff000180007fff0000fffe"}, "-1 1 -32768 32767 0 -2 "},
        {[&] { told << misc->IsElectrostaticFoilEnabled(); }, "f4", {"$f4003"}, "1"},
        {[&] { told << misc->IsElectrostaticFoilEnabled(); }, "f4", {"$f40fe"}, "0"},
        {[&] { told << misc->IsElectrostaticFoilButtonEnabled(); }, "f4", {"$f40fd"}, "1"},
        {[&] { told << misc->IsElectrostaticFoilButtonEnabled(); }, "f4", {"$f4002"}, "0"},
        {[&] { told << misc->WasJ4CurrentMeasured(); }, "c2", {"$c2000"}, "0"},
        {[&] { told << misc->WasJ4CurrentMeasured(); }, "c2", {"$c20fc"}, "1"},
        {[&] { misc->Reset(false); }, "r", {"$r0"}, ""},
        {[&] { misc->Reset(true); }, "r", {"$r0"}, " paused: 1000"},
        {[&] { misc->Reset(true); }, "r", {"$rB"}, "TableException: Can't reset table (11)."},
        {[&] { misc->Reset(true); }, "r", {"!r", "!r"}, "TableException: Can't reset table (255)."},

        {[&] { flash->PrepareSector(1, 14); }, "u01e", {"$u00"}, ""},
        {[&] { flash->PrepareSector(10, 13); }, "u0ad", {"$u00"}, ""},
        {[&] { flash->PrepareSector(0, 14); }, "", {}, firmware + "Invalid StartSector: 0"},
        {[&] { flash->PrepareSector(15, 0); }, "", {}, firmware + "Invalid StartSector: 15"},
        {[&] { flash->PrepareSector(1, 15); }, "", {}, firmware + "Invalid EndSector: 15"},
        {[&] { flash->EraseSector(11, 12); }, "u2bc", {"$u20"}, ""},
        {[&] { flash->EraseSector(0, 1); }, "", {}, firmware + "Invalid start sector: 0"},
        {[&] { flash->EraseSector(14, 65535); }, "", {}, firmware + "Invalid end sector: 65535"},
        {[&] { flash->CopyRamToFlash(0x2000, 0, 512); }, "u10200000003", {"$u10"}, ""},
        {[&] { flash->CopyRamToFlash(0x1DFFF, 0x1000, 1024); }, "u11dfff10004", {"$u10"}, ""},
        {[&] { flash->CopyRamToFlash(0xE000, 0xABC, 4096); }, "u10e0000abc6", {"$u10"}, ""},
        {[&] { flash->CopyRamToFlash(0x1FFF, 0, 512); }, "", {}, firmware + "Invalid Flash address: 8191"},
        {[&] { flash->CopyRamToFlash(0x1E000, 0x1001, 1); }, "", {}, firmware + "Invalid Flash address: 122880"},
        {[&] { flash->CopyRamToFlash(0x2000, 0x1001, 1); }, "", {}, firmware + "Invalid Ram address: 4097"},
        {[&] { flash->CopyRamToFlash(0x2000, 0, 256); }, "", {}, firmware + "Invalid number of bytes."},
        {[&] { read(0x1DFFF, 0); }, "u80001dfff0000", {"$u80"}, ""},
        {[&] { read(0, 3); }, "u8000000000003", {"$u8012345678"}, "18 52 86 "},  // what is behind is left out
        {[&] { read(0, 3); }, "u8000000000003", {"!u801", "!u801"}, firmware + "Memory size not as expected (3)."},
        {[&] { read(0, 0); }, "u8000000000000", {"$u83"}, firmware + "Can't read memory: interval (3)."},
        {[&] { read(0x1E000, 257); }, "", {}, firmware + "Invalid start address: 122880"},
        {[&] { read(0, 257); }, "", {}, firmware + "Invalid number of bytes: 257"},
        {[&] { readMore(0, 0); }, "u8000000000000", {"$u80"}, ""},
        {[&] { readMore(0x1DFFF, 1); }, "u80001dfff0001", {"$u8011"}, "17 "},
        {[&] { readMore(0, 0x1E000); }, "", {}, firmware + "Invalid end address: 122880"},
        {[&] { flash->WriteToRam(Bytes(128, 0xFF), 0x1000, 1); }, "u910001" + Repeated(128, "ff"), {"$u90"}, ""},
        {[&] { flash->WriteToRam(Bytes(256, 0x0A), 0, 1); }, "u900002" + Repeated(256, "0a"), {"$u90"}, ""},
        {[&] { flash->WriteToRam(Bytes(127), 0x1001, 1); }, "", {}, firmware + "Invalid start address: 4097"},
        {[&] { flash->WriteToRam(Bytes(255), 0, 1); }, "", {}, firmware + "Invalid number of bytes."},
        {[&] { flash->WriteToRam(Bytes(), 0, 1); }, "", {}, firmware + "Invalid number of bytes."},
        {[&] { flash->WriteToFlash(Bytes(), 0x1E000, 1); }, "", {}, firmware + "Invalid flash address: 122880"},
        {[&] { flash->WriteToFlash(Bytes(), 0x1FFF, 1); }, "", {}, firmware + "Invalid flash address: 8191"},
        {[&] { flash->WriteToFlash(Bytes(), 0x2100, 1); }, "", {}, firmware + "Flash address not on boundary."},
        {[&] { flash->WriteToFlash(Bytes(), 0x2200, 1); }, "", {}, firmware + "No data to send."},
        {[&] { flash->WriteToFlash(Bytes(8193), 0x2000, 1); }, "", {}, firmware + "Data are not in same sector."},
        {[&] { flash->WriteToFlash(Bytes(513), 0x3E00, 1); }, "", {}, firmware + "Data are not in same sector."},
        {[&] { flash->Unlock(0); }, "uA850462", {"$uA0"}, ""},
        {[&] { flash->Unlock(1); }, "uA317598", {"$uA0"}, ""},
        {[&] { flash->Unlock(2); }, "uA264083", {"$uA0"}, ""},
        {[&] { flash->Unlock(3); }, "", {}, firmware + "Invalid block."},
        {[&] { flash->Unlock(-1); }, "", {}, firmware + "Invalid block."},
        {[&] { flash->Lock(); }, "uB", {"$uB0"}, ""},
        {[&] { flash->Lock(); }, "uB", {"$uBZ"}, firmware + "Can't Lock: unknown firmware error (35)."},
        {[&] { TellBlock(0, true); }, "k0", {"$k000Ce000fffffffe"}, "0: 12 57344 -2"},
        {[&] { TellBlock(3, true); }, "k3", {"$k310Ce000fffffffe"}, firmware + "No config block."},
        {[&] { TellBlock(1, false); }, "k1", {"$k110Ce000fffffffe"}, "1: 12 57344 -2"},  // decoded also with an error
        {[&] { TellBlock(1, true); }, "k1", {"$k120Ce000fffffffe"}, firmware + "Checksum error in config block."},
        {[&] { TellBlock(2, true); }, "k2", {"$k2A0Ce000fffffffe"}, firmware + "Can't get config block10)"},
        {[&] { TellBlock(4, true); }, "", {}, firmware + "Invalid block structure."},
        {[&] { TellBlock(-1, false); }, "", {}, firmware + "Invalid block structure."},
    };
    for (const auto& test : cases) {
        usb.Clear();
        ScriptedClock::Reset();
        Strings frames;
        for (const std::string& reply : test.replies) {
            frames.push_back(Reply(reply));
        }
        if (!test.request.empty()) {
            usb.Expect(test.request, frames);
        }
        told.str("");
        told << Thrown(test.call);
        if (usb.idlePolls > 0) {
            told << " after idle polls: " << usb.idlePolls;
        }
        for (const uint32_t pause : ScriptedClock::sleeps) {
            told << " paused: " << pause;
        }
        EXPECT_THAT(told.str(), test.outcome) << test.request;
        EXPECT_EQ(usb.requests.size(), test.request.empty() ? 0u : 1u) << told.str();
    }
}

TEST_F(Commands, FlashErrorsHaveTheirWords)
{
    std::string words;
    for (const int error : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 255}) {
        words += j4TableComFlash::GetFlashErrorString(static_cast<uint8_t>(error)) + "; ";
    }
    EXPECT_EQ(words,
              "no error (0); unknown command (1); command length (2); interval (3); address aligment (4); "
              "invalid destination or block size (5); FLASH busy (6); sector locked (7); "
              "sector not prepared for write operation (8); FLASH address boundary (9); Wrong unlock ID (10); "
              "Unlockable block (11); Config data only in 'S' mode writeable (12); unknown firmware error (13); "
              "unknown firmware error (255); ");
}

TEST_F(Commands, TransfersAreTriedAgainAfterATenthOfASecond)
{
    usb.Expect("u8000000000001", {":$u801200\r"});
    EXPECT_EQ(Thrown([&] { flash->ReadMemory(bytes, 0, 1, 1); }), "CommunicationDataException: Checksum not valid.");
    EXPECT_THAT(ScriptedClock::sleeps, testing::IsEmpty());
    usb.Expect("u8000000000001", {":$u801200\r"});
    usb.Expect("u8000000000001", {Reply("$u8012")});
    flash->ReadMemory(bytes, 0, 1, 2);
    EXPECT_EQ(bytes, Bytes{0x12});
    EXPECT_EQ(ScriptedClock::sleeps, Sleeps{100});
    usb.Expect("u900001" + Repeated(128, "00"), {""});
    usb.Expect("u900001" + Repeated(128, "00"), {Reply("$u90")});
    flash->WriteToRam(Bytes(128), 0, 2);
    EXPECT_EQ(ScriptedClock::sleeps, (Sleeps{100, 100}));
}

TEST_F(Commands, TransfersGoInPiecesUntilOneFails)
{
    usb.Expect("u8000020000100", {Reply("$u80" + Repeated(256, "a5"))});
    usb.Expect("u8000021000001", {Reply("$u805a")});
    flash->ReadBigMemory(bytes, 0x2000, 257, 1);
    EXPECT_THAT(bytes, testing::SizeIs(257));
    EXPECT_EQ(bytes.back(), 0x5A);
    usb.Expect("u80001dfff0100", {Reply("$u80" + Repeated(256, "00"))});
    EXPECT_EQ(Thrown([&] { flash->ReadBigMemory(bytes, 0x1DFFF, 257, 1); }),
              "FirmwareException: Invalid start address: 123135");
    usb.SetTable([](const std::string& request) { return Strings{Reply("$" + request.substr(0, 2) + "0")}; });
    const struct {
        std::size_t size;
        Strings headers;
    } parts[] = {
        {600, {}},                  // 88 bytes are no size of the RAM buffer
        {512 + 256, {"u9", "u0"}},  // 256 bytes can be loaded, not copied
        {512 + 300, {"u9"}},
    };
    for (const auto& part : parts) {
        const std::size_t size = part.size;
        const Strings& headers = part.headers;
        usb.Clear();
        EXPECT_EQ(Thrown([&] { flash->WriteToFlash(Bytes(size), 0x2000, 1); }),
                  "FirmwareException: Invalid number of bytes.");
        ASSERT_EQ(usb.requests.size(), 4 + headers.size()) << size;
        EXPECT_EQ(usb.requests[3], "u10200000003");
        for (std::size_t i = 0; i < headers.size(); ++i) {
            EXPECT_EQ(usb.requests[4 + i].substr(0, 2), headers[i]) << size;
        }
    }
}

}  // namespace
}  // namespace J4Test
