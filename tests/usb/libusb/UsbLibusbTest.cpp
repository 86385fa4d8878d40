// What only libusb has: its claims and configurations, the order of bus and port path, permissions, and transfers that
// end early, forks, and a bridge that answers too soon.
#include <sys/fsuid.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

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

bool isForkedChild = false;

/// The child of a fork does something and ends as a program does: static objects go, libraries are unloaded.
/// @param act  gives the child's exit code
template <class Act>
void ExpectChildGoes(Act act)
{
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        isForkedChild = true;
        std::exit(act());
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST_F(LibusbSessionTest, WhoMayNotUseTheTableIsToldOfTheRule)
{
    static_cast<MockedBus&>(Stand()).ForbidAccess(0);
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
        Replug({.needsLanguage = true, .configuration = configuration});
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
        EXPECT_EQ(SerialNumber(), "640001") << "in a language, where it is needed";
        for (const short pipe : {Usb::PipeIn, Usb::PipeOut, short{3}, short{-1}}) {
            usb->Abort(pipe);
        }
        EXPECT_THAT(table->TakeRecord(), IsEmpty());
        usb->Close();
        EXPECT_THAT(table->TakeRecord(), ElementsAre("release 0", "reset", "claim 0", "release 0", "connect 0"));
        EXPECT_THAT(Stand().Held(), ElementsAre("timer")) << "the context that counted";
        usb->Close();
        EXPECT_THAT(table->TakeRecord(), IsEmpty());
    }
    Replug({.serial = Bytes{255, 3, '6', 0, '5'}, .configuration = 0});
    usb->Open(0);
    EXPECT_EQ(SerialNumber(), "6") << "half a character is none";
    usb->Close();
    table->Fail(0, UsbEnd::Gone);
    EXPECT_EQ(Thrown([&] { usb->Open(0); }), Text("libusb_set_configuration", Stand().Words().gone));
    EXPECT_THAT(Stand().Held(), ElementsAre("timer"));
}

TEST_F(LibusbSessionTest, AForkedChildLeavesTheTableToItsParent)
{
    ExpectShortSession("before");
    table->TakeRecord();
    ExpectChildGoes([] { return 0; });
    EXPECT_THAT(table->TakeRecord(), IsEmpty());
    ExpectShortSession("after the child's end");
    Replug();
    Reconnect();
    ExpectShortSession("a table plugged in after it");
}

TEST_F(UsbLibusbTest, AForkedChildHasNoDevice)
{
    Open();
    ExpectChildGoes([this] {
        for (const auto& [name, call] : Calls()) {
            if (Thrown(call) != Text(name, Stand().Words().gone)) {
                return 1;
            }
        }
        unsigned short count = 0;
        if (Thrown([&] { usb->Scan(count); }) != Text("libusb_init", Stand().Words().gone)) {
            return 2;
        }
        usb->Abort(Usb::PipeDevice);
        usb->Close();
        usb = {};
        return 0;
    });
    EXPECT_THAT(table->TakeRecord(), IsEmpty());
    EXPECT_EQ(SerialNumber(), "640001");
    usb->Close();
}

TEST_F(LibusbSessionTest, ABridgeThatAnswersTooSoonCutsNoMotionShort)
{
    Set("J4TMoveSpeed", "30");
    ASSERT_EQ(J4_SetPosition(100.0f, 300.0f), 0);
    // Another program has set it so.
    J4Bench::Bench::Instance().TableAt(0)->GetBridge().Control(9, 1);
    table->TakeRecord();
    const int64_t start = BenchTime();
    EXPECT_EQ(J4_SetPosition(500.0f, 300.0f), 0) << GetOption("LastError");
    EXPECT_GT(BenchTime() - start, 12'000'000);
    ExpectPosition(500.0f, 300.0f);
    EXPECT_THAT(table->TakeRecord(), testing::Each(testing::AnyOf("in 131072", testing::StartsWith("out ;"))));
}

TEST_F(UsbLibusbTest, PacketsWithoutPayloadAreNoCloserThanTheBridgesOwnInterval)
{
    Open();
    const Bytes idle = {0x01, 0x60};
    const Bytes full = {0x01, 0x60, 'A'};
    const struct {
        unsigned before;  // ms, from the end of the read before to the packet
        Bytes packet;
        unsigned pause;  // ms
    } cases[] = {{100, idle, 0},  {1, idle, 15}, {1, full, 0},  {1, full, 0},
                 {1, {0x01}, 13}, {0, {}, 16},   {16, idle, 0}, {15, idle, 1}};
    for (const auto& read : cases) {
        PassOnBench(read.before);
        table->deliveries.push_back(read.packet);
        const int64_t start = BenchTime();
        EXPECT_EQ(Read(), read.packet);
        EXPECT_EQ(BenchTime() - start, 1000 * read.pause);
    }
}

TEST_F(UsbLibusbTest, AStalledPipeIsClearedAtOnce)
{
    Open();
    table->Fail(0, UsbEnd::Stalled);
    EXPECT_NE(Thrown([&] { Write(";a034\r"); }), "");
    EXPECT_THAT(table->TakeRecord(), ElementsAre("clear halt 2"));
    table->Fail(0, UsbEnd::Stalled);
    EXPECT_NE(Thrown([&] { Read(); }), "");
    EXPECT_THAT(table->TakeRecord(), ElementsAre("clear halt 81"));
    Write("");
    EXPECT_THAT(table->TakeRecord(), IsEmpty());
}

TEST_F(UsbLibusbTest, ReadsBeyondTheLargestTransferAreCutAndLateOnesKeepWhatCame)
{
    Open();
    const Bytes sent(0x20000, 0x41);
    table->deliveries.push_back(sent);
    EXPECT_TRUE(Read(0x40000) == sent);
    table->deliveries.push_back({0x41});
    table->Fail(0, UsbEnd::Never);
    EXPECT_THAT(Read(1024), ElementsAre(0x41));
    EXPECT_THAT(table->TakeRecord(), ElementsAre("in 131072", "in 1024", "cancel"));
    table->Fail(0, UsbEnd::Never);
    EXPECT_EQ(Thrown([&] { SetBaudRate(); }), Text(Stand().Words().control, Stand().Words().timedOut));
}

}  // namespace
}  // namespace J4Test

/// Asked by the address sanitizer, which in the child takes what the threads of its parent hold for lost.
extern "C" [[gnu::visibility("default")]] int __lsan_is_turned_off() { return J4Test::isForkedChild ? 1 : 0; }
