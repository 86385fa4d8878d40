#include "src/SerialUSB/Virtual/VirtualUsb.h"

#include <gtest/gtest.h>

#include <functional>

#include "Utilities/Exceptions/TableExceptions.h"
#include "simulator/world/Bench.h"

namespace J4Bench {
namespace {

using Kestrelon::DeviceDriver::J4T::LowLevel::VirtualUsb;

class VirtualUsbTest : public testing::Test {
protected:
    void SetUp() override { Bench::Instance().Reset(); }
    void TearDown() override { Bench::Instance().Reset(); }

    static std::string Failure(const std::function<void()>& call)
    {
        try {
            call();
        } catch (const CommunicationException& exception) {
            return exception.what();
        }
        return "";
    }
};

TEST_F(VirtualUsbTest, FailuresHaveTheDriversWords)
{
    VirtualUsb usb(Bench::Instance());
    unsigned char buffer[128];
    unsigned long length = sizeof buffer;
    const auto text = [](const std::string& label, const std::string& status) {
        return "Error in UsbIo function: \"" + label + "\" Error: Error code " + status;
    };
    const auto expectAll = [&](const std::string& status) {
        EXPECT_EQ(Failure([&] { usb.Read(1, buffer, &length); }), text("ReadSync", status));
        EXPECT_EQ(Failure([&] { usb.Write(2, "x", 1); }), text("WriteSync", status));
        EXPECT_EQ(Failure([&] { usb.DeviceIo(0, 0, 0, false, nullptr, 0); }), text("ClassOrVendorOutRequest", status));
        EXPECT_EQ(Failure([&] { usb.GetSerialNumber(reinterpret_cast<char*>(buffer)); }),
                  text("GetDeviceDescriptor", status));
    };
    const std::string notOpen = "0xE0001102: Device not open.";
    const std::string removed = "0xE000100A: Device is removed.";
    EXPECT_EQ(Failure([&] { usb.Open(1); }), "No device connected.");
    expectAll(notOpen);
    usb.Open(0);
    EXPECT_EQ(Failure([&] { usb.Open(0); }), "No device connected.") << "already open";
    EXPECT_EQ(Failure([&] { usb.DeviceIo(8, 0, 0, false, nullptr, 0); }),
              text("ClassOrVendorOutRequest", "0xE0000004: HC Error: stall PID."));

    Bench::Instance().GetFaults().tableUnplugged = true;
    expectAll(removed);
    unsigned short count = 0;
    EXPECT_EQ(Failure([&] { usb.Scan(count); }), "No device connected.");
    EXPECT_EQ(Failure([&] { VirtualUsb(Bench::Instance()).Open(0); }), "No device connected.");
    usb.Abort(0);
    usb.Close();

    Bench::Instance().GetFaults().tableUnplugged = false;
    usb.Open(0);
    Bench::Instance().Reset();
    expectAll(removed);
    usb.Close();
    expectAll(notOpen);
}

}  // namespace
}  // namespace J4Bench
