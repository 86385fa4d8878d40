#include <gtest/gtest.h>

#include "tests/support/Thrown.h"
#include "tests/unit/Channel.h"

namespace J4Test {
namespace {

using namespace Kestrelon::DeviceDriver::J4T::Communication;
using Bytes = std::vector<uint8_t>;
using Sleeps = std::vector<uint32_t>;
using Strings = std::vector<std::string>;

TEST(ComInfo, StatusAndMode)
{
    Channel channel;
    channel.usb.Expect("a0", {Reply("$a000a12f0")});
    EXPECT_EQ(channel.manager.GetInfo()->GetStatus(), (Bytes{0x0A, 0x12, 0xF0}));
    channel.usb.Expect("a0", {Reply("$a050a12f0")});
    EXPECT_EQ(channel.manager.GetInfo()->GetMode(), 2) << "decoded whatever the error character";
    // A short body brings its checksum and CR along, an odd number of characters here.
    channel.usb.Expect("a0", {Reply("!a000c"), Reply("!a000c")});
    EXPECT_EQ(channel.manager.GetInfo()->GetMode(), 4);
    EXPECT_EQ(j4TableComInfo::ConvertStatusToMode({0xFF}), 7);
    EXPECT_EQ(j4TableComInfo::ConvertStatusToMode({0x08, 0x07}), 0);
    EXPECT_EQ(Thrown([] { j4TableComInfo::ConvertStatusToMode({}); }), "RuntimeException: Status empty");
    channel.usb.Expect("a0", {Reply("!a0"), Reply("!a0")});
    EXPECT_EQ(Thrown([&] { channel.manager.GetInfo()->GetMode(); }), "RuntimeException: Status empty");
}

TEST(ComInfo, ValuesStandAtTheirPlaces)
{
    Channel channel;
    const auto info = channel.manager.GetInfo();
    uint32_t first = 0;
    uint32_t second = 0;
    uint32_t third = 0;
    channel.usb.Expect("a1", {Reply("$a10"
                                    "0102"
                                    "fFfE"
                                    "9a")});
    info->GetFirmware(first, second, third);
    EXPECT_EQ(first, 0x0102u);
    EXPECT_EQ(second, 0xFFFEu);
    EXPECT_EQ(third, 0x9Au);

    std::array<uint32_t, 7> metrics{};
    channel.usb.Expect("a2", {Reply("$a20"
                                    "00000001"
                                    "00000200"
                                    "ffffffff"
                                    "80000000"
                                    "00000005"
                                    "0000beef"
                                    "12345678")});
    info->GetTableMetrics(metrics);
    EXPECT_EQ(metrics, (std::array<uint32_t, 7>{1, 0x200, 0xFFFFFFFF, 0x80000000, 5, 0xBEEF, 0x12345678}));

    uint16_t speed = 0;
    channel.usb.Expect("a3", {Reply("$a30"
                                    "000001f4"
                                    "000109a0"
                                    "ffff")});
    info->GetRampData(first, second, speed);
    EXPECT_EQ(first, 500u);
    EXPECT_EQ(second, 68000u);
    EXPECT_EQ(speed, 65535u);

    std::array<int32_t, 6> deviations{};
    channel.usb.Expect("a4", {Reply("$a40"
                                    "ffff"
                                    "0001"
                                    "8000"
                                    "7fff"
                                    "0000"
                                    "fffe")});
    info->GetControllerDeviation(deviations);
    EXPECT_EQ(deviations, (std::array<int32_t, 6>{-1, 1, -32768, 32767, 0, -2}));

    channel.usb.Expect("a5", {Reply("$a50"
                                    "ffff"
                                    "0010")});
    info->GetControllerInfo(first, second);
    EXPECT_EQ(first, 65535u);
    EXPECT_EQ(second, 16u);
}

TEST(ComInfo, AnAnswerWithoutDataIsAFailureNotAnAccident)
{
    Channel channel;
    std::array<uint32_t, 7> metrics{};
    channel.usb.Expect("a2", {Reply("!a2"), Reply("!a2")});
    const std::string thrown = Thrown([&] { channel.manager.GetInfo()->GetTableMetrics(metrics); });
    EXPECT_EQ(thrown.rfind("OutOfRangeException: ", 0), 0u) << thrown;
}

TEST(ComMisc, SwitchesAreFlagsInTheSubCommand)
{
    Channel channel;
    const auto misc = channel.manager.GetMisc();
    const struct {
        void (j4TableComMisc::*set)(bool);
        bool on;
        const char* request;
        const char* reply;
    } cases[] = {
        {&j4TableComMisc::J4CurrentInterrupt, false, "c0", "$c0000"},
        {&j4TableComMisc::J4CurrentInterrupt, true, "c1", "$c1000"},
        {&j4TableComMisc::ElectrostaticFoil, false, "f0", "$f0000"},
        {&j4TableComMisc::ElectrostaticFoil, true, "f1", "$f1901"},
        {&j4TableComMisc::ElectrostaticFoilButton, false, "f2", "$f2000"},
        {&j4TableComMisc::ElectrostaticFoilButton, true, "f3", "$f3000"},
    };
    for (const auto& test : cases) {
        channel.usb.Expect(test.request, {Reply(test.reply)});
        EXPECT_EQ(Thrown([&] { ((*misc).*test.set)(test.on); }), "") << test.request;
    }
    EXPECT_EQ(channel.usb.idlePolls, 0) << "the replies' length is known";
}

TEST(ComMisc, FoilAndButtonHaveOppositeSenses)
{
    const struct {
        const char* data;
        bool foil;
        bool button;
        bool current;
    } cases[] = {
        {"00", false, true, false}, {"01", true, true, true},  {"02", false, false, true},
        {"03", true, false, true},  {"fc", false, true, true}, {"FF", true, false, true},
    };
    for (const auto& test : cases) {
        Channel channel;
        const auto misc = channel.manager.GetMisc();
        channel.usb.SetTable(
            [&](const std::string& request) { return Strings{Reply("$" + request + "0" + test.data)}; });
        EXPECT_EQ(misc->IsElectrostaticFoilEnabled(), test.foil) << test.data;
        EXPECT_EQ(misc->IsElectrostaticFoilButtonEnabled(), test.button) << test.data;
        EXPECT_EQ(misc->WasJ4CurrentMeasured(), test.current) << test.data;
        EXPECT_EQ(channel.usb.requests, (Strings{"f4", "f4", "c2"}));
    }
}

TEST(ComMisc, ResetWaitsOnlyWhenAskedAndWhenItWorked)
{
    Channel channel;
    const auto misc = channel.manager.GetMisc();
    channel.usb.Expect("r", {Reply("$r0")});
    misc->Reset(false);
    EXPECT_EQ(ScriptedClock::sleeps, Sleeps());
    channel.usb.Expect("r", {Reply("$r0")});
    misc->Reset(true);
    EXPECT_EQ(ScriptedClock::sleeps, Sleeps{1000});
    channel.usb.Expect("r", {Reply("$rB")});
    EXPECT_EQ(Thrown([&] { misc->Reset(true); }), "TableException: Can't reset table (11).");
    channel.usb.Expect("r", {Reply("!r"), Reply("!r")});
    EXPECT_EQ(Thrown([&] { misc->Reset(true); }), "TableException: Can't reset table (255).") << "no error character";
    EXPECT_EQ(ScriptedClock::sleeps, Sleeps{1000});
}

}  // namespace
}  // namespace J4Test
