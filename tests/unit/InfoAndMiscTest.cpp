// What the table tells, and its switches.
#include <array>

#include "tests/unit/Channel.h"

namespace J4Test {
namespace {

using namespace Kestrelon::DeviceDriver::J4T::Communication;
using testing::ElementsAre;
using testing::StartsWith;

struct InfoAndMisc : testing::Test, Channel {
    Kestrelon::Utilities::Tools::SmartPointer<j4TableComInfo> info = manager.GetInfo();
    Kestrelon::Utilities::Tools::SmartPointer<j4TableComMisc> misc = manager.GetMisc();
};

TEST_F(InfoAndMisc, StatusAndMode)
{
    usb.Expect("a0", {Reply("$a000a12f0")});
    EXPECT_EQ(info->GetStatus(), (Bytes{0x0A, 0x12, 0xF0}));
    usb.Expect("a0", {Reply("$a050a12f0")});
    EXPECT_EQ(info->GetMode(), 2) << "decoded whatever the error character";
    // A short body brings its checksum and CR along, an odd number of characters here.
    usb.Expect("a0", {Reply("!a000c"), Reply("!a000c")});
    EXPECT_EQ(info->GetMode(), 4);
    EXPECT_EQ(j4TableComInfo::ConvertStatusToMode({0xFF}), 7);
    EXPECT_EQ(j4TableComInfo::ConvertStatusToMode({0x08, 0x07}), 0);
    usb.Expect("a0", {Reply("!a0"), Reply("!a0")});
    EXPECT_EQ(Thrown([&] { info->GetMode(); }), "RuntimeException: Status empty");
}

TEST_F(InfoAndMisc, NumbersKeepTheirSigns)
{
    std::array<uint32_t, 7> metrics{};
    usb.Expect("a2", {Reply("$a200000000100000200ffffffff80000000000000050000beef12345678")});
    info->GetTableMetrics(metrics);
    EXPECT_THAT(metrics, ElementsAre(1u, 0x200u, 0xFFFFFFFFu, 0x80000000u, 5u, 0xBEEFu, 0x12345678u));
    usb.Expect("a2", {Reply("!a2"), Reply("!a2")});
    EXPECT_THAT(Thrown([&] { info->GetTableMetrics(metrics); }), StartsWith("OutOfRangeException: "))
        << "an answer without data is a failure, not an accident";
    uint32_t first = 0;
    uint32_t second = 0;
    uint16_t speed = 0;
    usb.Expect("a3", {Reply("$a30000001f4000109a0ffff")});
    info->GetRampData(first, second, speed);
    EXPECT_THAT((std::array{first, second, uint32_t{speed}}), ElementsAre(500u, 68000u, 65535u));
    std::array<int32_t, 6> deviations{};
    usb.Expect("a4", {Reply("$a40ffff000180007fff0000fffe")});
    info->GetControllerDeviation(deviations);
    EXPECT_THAT(deviations, ElementsAre(-1, 1, -32768, 32767, 0, -2));
}

TEST_F(InfoAndMisc, FoilAndButtonHaveOppositeSenses)
{
    const struct {
        const char* data;
        bool foil, button, current;
    } cases[] = {{"00", false, true, false}, {"01", true, true, true},  {"02", false, false, true},
                 {"03", true, false, true},  {"fc", false, true, true}, {"FF", true, false, true}};
    for (const auto& test : cases) {
        usb.requests.clear();
        usb.SetTable([&](const std::string& request) { return Strings{Reply("$" + request + "0" + test.data)}; });
        EXPECT_EQ(misc->IsElectrostaticFoilEnabled(), test.foil) << test.data;
        EXPECT_EQ(misc->IsElectrostaticFoilButtonEnabled(), test.button) << test.data;
        EXPECT_EQ(misc->WasJ4CurrentMeasured(), test.current) << test.data;
        EXPECT_THAT(usb.requests, ElementsAre("f4", "f4", "c2"));
    }
}

TEST_F(InfoAndMisc, ResetWaitsOnlyWhenAskedAndWhenItWorked)
{
    const struct {
        Strings replies;
        bool wait;
        const char* thrown;
        Sleeps sleeps;
    } cases[] = {{{Reply("$r0")}, false, "", {}},
                 {{Reply("$r0")}, true, "", {1000}},
                 {{Reply("$rB")}, true, "TableException: Can't reset table (11).", {}},
                 {{Reply("!r"), Reply("!r")}, true, "TableException: Can't reset table (255).", {}}};
    for (const auto& test : cases) {
        ScriptedClock::Reset();
        usb.Expect("r", test.replies);
        EXPECT_EQ(Thrown([&] { misc->Reset(test.wait); }), test.thrown);
        EXPECT_EQ(ScriptedClock::sleeps, test.sleeps);
    }
}

}  // namespace
}  // namespace J4Test
