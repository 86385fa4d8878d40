#include <gtest/gtest.h>

#include "src/SerialUSB/SerialUSB.h"
#include "tests/support/ScriptedUsb.h"
#include "tests/support/Thrown.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::J4T::LowLevel::SerialUSB;
using Strings = std::vector<std::string>;

constexpr const char* NotOpen = "CommunicationException: Connection to device not established";

struct OpenSerial {
    OpenSerial() { serial.OpenDevice(0); }

    ScriptedUsb usb;
    SerialUSB serial;
};

/// A transfer of so many bytes with status bytes where the bridge puts them, and what it carries.
std::vector<uint8_t> TransferOfLength(std::size_t length, std::string& payload)
{
    std::vector<uint8_t> transfer(length);
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
    for (const std::size_t length : {3u, 63u, 64u, 66u, 67u, 127u, 128u, 130u, 191u, 512u, 131071u, 131072u}) {
        OpenSerial open;
        std::string payload;
        open.usb.DeliverRaw(TransferOfLength(length, payload));
        EXPECT_EQ(payload.size(), length - 2 * ((length + 63) / 64));
        EXPECT_TRUE(open.serial.Read(200000, 0) == payload) << length;
        EXPECT_EQ(open.usb.idlePolls, 5) << length;
    }
}

TEST(SerialUsb, ALonelyStatusByteIsAnError)
{
    for (const std::size_t length : {65u, 129u}) {
        OpenSerial open;
        std::string payload;
        open.usb.DeliverRaw(TransferOfLength(length, payload));
        EXPECT_EQ(Thrown([&] { open.serial.Read(10, 0); }), "LengthException: last package contains only one byte")
            << length;
        const std::string left = open.serial.Read(1000, 0);
        EXPECT_EQ(left.size(), payload.size() + 1) << "the length counted so far stays";
        EXPECT_EQ(left.substr(0, payload.size()), payload);
    }
}

TEST(SerialUsb, PollsAsLongAsTheTimeoutLasts)
{
    const struct {
        int32_t timeout;
        int polls;
    } cases[] = {{0, 5}, {10, 5}, {87, 5}, {88, 6}, {103, 6}, {104, 7}, {1000, 63}, {2000, 125}, {15000, 938}, {-1, 5}};
    for (const auto& test : cases) {
        OpenSerial open;
        EXPECT_EQ(open.serial.Read(1, test.timeout), "");
        EXPECT_EQ(open.usb.idlePolls, test.polls) << test.timeout;
        EXPECT_EQ(open.usb.reads, test.polls) << test.timeout;
    }
}

TEST(SerialUsb, OneBudgetOfPollsServesTheWholeRead)
{
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

    // Only the first packet's status counts.
    std::string payload;
    std::vector<uint8_t> transfer = TransferOfLength(100, payload);
    transfer[64] = 0;
    open.usb.DeliverRaw(transfer);
    EXPECT_EQ(open.serial.Read(96, 0), payload);
}

TEST(SerialUsb, TheLastPollIsUnpackedWhateverItsStatus)
{
    OpenSerial open;
    for (const char digit : {'1', '2', '3', '4', '5'}) {
        open.usb.DeliverRaw({0x00, 0x60, static_cast<uint8_t>(digit), 'x'});
    }
    EXPECT_EQ(open.serial.Read(2, 0), "");
    EXPECT_EQ(open.usb.reads, 5);
    EXPECT_EQ(open.serial.Read(2, 0), "5x");
    EXPECT_EQ(open.usb.reads, 5) << "the next read has it without asking the bridge";
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

TEST(SerialUsb, OpensSetsUpAndCloses)
{
    ScriptedUsb usb;
    {
        SerialUSB serial;
        EXPECT_EQ(usb.vendorId, 0x0971u);
        EXPECT_EQ(usb.productId, 0x2004u);
        serial.CloseDevice();
        serial.OpenDevice(3);
        serial.InitCom();
        serial.WriteString(";a034\r");
        serial.OpenDevice(1);
        serial.CloseDevice();
        serial.CloseDevice();
        serial.OpenDevice(2);
    }
    EXPECT_EQ(usb.journal, (Strings{"open 3", "control 0 0 0 out 0", "control 0 1 0 out 0", "control 0 2 0 out 0",
                                    "control 3 52 0 out 0", "control 4 8 0 out 0", "write ;a034", "close", "open 1",
                                    "close", "open 2", "close"}));
    EXPECT_EQ(usb.reads, 0);
}

TEST(SerialUsb, RefusesTrafficWhileClosed)
{
    ScriptedUsb usb;
    SerialUSB serial;
    usb.FailAt("open");
    EXPECT_EQ(Thrown([&] { serial.OpenDevice(0); }), "CommunicationException: scripted failure of open");
    EXPECT_EQ(Thrown([&] { serial.InitCom(); }), NotOpen);
    EXPECT_EQ(Thrown([&] { serial.WriteString("x"); }), NotOpen);
    EXPECT_EQ(Thrown([&] { serial.Read(1, 0); }), NotOpen);
    EXPECT_EQ(Thrown([&] { serial.ClearCache(); }), "");
    EXPECT_EQ(serial.SerialNumber(), "T1001");
    EXPECT_EQ(usb.journal, (Strings{"open 0", "serial"}));
    EXPECT_EQ(usb.reads, 10);
}

TEST(SerialUsb, FailuresOfTheDevicePassAndLeaveTheChannelOpen)
{
    OpenSerial open;
    const struct {
        const char* call;
        std::function<void()> action;
    } cases[] = {
        {"write", [&] { open.serial.WriteString("x"); }}, {"read", [&] { open.serial.Read(1, 0); }},
        {"control", [&] { open.serial.InitCom(); }},      {"serial", [&] { open.serial.SerialNumber(); }},
        {"close", [&] { open.serial.CloseDevice(); }},
    };
    for (const auto& test : cases) {
        open.usb.FailAt(test.call);
        EXPECT_EQ(Thrown(test.action), std::string("CommunicationException: scripted failure of ") + test.call);
        open.usb.Deliver("z");
        EXPECT_EQ(open.serial.Read(1, 0), "z") << test.call;
    }
}

}  // namespace
}  // namespace J4Test
