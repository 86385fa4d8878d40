// The serial channel over the bridge: packets, polls and set-up; and the manager that opens it.
#include "src/SerialUSB/SerialUSB.h"

#include <functional>
#include <utility>

#include "tests/unit/Channel.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::J4T::Communication::j4TableComManager;
using Kestrelon::DeviceDriver::J4T::LowLevel::SerialUSB;
using testing::Contains;
using testing::StartsWith;

constexpr const char* NotOpen = "CommunicationException: Connection to device not established";

struct OpenSerial {
    OpenSerial() { serial.OpenDevice(0); }

    ScriptedUsb usb;
    SerialUSB serial;
};

/// A transfer of so many bytes with status bytes where the bridge puts them, and what it carries.
Bytes TransferOfLength(std::size_t length, std::string& payload)
{
    Bytes transfer(length);
    payload.clear();
    for (std::size_t i = 0; i < length; ++i) {
        transfer[i] = static_cast<uint8_t>(i % 64 == 0 ? 0x01 : i % 64 == 1 ? 0x60 : 3 + i % 251);
        if (i % 64 > 1) {
            payload += static_cast<char>(transfer[i]);
        }
    }
    return transfer;
}

TEST(SerialUsb, StripsTheStatusBytesOfEveryPacket)
{
    for (const std::size_t length :
         {3u, 63u, 64u, 65u, 66u, 67u, 127u, 128u, 129u, 130u, 191u, 512u, 131071u, 131072u}) {
        OpenSerial open;
        std::string payload;
        open.usb.DeliverRaw(TransferOfLength(length, payload));
        if (length % 64 == 1) {
            EXPECT_EQ(Thrown([&] { open.serial.Read(10, 0); }), "LengthException: last package contains only one byte");
            const std::string left = open.serial.Read(1000, 0);
            EXPECT_EQ(left.size(), payload.size() + 1) << "the length counted so far stays";
            EXPECT_THAT(left, StartsWith(payload));
        } else {
            EXPECT_EQ(payload.size(), length - 2 * ((length + 63) / 64));
            EXPECT_TRUE(open.serial.Read(200000, 0) == payload) << length;
            EXPECT_EQ(open.usb.idlePolls, 5) << length;
        }
    }
}

TEST(SerialUsb, PollsAsLongAsTheTimeoutLasts)
{
    for (const auto& [timeout, polls] : std::vector<std::pair<int32_t, int>>{
             {0, 5}, {10, 5}, {87, 5}, {88, 6}, {103, 6}, {104, 7}, {1000, 63}, {2000, 125}, {15000, 938}, {-1, 5}}) {
        OpenSerial open;
        EXPECT_EQ(open.serial.Read(1, timeout), "");
        EXPECT_EQ(open.usb.idlePolls, polls) << timeout;
        EXPECT_EQ(open.usb.reads, polls) << timeout;
    }
    OpenSerial open;
    open.usb.Deliver("ab");
    open.usb.DeliverRaw({0x01, 0x60});
    open.usb.Deliver("cd");
    open.usb.DeliverRaw({0x01, 0x60});
    EXPECT_EQ(open.serial.Read(5, 0), "abcd");
    EXPECT_EQ(open.usb.reads, 2 + 5) << "data use up no poll and restore none";
}

TEST(SerialUsb, KeepsTheRemainderForTheNextRead)
{
    OpenSerial open;
    open.usb.Deliver(std::string("ab\0cdef", 7));
    EXPECT_EQ(open.serial.Read(2, 1000), "ab");
    EXPECT_EQ(open.serial.Read(3, 1000), std::string("\0cd", 3));
    EXPECT_EQ(open.serial.Read(0, 1000), "");
    EXPECT_EQ(open.usb.reads, 1);
    open.usb.Deliver("gh");
    EXPECT_EQ(open.serial.Read(3, 1000), "efg");
    EXPECT_EQ(open.usb.reads, 2);
    EXPECT_EQ(open.serial.Read(2, 0), "h");
}

TEST(SerialUsb, ReadsAgainWhenTheStatusBitIsClear)
{
    OpenSerial open;
    open.usb.DeliverRaw({0x00, 0x60, 'b', 'a', 'd'});
    open.usb.Deliver("good");
    EXPECT_EQ(open.serial.Read(4, 0), "good");
    EXPECT_EQ(open.usb.reads, 2);
    EXPECT_EQ(open.serial.Read(1, 0), "");

    std::string payload;
    Bytes transfer = TransferOfLength(100, payload);
    transfer[64] = 0;  // only the first packet's status counts
    open.usb.DeliverRaw(transfer);
    EXPECT_EQ(open.serial.Read(96, 0), payload);

    open.usb.reads = 0;
    for (const char digit : {'1', '2', '3', '4', '5'}) {
        open.usb.DeliverRaw({0x00, 0x60, static_cast<uint8_t>(digit), 'x'});
    }
    EXPECT_EQ(open.serial.Read(2, 0), "");
    EXPECT_EQ(open.serial.Read(2, 0), "5x") << "the last poll is unpacked whatever its status";
    EXPECT_EQ(open.usb.reads, 5) << "and handed out without asking the bridge";
}

TEST(SerialUsb, ClearingDrainsOneTransfer)
{
    OpenSerial open;
    open.usb.Deliver("old");
    open.usb.Deliver("new");
    open.serial.ClearCache();
    EXPECT_EQ(open.usb.reads, 1);
    EXPECT_EQ(open.serial.Read(3, 0), "new");
    open.serial.ClearCache();
    EXPECT_EQ(open.usb.reads, 2 + 10);
}

TEST(SerialUsb, RefusesTrafficWhileClosedAndBearsFailures)
{
    ScriptedUsb usb;
    SerialUSB serial;
    serial.CloseDevice();
    usb.FailAt("open");
    EXPECT_EQ(Thrown([&] { serial.OpenDevice(0); }), "CommunicationException: scripted failure of open");
    EXPECT_EQ(Thrown([&] { serial.InitCom(); }), NotOpen);
    EXPECT_EQ(Thrown([&] { serial.WriteString("x"); }), NotOpen);
    EXPECT_EQ(Thrown([&] { serial.Read(1, 0); }), NotOpen);
    EXPECT_EQ(Thrown([&] { serial.ClearCache(); }), "");
    EXPECT_EQ(serial.SerialNumber(), "T1001");
    EXPECT_EQ(usb.journal, (Strings{"open 0", "serial"}));
    serial.OpenDevice(0);
    for (const auto& [call, action] :
         std::vector<std::pair<std::string, std::function<void()>>>{{"write", [&] { serial.WriteString("x"); }},
                                                                    {"read", [&] { serial.Read(1, 0); }},
                                                                    {"control", [&] { serial.InitCom(); }},
                                                                    {"serial", [&] { serial.SerialNumber(); }},
                                                                    {"close", [&] { serial.CloseDevice(); }}}) {
        usb.FailAt(call);
        EXPECT_EQ(Thrown(action), "CommunicationException: scripted failure of " + call);
        usb.Deliver("z");
        EXPECT_EQ(serial.Read(1, 0), "z") << call << " leaves the channel open";
    }
    usb.Clear();
    serial.OpenDevice(3);
    serial.CloseDevice();
    serial.CloseDevice();
    EXPECT_EQ(usb.journal, (Strings{"close", "open 3", "close"}));
}

TEST(ComManager, OpensDrainsAndSetsUpWithoutACommand)
{
    ScriptedUsb usb;
    usb.Deliver("left over");
    {
        j4TableComManager manager(2);
        EXPECT_EQ(usb.vendorId, 0x0971u);
        EXPECT_EQ(usb.productId, 0x2004u);
        EXPECT_EQ(usb.reads, 1);
        EXPECT_EQ(usb.journal, (Strings{"open 2", "control 0 0 0 out 0", "control 0 1 0 out 0", "control 0 2 0 out 0",
                                        "control 3 52 0 out 0", "control 4 8 0 out 0"}));
        usb.Clear();
        const auto oldInfo = manager.GetInfo();
        manager.Initialize();
        EXPECT_EQ(usb.journal.front(), "open 2");
        EXPECT_THAT(usb.journal, Contains("close").Times(0)) << "the old channel has a user yet";
        usb.Clear();
    }
    EXPECT_EQ(usb.journal, (Strings{"close", "close"}));
    usb.FailAt("open");
    EXPECT_EQ(Thrown([] { j4TableComManager manager(0); }), "CommunicationException: scripted failure of open");
    EXPECT_EQ(usb.journal.back(), "open 0") << "what was not opened is not closed";
    usb.Clear();
    usb.FailAt("control", 4);
    EXPECT_EQ(Thrown([] { j4TableComManager manager(0); }), "CommunicationException: scripted failure of control");
    EXPECT_THAT(usb.journal, Contains("close").Times(1));
}

TEST(ComManager, AskedAfterItsChannelHasClosed)
{
    Channel channel;
    const auto motors = channel.manager.GetMotors();
    EXPECT_TRUE(channel.manager.IsTableConnected());
    channel.usb.FailAt("serial");
    EXPECT_FALSE(channel.manager.IsTableConnected());
    channel.manager.UnInitialize();
    EXPECT_FALSE(channel.manager.IsTableConnected());
    EXPECT_THAT(Thrown([&] { channel.manager.WriteSerialData(""); }),
                StartsWith("NullPointerException: accessed null"));
    EXPECT_THAT(Thrown([&] { channel.manager.GetInfo()->GetStatus(); }), StartsWith("NullPointerException: accessed"));
}

}  // namespace
}  // namespace J4Test
