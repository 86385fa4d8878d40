// The libusb channel by itself: what reaches the kernel, and what comes back, byte for byte.
#include "src/SerialUSB/Libusb/UsbLibusb.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>

#include "simulator/world/Bench.h"
#include "tests/libusb/LibusbTest.h"
#include "tests/support/Thrown.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::J4T::LowLevel::Usb;
using Kestrelon::DeviceDriver::J4T::LowLevel::Libusb::UsbLibusb;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* place = "1-2";
constexpr const char* notFound = "CommunicationException: No device connected.";
constexpr const char* gone = "LIBUSB_ERROR_NO_DEVICE: No such device (it may have been disconnected).";
constexpr const char* stalled = "LIBUSB_ERROR_PIPE: Pipe error.";
constexpr const char* timedOut = "LIBUSB_ERROR_TIMEOUT: Operation timed out.";

std::string Text(const std::string& call, const std::string& error)
{
    return "CommunicationException: Error in UsbIo function: \"" + call + "\" Error: " + error;
}

struct UsbLibusbTest : testing::Test {
    void SetUp() override { J4Bench::Bench::Instance().Reset(); }

    void Open()
    {
        device = &bus.Plug(place);
        usb.Open(0);
        device->TakeRecord();
    }

    std::vector<uint8_t> Read(size_t room = 256)
    {
        std::vector<uint8_t> buffer(room);
        unsigned long length = room;
        usb.Read(Usb::PipeIn, buffer.data(), &length);
        EXPECT_LE(length, room);
        buffer.resize(length);
        return buffer;
    }

    void Write(const std::string& text) { usb.Write(Usb::PipeOut, text.data(), text.size()); }

    void SetBaudRate() { usb.DeviceIo(3, 52, 0, false, nullptr, 0); }

    std::string SerialNumber()
    {
        constexpr char guard = '#';
        std::string buffer(Usb::SerialNumberSize + 64, guard);
        usb.GetSerialNumber(buffer.data());
        EXPECT_EQ(buffer.find_first_not_of(guard, Usb::SerialNumberSize), std::string::npos) << "beyond the room";
        return buffer.c_str();
    }

    MockedBus bus;
    MockedDevice* device = nullptr;
    UsbLibusb usb{0x0971, 0x2004};
};

TEST_F(UsbLibusbTest, TheInterfaceIsTakenOverAndGivenBack)
{
    for (const int configuration : {1, 0}) {
        device = &bus.Plug(place, {.configuration = configuration});
        unsigned short count = 0;
        usb.Scan(count);
        EXPECT_EQ(count, 1);
        EXPECT_THAT(device->TakeRecord(), IsEmpty()) << "counting touches no device";
        usb.Open(0);
        EXPECT_THAT(HeldByLibusb(), ElementsAre("device", "thread", "timer"));
        std::vector<std::string> expected = {"claim 0", "clear halt 2", "clear halt 81"};
        if (configuration == 0) {
            expected.insert(expected.begin(), "configuration 1");
        }
        EXPECT_THAT(device->TakeRecord(), testing::ElementsAreArray(expected));
        for (const short pipe : {Usb::PipeIn, Usb::PipeOut, short{3}, short{-1}}) {
            usb.Abort(pipe);
        }
        EXPECT_THAT(device->TakeRecord(), IsEmpty());
        usb.Close();
        EXPECT_THAT(device->TakeRecord(), ElementsAre("release 0", "reset", "claim 0", "release 0", "connect 0"));
        EXPECT_THAT(HeldByLibusb(), ElementsAre("thread", "timer"));
        usb.Close();
        EXPECT_THAT(device->TakeRecord(), IsEmpty());
        bus.Unplug(place);
    }
}

TEST_F(UsbLibusbTest, TablesAreCountedByBusAndPortPath)
{
    J4Bench::Bench::Instance().SetTableCount(4);
    bus.PlugHub("1-3");
    // Neither in the order of the sockets nor in that of the texts.
    const std::vector<std::string> order = {"1-2", "1-3.4", "1-10", "2-1"};
    for (const char* const socket : {"2-1", "1-10", "1-2", "1-3.4"}) {
        bus.Plug(socket, {.table = static_cast<size_t>(std::ranges::find(order, socket) - order.begin())});
    }
    unsigned short count = 0;
    usb.Scan(count);
    EXPECT_EQ(count, 4);
    for (unsigned short i = 0; i < count; ++i) {
        usb.Open(i);
        EXPECT_EQ(SerialNumber(), "64000" + std::to_string(i + 1));
        usb.Close();
    }
    EXPECT_EQ(Thrown([&] { usb.Open(count); }), notFound);
    // A table that was plugged in again has another number, and is in its place.
    bus.Unplug("1-2");
    bus.Plug("1-2");
    UsbLibusb fresh(0x0971, 0x2004);
    fresh.Scan(count);
    EXPECT_EQ(count, 4);
    char serial[Usb::SerialNumberSize];
    fresh.Open(0);
    fresh.GetSerialNumber(serial);
    EXPECT_STREQ(serial, "640001");
}

TEST_F(UsbLibusbTest, WithoutATableThereIsNothingToOpen)
{
    unsigned short count = 7;
    EXPECT_EQ(Thrown([&] { usb.Scan(count); }), notFound);
    EXPECT_EQ(count, 7);
    EXPECT_EQ(Thrown([&] { usb.Open(0); }), notFound);
    EXPECT_EQ(Thrown([&] { Read(); }), Text("libusb_bulk_transfer(in)", gone));
    EXPECT_EQ(Thrown([&] { Write("x"); }), Text("libusb_bulk_transfer(out)", gone));
    EXPECT_EQ(Thrown([&] { SetBaudRate(); }), Text("libusb_control_transfer", gone));
    EXPECT_EQ(Thrown([&] { SerialNumber(); }), Text("libusb_get_string_descriptor", gone));
    usb.Close();
}

TEST_F(UsbLibusbTest, AFailedOpenLeavesNothingBehind)
{
    const struct {
        int skip;
        Fault fault;
        int configuration;
        const char* call;
        const char* error;
    } cases[] = {
        {0, Fault::Removed, 1, "libusb_claim_interface", gone},
        {0, Fault::Removed, 0, "libusb_set_configuration", gone},
        {1, Fault::Removed, 1, "libusb_clear_halt", gone},
        {2, Fault::Removed, 1, "libusb_clear_halt", gone},
        {1, Fault::Stall, 1, "libusb_clear_halt", "LIBUSB_ERROR_OTHER: Other error."},
    };
    for (const auto& failing : cases) {
        device = &bus.Plug(place, {.configuration = failing.configuration});
        unsigned short count = 0;
        usb.Scan(count);
        device->Fail(failing.skip, failing.fault);
        EXPECT_EQ(Thrown([&] { usb.Open(0); }), Text(failing.call, failing.error)) << failing.skip;
        EXPECT_THAT(HeldByLibusb(), ElementsAre("thread", "timer")) << "the context that counted";
        EXPECT_EQ(Thrown([&] { Write("x"); }), Text("libusb_bulk_transfer(out)", gone)) << "not open";
        bus.Unplug(place);
        device = &bus.Plug(place);
        UsbLibusb fresh(0x0971, 0x2004);
        fresh.Open(0);
        fresh.Close();
        bus.Unplug(place);
    }
}

TEST_F(UsbLibusbTest, FailuresNameTheCallAndLibusbsError)
{
    const struct {
        const char* name;
        std::function<void()> call;
        bool asksAgain;  ///< after a stall, in another language
    } calls[] = {
        {"libusb_bulk_transfer(in)", [&] { Read(); }, false},
        {"libusb_bulk_transfer(out)", [&] { Write("\r"); }, false},
        {"libusb_control_transfer", [&] { SetBaudRate(); }, false},
        {"libusb_get_string_descriptor", [&] { SerialNumber(); }, true},
    };
    for (const auto& [name, call, asksAgain] : calls) {
        for (const auto& [fault, error] : std::vector<std::pair<Fault, const char*>>{{Fault::Removed, gone},
                                                                                     {Fault::RemovedInFlight, gone},
                                                                                     {Fault::Stall, stalled},
                                                                                     {Fault::Silence, timedOut}}) {
            Open();
            device->Fail(0, fault);
            EXPECT_EQ(Thrown(call), asksAgain && fault == Fault::Stall ? "" : Text(name, error));
            if (!device->IsRemoved()) {
                EXPECT_EQ(Thrown(call), "") << name << " works after: " << error;
            } else {
                EXPECT_EQ(Thrown(call), Text(name, gone)) << "and stays so";
            }
            usb.Close();
            bus.Unplug(place);
        }
    }
}

TEST_F(UsbLibusbTest, AStalledPipeIsClearedAtOnce)
{
    Open();
    device->Fail(0, Fault::Stall);
    EXPECT_NE(Thrown([&] { Write(";a034\r"); }), "");
    EXPECT_THAT(device->TakeRecord(), ElementsAre("clear halt 2"));
    device->Fail(0, Fault::Stall);
    EXPECT_NE(Thrown([&] { Read(); }), "");
    EXPECT_THAT(device->TakeRecord(), ElementsAre("clear halt 81"));
}

TEST_F(UsbLibusbTest, ReadsWhatComesUpToTheLargestTransfer)
{
    Open();
    std::vector<uint8_t> large(0x20000);
    std::generate(large.begin(), large.end(), [value = 0u]() mutable { return static_cast<uint8_t>(++value % 251); });
    const struct {
        size_t room;
        size_t length;
        const char* request;
    } cases[] = {{0x20000, 0x20000, "in 131072"},
                 {0x40000, 0x20000, "in 131072"},
                 {0x20000, 66, "in 131072"},
                 {512, 2, "in 512"},
                 {512, 0, "in 512"},
                 {64, 64, "in 64"}};
    for (const auto& transfer : cases) {
        const std::vector<uint8_t> sent(large.begin(), large.begin() + static_cast<std::ptrdiff_t>(transfer.length));
        device->Deliver(sent);
        EXPECT_TRUE(Read(transfer.room) == sent) << transfer.length;
        EXPECT_THAT(device->TakeRecord(), ElementsAre(transfer.request));
    }
}

TEST_F(UsbLibusbTest, ATransferThatTimesOutKeepsWhatCame)
{
    Open();
    for (const size_t bytes : {1u, 66u}) {
        std::vector<uint8_t> sent(bytes, 0x41);
        device->Deliver(sent);
        device->Fail(0, Fault::Silence);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(Read(1024), sent);
        const auto passed = std::chrono::steady_clock::now() - start;
        EXPECT_GE(passed, std::chrono::milliseconds(900));
        EXPECT_LE(passed, std::chrono::milliseconds(3000));
        EXPECT_THAT(device->TakeRecord(), ElementsAre("in 1024", "cancel"));
    }
    device->Fail(0, Fault::Silence);
    EXPECT_EQ(Thrown([&] { Read(); }), Text("libusb_bulk_transfer(in)", timedOut)) << "nothing came";
}

TEST_F(UsbLibusbTest, AllIsWrittenWhateverTheDeviceTakesAtOnce)
{
    Open();
    for (const size_t limit : {0u, 1u, 4u, 5u, 6u}) {
        device->Limit(0, limit);
        Write(";a034\r");
        std::string taken;
        for (const std::string& line : device->TakeRecord()) {
            taken += line.substr(std::string("out ").size());
        }
        EXPECT_EQ(taken, ";a034") << limit;
    }
    Write("");
    EXPECT_THAT(device->TakeRecord(), IsEmpty());
    device->Limit(0, 0);
    device->Fail(0, Fault::Silence, 3);
    EXPECT_EQ(Thrown([&] { Write(";a034\r"); }), Text("libusb_bulk_transfer(out)", timedOut)) << "half a command";
    EXPECT_THAT(device->TakeRecord(), ElementsAre("out ;a0", "cancel"));
}

TEST_F(UsbLibusbTest, SerialNumbersFitIntoTheRoom)
{
    std::vector<uint8_t> endless(255, 0);
    endless[0] = 255;
    endless[1] = 3;
    for (size_t i = 2; i < endless.size(); i += 2) {
        endless[i] = 'S';
    }
    const std::vector<std::pair<MockedDevice::Traits, std::string>> cases = {
        {{}, "640001"},
        {{.needsLanguage = true}, "640001"},
        {{.hasSerial = false}, ""},
        {{.serial = StringDescriptor("")}, ""},
        {{.serial = endless}, std::string(126, 'S')},
        {{.serial = StringDescriptor(std::string(125, 'T'))}, std::string(125, 'T')},
        {{.serial = std::vector<uint8_t>{255, 3, 'A', 0, 'B'}}, "A"},
        {{.serial = std::vector<uint8_t>{2}}, ""},
        {{.serial = std::vector<uint8_t>{8, 3, 'A', 0, 0, 0, 'C', 0}}, "A"},
        {{.serial = std::vector<uint8_t>{6, 3, 0x3A, 0x26, 0xE9, 0}}, "?\xE9"},
    };
    for (const auto& [traits, expected] : cases) {
        bus.Plug(place, traits);
        usb.Open(0);
        EXPECT_EQ(SerialNumber(), expected);
        usb.Close();
        bus.Unplug(place);
    }
}

}  // namespace
}  // namespace J4Test
