#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/Thrown.h"
#include "tests/unit/Channel.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::J4T::Communication::j4TableComManager;
using Strings = std::vector<std::string>;

TEST(ComManager, OpensDrainsAndSetsUpWithoutACommand)
{
    ScriptedUsb usb;
    usb.Deliver("left over");
    {
        j4TableComManager manager(2);
        EXPECT_EQ(usb.reads, 1);
        EXPECT_EQ(usb.journal, (Strings{"open 2", "control 0 0 0 out 0", "control 0 1 0 out 0", "control 0 2 0 out 0",
                                        "control 3 52 0 out 0", "control 4 8 0 out 0"}));
        usb.Clear();
    }
    EXPECT_EQ(usb.journal, Strings{"close"});
}

TEST(ComManager, ADeviceThatCanNotBeOpenedIsNotClosed)
{
    ScriptedUsb usb;
    usb.FailAt("open");
    EXPECT_EQ(Thrown([] { j4TableComManager manager(0); }), "CommunicationException: scripted failure of open");
    usb.FailAt("control", 4);
    EXPECT_EQ(Thrown([] { j4TableComManager manager(0); }), "CommunicationException: scripted failure of control");
    EXPECT_EQ(usb.journal.back(), "close");
    EXPECT_EQ(std::count(usb.journal.begin(), usb.journal.end(), "close"), 1);
}

TEST(ComManager, ASecondInitializeOpensBeforeItCloses)
{
    Channel channel;
    {
        const auto oldInfo = channel.manager.GetInfo();
        channel.manager.Initialize();
        EXPECT_EQ(channel.usb.journal.front(), "open 0");
        EXPECT_EQ(std::count(channel.usb.journal.begin(), channel.usb.journal.end(), "close"), 0);
    }
    EXPECT_EQ(channel.usb.journal.back(), "close");
}

TEST(ComManager, TheChannelClosesWithItsLastUser)
{
    Channel channel;
    {
        const auto motors = channel.manager.GetMotors();
        channel.manager.UnInitialize();
        EXPECT_EQ(channel.usb.journal, Strings());
    }
    EXPECT_EQ(channel.usb.journal, Strings{"close"});
    EXPECT_EQ(Thrown([&] { channel.manager.WriteSerialData(""); }).rfind("NullPointerException: accessed null", 0), 0u);
    EXPECT_EQ(Thrown([&] { channel.manager.GetInfo()->GetStatus(); }).rfind("NullPointerException: accessed", 0), 0u);
    EXPECT_FALSE(channel.manager.IsTableConnected());
}

TEST(ComManager, ATableIsConnectedWhenItTellsItsSerialNumber)
{
    Channel channel;
    EXPECT_TRUE(channel.manager.IsTableConnected());
    EXPECT_EQ(channel.manager.GetSerialNumber(), "T1001");
    channel.usb.serialNumber = std::string(127, '7');
    EXPECT_EQ(channel.manager.GetSerialNumber(), channel.usb.serialNumber);
    channel.usb.serialNumber = "";
    EXPECT_FALSE(channel.manager.IsTableConnected());
    channel.usb.serialNumber = "T1001";
    channel.usb.FailAt("serial");
    EXPECT_FALSE(channel.manager.IsTableConnected());
    channel.usb.FailAt("serial");
    EXPECT_EQ(Thrown([&] { channel.manager.GetSerialNumber(); }), "CommunicationException: scripted failure of serial");
    EXPECT_TRUE(channel.usb.requests.empty());
}

TEST(ComManager, RawTextGetsItsChecksumAndNothingElse)
{
    Channel channel;
    channel.manager.WriteSerialData(";a0");
    channel.manager.WriteSerialData("");
    EXPECT_EQ(channel.usb.journal, (Strings{"write ;a034", "write 00"}));
    EXPECT_EQ(channel.usb.requests, Strings{"a0"});
    channel.usb.Deliver("anything at all");
    EXPECT_EQ(channel.manager.ReadSerialData(8, 0), "anything");
    EXPECT_EQ(channel.manager.ReadSerialData(100, 0), " at all");
    channel.manager.WriteToSerialLogFile("x");
    EXPECT_EQ(channel.usb.journal.size(), 2u);
}

}  // namespace
}  // namespace J4Test
