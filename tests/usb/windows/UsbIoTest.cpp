// The client of the driver by itself: statuses, byte counts and time-outs.
#include <algorithm>
#include <array>
#include <atomic>
#include <thread>
#include <utility>

#include "tests/usb/windows/DriverStand.h"
#include "usbio/CUsbIo.h"
#include "usbio/CUsbIoPipe.h"

namespace J4Test {
namespace {

using testing::Each;
using testing::ElementsAre;

struct UsbIoTest : OverDriver<OnStand<testing::Test>> {
    void SetUp() override
    {
        OverDriver::SetUp();
        list = CUsbIo::CreateDeviceList(guid);
        ASSERT_NE(list, nullptr);
    }

    void TearDown() override
    {
        CUsbIo::DestroyDeviceList(list);
        OverDriver::TearDown();
    }

    static constexpr const GUID* guid = &DriverStand::interfaceGuid;
    HDEVINFO list = nullptr;
};

TEST_F(UsbIoTest, OpensOnceAndAClosedOneAsksNobody)
{
    CUsbIoPipe pipe;
    UsbIo::DeviceParameters parameters{};
    UsbIo::DeviceDescriptor descriptor{};
    uint8_t byte = 0;
    uint32_t length = 1;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(pipe.Open(0, list, guid), UsbIo::StatusSuccess);
        EXPECT_EQ(pipe.Open(0, list, guid), UsbIo::StatusAlreadyOpen);
        EXPECT_EQ(pipe.GetDeviceParameters(parameters), UsbIo::StatusSuccess) << "still usable";
        EXPECT_EQ(parameters.requestTimeout, 1000u);
        pipe.Close();
        pipe.Close();
        const uint32_t statuses[] = {pipe.GetDeviceDescriptor(descriptor),
                                     pipe.GetStringDescriptor(&byte, length, 1, 0),
                                     pipe.ClassOrVendorInRequest(&byte, length, {}),
                                     pipe.ClassOrVendorOutRequest(&byte, length, {}),
                                     pipe.SetConfiguration({}),
                                     pipe.UnconfigureDevice(),
                                     pipe.GetDeviceParameters(parameters),
                                     pipe.ResetDevice(),
                                     pipe.ResetPipe(),
                                     pipe.AbortPipe()};
        EXPECT_THAT(statuses, Each(static_cast<uint32_t>(UsbIo::StatusDeviceNotOpen)));
        EXPECT_THAT(table->TakeRecord(), ElementsAre("1 open", "1 8094206C out 12", "1 8094203C out 8", "1 close"));
    }
}

TEST_F(UsbIoTest, DevicesOfAListMayHaveGone)
{
    Stand().Plug(1);
    const HDEVINFO two = CUsbIo::CreateDeviceList(guid);
    Stand().Unplug(0);
    CUsbIo finder;
    for (const auto& [number, devices, interface, status] :
         {std::tuple(0, list, guid, UsbIo::StatusSuccess), std::tuple(1, two, guid, UsbIo::StatusSuccess),
          std::tuple(1, list, guid, UsbIo::StatusNoSuchDeviceInstance),
          std::tuple(0, HDEVINFO{}, guid, UsbIo::StatusInvalidParameter),
          std::tuple(0, list, static_cast<const GUID*>(nullptr), UsbIo::StatusInvalidParameter)}) {
        EXPECT_EQ(finder.GetDeviceInstanceDetails(number, devices, interface), static_cast<uint32_t>(status)) << number;
    }
    EXPECT_EQ(finder.Open(1, list, guid), UsbIo::StatusNoSuchDeviceInstance);
    EXPECT_EQ(finder.Open(0, nullptr, guid), UsbIo::StatusDeviceNotFound) << "there is no device of that plain name";
    EXPECT_EQ(finder.Open(0, two, guid), UsbIo::StatusDeviceNotFound);
    EXPECT_EQ(finder.ResetDevice(), UsbIo::StatusDeviceNotOpen);
    table = Stand().Plug(0);
    EXPECT_EQ(finder.Open(0, two, guid), UsbIo::StatusSuccess) << "and come back";
    CUsbIo::DestroyDeviceList(two);
    CUsbIo::DestroyDeviceList(nullptr);
}

TEST_F(UsbIoTest, TheInterfaceVersionDecides)
{
    for (const auto& [version, status] :
         {std::pair(0x0230, UsbIo::StatusSuccess), std::pair(0x02FF, UsbIo::StatusSuccess),
          std::pair(0x022F, UsbIo::StatusVersionMismatch), std::pair(0x0330, UsbIo::StatusVersionMismatch),
          std::pair(0x0130, UsbIo::StatusVersionMismatch)}) {
        TheRelay().Inject(UsbIo::ControlGetDriverInfo,
                          {.data = {static_cast<uint8_t>(version), static_cast<uint8_t>(version >> 8)}});
        CUsbIo device;
        EXPECT_EQ(device.Open(0, list, guid), static_cast<uint32_t>(status)) << version;
        EXPECT_EQ(device.ResetDevice(), status == UsbIo::StatusSuccess ? 0u : UsbIo::StatusDeviceNotOpen) << version;
    }
}

TEST_F(UsbIoTest, StatusesOfTheDriverArriveAsTheyAre)
{
    CUsbIo device;
    ASSERT_EQ(device.Open(0, list, guid), 0u);
    for (const auto& [sent, received] :
         std::vector<std::pair<uint32_t, uint32_t>>{{0xE0000004, 0xE0000004},
                                                    {0xE0006000, 0xE0006000},
                                                    {0xE000100A, 0xE000100A},
                                                    {0xE8001000, 0xE8001000},
                                                    {0xC0000022, ERROR_ACCESS_DENIED},
                                                    {0xC0000010, ERROR_INVALID_FUNCTION},
                                                    {0xC0000120, ERROR_OPERATION_ABORTED}}) {
        TheRelay().Inject(UsbIo::ControlUnconfigureDevice, {sent});
        EXPECT_EQ(device.UnconfigureDevice(), received) << std::hex << sent;
        EXPECT_EQ(device.UnconfigureDevice(), 0u);
    }
    TheRelay().Inject(UsbIo::ControlGetDriverInfo, {0xE000100A});
    CUsbIo other;
    EXPECT_EQ(other.Open(0, list, guid), 0xE000100A);
    EXPECT_EQ(other.ResetDevice(), UsbIo::StatusDeviceNotOpen);
}

TEST_F(UsbIoTest, DataOfVendorRequestsGoBothWays)
{
    CUsbIo device;
    ASSERT_EQ(device.Open(0, list, guid), 0u);
    table->TakeRecord();
    uint8_t sent[] = {1, 2, 0xAB};
    uint32_t length = sizeof(sent);
    EXPECT_EQ(device.ClassOrVendorOutRequest(sent, length, {0, 2, 0, 0, 0, 1, 0x0304}), 0u);
    EXPECT_THAT(table->TakeRecord(), ElementsAre("1 80942035 0000000002000000000000000000010004030102AB out 3"));

    uint8_t received[8] = {};
    length = sizeof(received);
    TheRelay().Inject(UsbIo::ControlClassOrVendorInRequest, {0, {9, 8, 7}});
    EXPECT_EQ(device.ClassOrVendorInRequest(received, length, {0, 2, 0, 0, 5, 0, 0}), 0u);
    EXPECT_EQ(length, 3u);
    EXPECT_THAT(received, ElementsAre(9, 8, 7, 0, 0, 0, 0, 0));
}

TEST_F(UsbIoTest, MoreBytesThanAskedForStayOutside)
{
    // The system hands a driver's byte count on as it is. Counts of many thousands end the system's own driver
    // process, so these are small.
    CUsbIoPipe pipe;
    ASSERT_EQ(pipe.Bind(0, EndpointIn, list, guid), 0u);
    constexpr uint32_t asked = 18;
    constexpr size_t margin = 64;
    for (const uint32_t extra : {1u, 46u}) {
        const Relay::Answer tooMany{0, Bytes(asked, 0xEE), extra};
        Bytes room(asked + margin, 0xA5);
        uint32_t length = asked;
        TheRelay().Inject(UsbIo::ControlGetDescriptor, tooMany);
        EXPECT_EQ(pipe.GetStringDescriptor(room.data(), length, 3, 0), 0u);
        EXPECT_EQ(length, asked);
        TheRelay().Inject(DriverRead, tooMany);
        EXPECT_EQ(pipe.ReadSync(room.data(), length, 1000), 0u);
        EXPECT_EQ(length, asked);
        EXPECT_THAT(Bytes(room.begin() + asked, room.end()), Each(0xA5));
    }
}

TEST_F(UsbIoTest, ALateReadKeepsWhatArrivedWhileAWriteGoesOn)
{
    CUsbIoPipe in;
    CUsbIoPipe out;
    ASSERT_EQ(in.Bind(0, EndpointIn, list, guid), 0u);
    ASSERT_EQ(out.Bind(0, EndpointOut, list, guid), 0u);
    table->TakeRecord();
    TheRelay().Inject(DriverRead, {.data = {1, 0x60, 'x'}, .isPending = true});
    std::array<uint8_t, 64> buffer{};
    uint32_t read = 64;
    uint32_t readStatus = 0;
    std::atomic<bool> hasRead = false;
    std::thread reader([&] {
        readStatus = in.ReadSync(buffer.data(), read, 500);
        hasRead = true;
    });
    while (TheRelay().IsWaiting()) {
        Sleep(1);
    }
    uint32_t written = 3;
    EXPECT_EQ(out.WriteSync("abc", written, 500), 0u);
    EXPECT_EQ(written, 3u);
    EXPECT_FALSE(hasRead) << "the write waited for the read";
    reader.join();
    EXPECT_EQ(readStatus, UsbIo::StatusTimeout);
    EXPECT_EQ(read, 3u);
    EXPECT_THAT(table->TakeRecord(), ElementsAre("out abc", "cancel"));

    read = 64;
    EXPECT_EQ(in.ReadSync(buffer.data(), read, 500), 0u) << "usable again";
    written = 3;
    EXPECT_EQ(in.WriteSync("abc", written, 500), 0xE0001010) << "wrong direction";
    EXPECT_EQ(written, 0u);

    // The system gives the lowest number that is free.
    const auto nextHandle = [] {
        const HANDLE event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
        CloseHandle(event);
        return reinterpret_cast<uintptr_t>(event);
    };
    const uintptr_t before = nextHandle();
    for (int i = 0; i < 40; ++i) {
        written = 3;
        EXPECT_EQ(out.WriteSync("abc", written, 500), 0u);
    }
    EXPECT_LT(nextHandle(), before + 20 * sizeof(uint32_t)) << "each transfer gives its event back";
}

TEST_F(UsbIoTest, TextsOfStatusesAreCutToSize)
{
    char buffer[80];
    const std::string late = "Error code 0xE000100C: The request has been timed out.";
    EXPECT_EQ(CUsbIo::ErrorText(buffer, sizeof(buffer), 0xE000100C), late);
    EXPECT_STREQ(CUsbIo::ErrorText(buffer, sizeof(buffer), 5), "Error code 0x00000005: Windows system error code.");
    EXPECT_STREQ(CUsbIo::ErrorText(buffer, sizeof(buffer), 0), "Error code 0x00000000: No error.");
    for (const uint32_t size : {54u, 20u, 1u, 0u}) {
        std::fill(std::begin(buffer), std::end(buffer), 'z');
        EXPECT_EQ(CUsbIo::ErrorText(buffer, size, 0xE000100C), buffer);
        EXPECT_EQ(std::string(buffer, size + 1), (late.substr(0, size - 1) + '\0').substr(0, size) + 'z') << size;
    }
    EXPECT_EQ(CUsbIo::ErrorText(nullptr, 8, 0), nullptr);
}

}  // namespace
}  // namespace J4Test
