// The table's USB device as the serial channel sees it, over the driver's stand-in.
#include <array>

#include "src/SerialUSB/Win32/USB_Win.h"
#include "tests/support/Thrown.h"
#include "tests/windows/DriverTest.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::J4T::LowLevel::Usb;
using Kestrelon::DeviceDriver::J4T::LowLevel::Win32::UsbWin;
using testing::ElementsAre;

struct UsbWinTest : OverDriver<testing::Test> {
    std::string SerialNumber()
    {
        std::array<char, Usb::SerialNumberSize + 64> text{};
        text.fill('#');
        usb.GetSerialNumber(text.data());
        EXPECT_EQ(std::string(text.data() + Usb::SerialNumberSize, 64), std::string(64, '#')) << "an overrun";
        return text.data();
    }

    UsbWin usb{0x0971, 0x2004};
};

TEST_F(UsbWinTest, CountsTheTables)
{
    unsigned short count = 0;
    usb.Scan(count);
    EXPECT_EQ(count, 1);
    Driver().Plug(1);
    Driver().Plug(2);
    usb.Scan(count);
    EXPECT_EQ(count, 3);
    Driver().UnplugAll();
    EXPECT_EQ(Thrown([&] { usb.Scan(count); }), "CommunicationException: No device connected.");
    EXPECT_EQ(count, 3) << "left alone";
}

TEST_F(UsbWinTest, SerialNumbersAreCutToTheirRoom)
{
    usb.Open(0);
    EXPECT_EQ(SerialNumber(), "640001");
    const auto expect = [&](size_t size, const std::string& expected) {
        Relay::Bytes text(size, '7');
        for (size_t i = 3; i < size; i += 2) {
            text[i] = 0;
        }
        World().Inject(UsbIo::ControlGetDescriptor, {0, text}, 1);
        EXPECT_EQ(SerialNumber(), expected) << size;
    };
    expect(14, "777777");
    expect(255, std::string(127, '7'));
    expect(516, std::string(127, '7'));
    expect(2, "");
    World().Inject(UsbIo::ControlGetDescriptor, {0, {4, 3, 0xAC, 0x20}}, 1);
    EXPECT_EQ(SerialNumber(), "?") << "no narrow character";
    World().Inject(UsbIo::ControlGetDescriptor, {0, Relay::Bytes(18, 0)});
    EXPECT_EQ(SerialNumber(), "") << "the device names no text";
    World().Inject(UsbIo::ControlGetDescriptor, {0xE0000004}, 1);
    EXPECT_EQ(Thrown([&] { SerialNumber(); }),
              "CommunicationException: Error in UsbIo function: \"GetStringDescriptor\" Error: "
              "Error code 0xE0000004: HC Error: stall PID.");
    usb.Close();
}

TEST_F(UsbWinTest, PipeNumbersAreIgnoredAndAGoneDeviceCloses)
{
    usb.Open(0);
    EXPECT_EQ(Thrown([&] { usb.Open(0); }), "CommunicationException: No device connected.") << "it is open";
    World().Take();
    uint8_t buffer[64];
    unsigned long length = sizeof(buffer);
    usb.Read(7, buffer, &length);
    EXPECT_EQ(length, 2u) << "the bridge has nothing but its status";
    usb.Write(-1, "\r", 1);
    for (const short pipe : {3, -1, 2, 1, 0}) {
        usb.Abort(pipe);
    }
    EXPECT_THAT(World().Take(), ElementsAre("3 read 64", "2 write 0D", "2 80942084", "3 80942084", "1 80942054"));

    World().LoseDevices();
    length = sizeof(buffer);
    EXPECT_EQ(Thrown([&] { usb.Read(Usb::PipeIn, buffer, &length); }),
              "CommunicationException: Error in UsbIo function: \"ReadSync\" Error: Error "
              "code 0xE000100A: Device is removed.");
    EXPECT_EQ(length, 0u);
    usb.Close();
    EXPECT_TRUE(World().WaitUntilClosed());
    usb.Close();
    usb.Open(0);
    usb.Close();
}

}  // namespace
}  // namespace J4Test
