// The ground of the tests of the platform's USB channel by itself.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/world/Bench.h"
#include "src/SerialUSB/UsbFactory.h"
#include "tests/support/Thrown.h"
#include "tests/usb/UsbTest.h"

namespace J4Test {

struct UsbChannelTest : OnStand<testing::Test> {
    using Usb = Kestrelon::DeviceDriver::J4T::LowLevel::Usb;

    static constexpr const char* notFound = "CommunicationException: No device connected.";

    void SetUp() override
    {
        OnStand::SetUp();
        J4Bench::Bench::Instance().Reset();
    }

    void TearDown() override
    {
        usb = {};
        OnStand::TearDown();
    }

    /// The cable is out and in again, and the channel a new one, which has not counted yet.
    void Replug(const TableDevice::Traits& traits = {})
    {
        usb = Kestrelon::DeviceDriver::J4T::LowLevel::CreateUsb(vendorId, productId);
        OnStand::Replug(traits);
    }

    void Open()
    {
        usb->Open(0);
        table->TakeRecord();
    }

    Bytes Read(size_t room = 256)
    {
        Bytes buffer(room);
        unsigned long length = static_cast<unsigned long>(room);
        usb->Read(Usb::PipeIn, buffer.data(), &length);
        EXPECT_LE(length, room);
        buffer.resize(length);
        return buffer;
    }

    void Write(const std::string& text)
    {
        usb->Write(Usb::PipeOut, text.data(), static_cast<unsigned long>(text.size()));
    }

    void SetBaudRate() { usb->DeviceIo(3, 52, 0, false, nullptr, 0); }

    std::string SerialNumber()
    {
        std::array<char, Usb::SerialNumberSize + 64> text{};
        text.fill('#');
        usb->GetSerialNumber(text.data());
        EXPECT_EQ(std::string(text.data() + Usb::SerialNumberSize, 64), std::string(64, '#')) << "beyond the room";
        return text.data();
    }

    static std::string Text(const std::string& call, const std::string& error)
    {
        return "CommunicationException: " + UsbWords::Failure(call, error);
    }

    /// The channel's operations, by the names that failures give them.
    std::vector<std::pair<std::string, std::function<void()>>> Calls()
    {
        const UsbWords& words = Stand().Words();
        return {{words.read, [this] { Read(); }},
                {words.write, [this] { Write("\r"); }},
                {words.control, [this] { SetBaudRate(); }},
                {words.serial, [this] { SerialNumber(); }}};
    }

    Kestrelon::Utilities::Tools::SmartPointer<Usb> usb =
        Kestrelon::DeviceDriver::J4T::LowLevel::CreateUsb(vendorId, productId);

private:
    static constexpr uint32_t vendorId = 0x0971;
    static constexpr uint32_t productId = 0x2004;
};

}  // namespace J4Test
