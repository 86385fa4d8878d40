// What only libusb has: its claims and configurations, the order of bus and port path, permissions, and transfers that
// end early.
#include <sys/fsuid.h>

#include "tests/usb/UsbChannelTest.h"
#include "tests/usb/libusb/MockedBus.h"

namespace J4Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Gives up the rights of the super-user over files, as long as it exists.
class OrdinaryUser {
public:
    OrdinaryUser() : before(::setfsuid(nobody)) {}
    ~OrdinaryUser() { ::setfsuid(static_cast<uid_t>(before)); }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    static constexpr uid_t nobody = 65534;
    int before;
};

struct LibusbSessionTest : UsbSessionTest {};

struct UsbLibusbTest : UsbChannelTest {};

TEST_F(LibusbSessionTest, WhoMayNotUseTheTableIsToldOfTheRule)
{
    MockedBus::Instance().ForbidAccess(0);
    {
        const OrdinaryUser user;
        ExpectFailure(J4_IsTableConnected(),
                      {"J4_IsTableConnected", J4_ResultDeviceNotConnected,
                       "Error in UsbIo function: \"libusb_open\" Error: LIBUSB_ERROR_ACCESS: Access denied "
                       "(insufficient permissions). The user may not use the table: install the udev rule "
                       "70-j4tavla.rules and plug the table in again."});
        Set("DeviceType", "Sorvane0");
        EXPECT_EQ(J4_Calibrate(), 0) << "the instrument can be used: " << GetOption("LastError");
    }
    EXPECT_THAT(table->TakeRecord(), IsEmpty());
    Replug();
    ExpectShortSession("with the rule");
}

TEST_F(UsbLibusbTest, TheInterfaceIsTakenOverAndGivenBack)
{
    for (const int configuration : {1, 0}) {
        Replug({.configuration = configuration});
        unsigned short count = 0;
        usb->Scan(count);
        EXPECT_EQ(count, 1);
        EXPECT_THAT(table->TakeRecord(), IsEmpty()) << "counting touches no device";
        usb->Open(0);
        EXPECT_THAT(Stand().Held(), ElementsAre("device", "timer"));
        Lines expected = {"claim 0", "clear halt 2", "clear halt 81"};
        if (configuration == 0) {
            expected.insert(expected.begin(), "configuration 1");
        }
        EXPECT_THAT(table->TakeRecord(), testing::ElementsAreArray(expected));
        for (const short pipe : {Usb::PipeIn, Usb::PipeOut, short{3}, short{-1}}) {
            usb->Abort(pipe);
        }
        EXPECT_THAT(table->TakeRecord(), IsEmpty());
        usb->Close();
        EXPECT_THAT(table->TakeRecord(), ElementsAre("release 0", "reset", "claim 0", "release 0", "connect 0"));
        EXPECT_THAT(Stand().Held(), ElementsAre("timer"));
        usb->Close();
        EXPECT_THAT(table->TakeRecord(), IsEmpty());
    }
}

TEST_F(UsbLibusbTest, PortsOfAHubAreCountedAmongTheOthers)
{
    J4Bench::Bench::Instance().SetTableCount(4);
    MockedBus& bus = MockedBus::Instance();
    bus.PlugHub("1-3");
    bus.Plug(2, {.table = 3});
    bus.PlugAt("1-3.4", {.table = 1});
    bus.Plug(1, {.table = 2});
    unsigned short count = 0;
    usb->Scan(count);
    EXPECT_EQ(count, 4);
    for (unsigned short i = 0; i < count; ++i) {
        usb->Open(i);
        EXPECT_EQ(SerialNumber(), "64000" + std::to_string(i + 1));
        usb->Close();
    }
    bus.UnplugAt("1-3.4");
}

TEST_F(UsbLibusbTest, AFailedOpenLeavesNothingBehind)
{
    const UsbWords& words = Stand().Words();
    const struct {
        int skip;
        UsbFault fault;
        int configuration;
        const char* call;
        const char* error;
    } cases[] = {
        {0, UsbFault::Removed, 1, "libusb_claim_interface", words.gone},
        {0, UsbFault::Removed, 0, "libusb_set_configuration", words.gone},
        {1, UsbFault::Removed, 1, "libusb_clear_halt", words.gone},
        {2, UsbFault::Removed, 1, "libusb_clear_halt", words.gone},
        {1, UsbFault::Stall, 1, "libusb_clear_halt", words.refused},
    };
    for (const auto& failing : cases) {
        Replug({.configuration = failing.configuration});
        unsigned short count = 0;
        usb->Scan(count);
        table->Fail(failing.skip, failing.fault);
        EXPECT_EQ(Thrown([&] { usb->Open(0); }), Text(failing.call, failing.error)) << failing.skip;
        EXPECT_THAT(Stand().Held(), ElementsAre("timer")) << "the context that counted";
        EXPECT_EQ(Thrown([&] { Write("x"); }), Text(words.write, words.gone)) << "not open";
        Replug();
        usb->Open(0);
        usb->Close();
    }
}

TEST_F(UsbLibusbTest, AStalledPipeIsClearedAtOnce)
{
    Open();
    table->Fail(0, UsbFault::Stall);
    EXPECT_NE(Thrown([&] { Write(";a034\r"); }), "");
    EXPECT_THAT(table->TakeRecord(), ElementsAre("clear halt 2"));
    table->Fail(0, UsbFault::Stall);
    EXPECT_NE(Thrown([&] { Read(); }), "");
    EXPECT_THAT(table->TakeRecord(), ElementsAre("clear halt 81"));
}

TEST_F(UsbLibusbTest, ReadsBeyondTheLargestTransferAreCutAndLateOnesKeepWhatCame)
{
    Open();
    const Bytes sent(0x20000, 0x41);
    table->deliveries.push_back(sent);
    EXPECT_TRUE(Read(0x40000) == sent);
    table->deliveries.push_back({0x41});
    table->Fail(0, UsbFault::Silence);
    EXPECT_THAT(Read(1024), ElementsAre(0x41));
    EXPECT_THAT(table->TakeRecord(), ElementsAre("in 131072", "in 1024", "cancel"));
    table->Fail(0, UsbFault::Silence);
    EXPECT_EQ(Thrown([&] { SetBaudRate(); }), Text(Stand().Words().control, Stand().Words().timedOut));
}

TEST_F(UsbLibusbTest, AllIsWrittenWhateverTheDeviceTakesAtOnce)
{
    Open();
    for (const size_t limit : {0u, 1u, 4u, 5u, 6u}) {
        table->limitOut = limit;
        Write(";a034\r");
        std::string taken;
        for (const std::string& line : table->TakeRecord()) {
            taken += line.substr(std::string("out ").size());
        }
        EXPECT_EQ(taken, ";a034") << limit;
    }
    Write("");
    EXPECT_THAT(table->TakeRecord(), IsEmpty());
}

TEST_F(UsbLibusbTest, SerialNumbersInALanguageAndOfOddLength)
{
    for (const TableDevice::Traits& traits :
         {TableDevice::Traits{.needsLanguage = true}, {.serial = Bytes{255, 3, '6', 0, '5'}}}) {
        Replug(traits);
        usb->Open(0);
        EXPECT_EQ(SerialNumber(), traits.needsLanguage ? "640001" : "6");
        usb->Close();
    }
}

}  // namespace
}  // namespace J4Test
