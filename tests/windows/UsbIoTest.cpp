// The client of the driver by itself, over the driver's stand-in: statuses, byte counts and time-outs.
#include <algorithm>
#include <array>
#include <atomic>
#include <thread>

#include "tests/windows/DriverTest.h"
#include "usbio/CUsbIo.h"
#include "usbio/CUsbIoPipe.h"

namespace J4Test {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint8_t EndpointOut = 0x02;
constexpr uint8_t EndpointIn = 0x81;

struct UsbIoTest : OverDriver<testing::Test> {
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

    static constexpr const GUID* guid = &KernelDriver::interfaceGuid;
    HDEVINFO list = nullptr;
};

/// A buffer in the middle of guarding bytes.
struct Guarded {
    static constexpr uint8_t guard = 0xA5;
    static constexpr size_t margin = 4096;

    explicit Guarded(size_t size) : bytes(size + 2 * margin, guard), size(size) {}
    uint8_t* Data() { return bytes.data() + margin; }
    bool IsIntact() const
    {
        const auto isGuard = [](uint8_t byte) { return byte == guard; };
        return std::all_of(bytes.begin(), bytes.begin() + margin, isGuard) &&
               std::all_of(bytes.end() - margin, bytes.end(), isGuard);
    }

    std::vector<uint8_t> bytes;
    size_t size;
};

TEST_F(UsbIoTest, OpensOnceAndAgainAfterItWasClosed)
{
    CUsbIo device;
    UsbIo::DeviceParameters parameters{};
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(device.Open(0, list, guid), UsbIo::StatusSuccess);
        EXPECT_EQ(device.Open(0, list, guid), UsbIo::StatusAlreadyOpen);
        EXPECT_EQ(device.GetDeviceParameters(parameters), UsbIo::StatusSuccess) << "still usable";
        EXPECT_EQ(parameters.requestTimeout, 1000u);
        device.Close();
        device.Close();
        EXPECT_EQ(device.GetDeviceParameters(parameters), UsbIo::StatusDeviceNotOpen);
        EXPECT_TRUE(World().WaitUntilClosed());
        EXPECT_THAT(World().Take(), ElementsAre("1 open table 0", "1 8094206C out 12", "1 8094203C out 8", "1 close"));
    }
}

TEST_F(UsbIoTest, AClosedObjectAsksNobody)
{
    CUsbIoPipe closed;
    UsbIo::DeviceParameters parameters{};
    UsbIo::DeviceDescriptor descriptor{};
    uint8_t byte = 0;
    uint32_t length = 1;
    const std::array<uint32_t, 10> statuses = {
        closed.GetDeviceDescriptor(descriptor),
        closed.GetStringDescriptor(&byte, length, 1, 0),
        closed.ClassOrVendorInRequest(&byte, length, {}),
        closed.ClassOrVendorOutRequest(&byte, length, {}),
        closed.SetConfiguration({}),
        closed.UnconfigureDevice(),
        closed.GetDeviceParameters(parameters),
        closed.ResetDevice(),
        closed.ResetPipe(),
        closed.AbortPipe(),
    };
    EXPECT_THAT(statuses, Each(static_cast<uint32_t>(UsbIo::StatusDeviceNotOpen)));
    EXPECT_THAT(World().Take(), IsEmpty());
}

TEST_F(UsbIoTest, CountsTheDevicesOfAList)
{
    CUsbIo finder;
    EXPECT_EQ(finder.GetDeviceInstanceDetails(0, list, guid), UsbIo::StatusSuccess);
    EXPECT_EQ(finder.GetDeviceInstanceDetails(1, list, guid), UsbIo::StatusNoSuchDeviceInstance);
    EXPECT_EQ(finder.GetDeviceInstanceDetails(0, nullptr, guid), UsbIo::StatusInvalidParameter);
    EXPECT_EQ(finder.GetDeviceInstanceDetails(0, list, nullptr), UsbIo::StatusInvalidParameter);
    EXPECT_EQ(finder.Open(1, list, guid), UsbIo::StatusNoSuchDeviceInstance);
    EXPECT_EQ(finder.Open(0, nullptr, guid), UsbIo::StatusDeviceNotFound) << "there is no device of that plain name";
    CUsbIo::DestroyDeviceList(nullptr);

    Driver().UnplugAll();
    const HDEVINFO empty = CUsbIo::CreateDeviceList(guid);
    EXPECT_EQ(finder.GetDeviceInstanceDetails(0, empty, guid), UsbIo::StatusNoSuchDeviceInstance);
    CUsbIo::DestroyDeviceList(empty);
}

TEST_F(UsbIoTest, AListMayBeOlderThanTheWorld)
{
    Driver().Plug(1);
    const HDEVINFO older = CUsbIo::CreateDeviceList(guid);
    Driver().Unplug(0);
    CUsbIo device;
    EXPECT_EQ(device.GetDeviceInstanceDetails(0, older, guid), UsbIo::StatusSuccess);
    EXPECT_EQ(device.Open(0, older, guid), UsbIo::StatusDeviceNotFound);
    EXPECT_EQ(device.ResetDevice(), UsbIo::StatusDeviceNotOpen);

    Driver().Plug(0);
    EXPECT_EQ(device.Open(0, older, guid), UsbIo::StatusSuccess);
    CUsbIo::DestroyDeviceList(older);
    device.Close();
    EXPECT_THAT(World().Take(), Contains("1 open table 0"));
}

TEST_F(UsbIoTest, TheInterfaceVersionDecides)
{
    for (const auto& [version, status] :
         std::vector<std::pair<uint16_t, uint32_t>>{{0x0230, UsbIo::StatusSuccess},
                                                    {0x02FF, UsbIo::StatusSuccess},
                                                    {0x022F, UsbIo::StatusVersionMismatch},
                                                    {0x0330, UsbIo::StatusVersionMismatch},
                                                    {0x0130, UsbIo::StatusVersionMismatch},
                                                    {0x0000, UsbIo::StatusVersionMismatch}}) {
        World().SetDriverInfo({version, 0, 0, 0});
        CUsbIo device;
        EXPECT_EQ(device.Open(0, list, guid), status) << version;
        EXPECT_EQ(device.ResetDevice(), status == 0 ? 0u : UsbIo::StatusDeviceNotOpen) << version;
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
        World().Inject(UsbIo::ControlUnconfigureDevice, {sent});
        EXPECT_EQ(device.UnconfigureDevice(), received) << std::hex << sent;
        EXPECT_EQ(device.UnconfigureDevice(), 0u);
    }
    World().Inject(UsbIo::ControlGetDriverInfo, {0xE000100A});
    CUsbIo other;
    EXPECT_EQ(other.Open(0, list, guid), 0xE000100A);
    EXPECT_EQ(other.ResetDevice(), UsbIo::StatusDeviceNotOpen);
}

TEST_F(UsbIoTest, DataOfVendorRequestsGoBothWays)
{
    CUsbIo device;
    ASSERT_EQ(device.Open(0, list, guid), 0u);
    World().Take();
    uint8_t sent[] = {1, 2, 0xAB};
    uint32_t length = sizeof(sent);
    EXPECT_EQ(device.ClassOrVendorOutRequest(sent, length, {0, 2, 0, 0, 0, 1, 0x0304}), 0u);
    EXPECT_THAT(World().Take(), ElementsAre("1 80942035 0000000002000000000000000000010004030102AB out 3"));

    uint8_t received[8] = {};
    length = sizeof(received);
    World().Inject(UsbIo::ControlClassOrVendorInRequest, {0, {9, 8, 7}});
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
    for (const uint32_t extra : {1u, 46u}) {
        const Relay::Answer tooMany{0, Relay::Bytes(asked, 0xEE), extra};
        Guarded room(asked);
        DWORD bytes = 0;
        const UsbIo::DescriptorRequest request{UsbIo::RecipientDevice, UsbIo::DescriptorString, 3, 0};
        const HANDLE plain = CreateFileA(KernelDriver::Path(0).c_str(), GENERIC_READ | GENERIC_WRITE,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
        World().Inject(UsbIo::ControlGetDescriptor, tooMany);
        EXPECT_TRUE(DeviceIoControl(plain, UsbIo::ControlGetDescriptor, const_cast<UsbIo::DescriptorRequest*>(&request),
                                    sizeof(request), room.Data(), asked, &bytes, nullptr));
        EXPECT_EQ(bytes, asked + extra);
        CloseHandle(plain);

        uint32_t length = asked;
        World().Inject(UsbIo::ControlGetDescriptor, tooMany);
        EXPECT_EQ(pipe.GetStringDescriptor(room.Data(), length, 3, 0), 0u);
        EXPECT_EQ(length, asked);

        World().Inject(DriverRead, tooMany);
        EXPECT_EQ(pipe.ReadSync(room.Data(), length, 1000), 0u);
        EXPECT_EQ(length, asked);
        EXPECT_TRUE(room.IsIntact());
    }
}

TEST_F(UsbIoTest, ALateTransferIsCancelledAndKeepsWhatArrived)
{
    CUsbIoPipe pipe;
    ASSERT_EQ(pipe.Bind(0, EndpointIn, list, guid), 0u);
    World().Take();
    std::array<uint8_t, 64> buffer{};
    uint32_t length = buffer.size();
    Relay::Answer partial;
    partial.data = {1, 0x60, 'x'};
    partial.isPending = true;
    World().Inject(DriverRead, partial);
    const DWORD start = GetTickCount();
    EXPECT_EQ(pipe.ReadSync(buffer.data(), length, 200), UsbIo::StatusTimeout);
    EXPECT_GE(GetTickCount() - start, 180u);
    EXPECT_EQ(length, 3u);
    EXPECT_THAT(World().Take(), ElementsAre("1 read 64", "1 cancelled"));

    length = buffer.size();
    EXPECT_EQ(pipe.ReadSync(buffer.data(), length, 200), 0u) << "usable again";
    EXPECT_EQ(length, 2u);
}

TEST_F(UsbIoTest, AReadAndAWriteRunAtTheSameTime)
{
    CUsbIoPipe in;
    CUsbIoPipe out;
    ASSERT_EQ(in.Bind(0, EndpointIn, list, guid), 0u);
    ASSERT_EQ(out.Bind(0, EndpointOut, list, guid), 0u);
    Relay::Answer silent;
    silent.isSilent = true;
    World().Inject(DriverRead, silent);
    uint32_t read = 64;
    uint32_t readStatus = 0;
    std::atomic<bool> hasRead = false;
    const uint64_t before = Relay::Faults();
    std::thread reader([&] {
        std::array<uint8_t, 64> buffer{};
        readStatus = in.ReadSync(buffer.data(), read, 1000);
        hasRead = true;
    });
    while (Relay::Faults() == before) {
        Sleep(1);
    }
    uint32_t written = 3;
    EXPECT_EQ(out.WriteSync("abc", written, 500), 0u);
    EXPECT_EQ(written, 3u);
    EXPECT_FALSE(hasRead) << "the write waited for the read";
    reader.join();
    EXPECT_EQ(readStatus, UsbIo::StatusTimeout);
    EXPECT_EQ(read, 0u);

    written = 3;
    EXPECT_EQ(in.WriteSync("abc", written, 500), 0xE0001010) << "wrong direction";
    EXPECT_EQ(written, 0u);
}

TEST_F(UsbIoTest, TextsOfStatusesAreCutToSize)
{
    char buffer[80];
    EXPECT_STREQ(CUsbIo::ErrorText(buffer, sizeof(buffer), 0xE000100C),
                 "Error code 0xE000100C: The request has been timed out.");
    EXPECT_STREQ(CUsbIo::ErrorText(buffer, sizeof(buffer), 5), "Error code 0x00000005: Windows system error code.");
    EXPECT_STREQ(CUsbIo::ErrorText(buffer, sizeof(buffer), 0), "Error code 0x00000000: No error.");
    for (uint32_t size = 1; size < 54; ++size) {
        std::fill(std::begin(buffer), std::end(buffer), 'z');
        EXPECT_EQ(CUsbIo::ErrorText(buffer, size, 0xE000100C), buffer);
        EXPECT_EQ(std::string(buffer),
                  std::string("Error code 0xE000100C: The request has been timed out.").substr(0, size - 1));
        EXPECT_EQ(buffer[size], 'z') << size;
    }
    buffer[0] = 'z';
    EXPECT_EQ(CUsbIo::ErrorText(buffer, 0, 0), buffer);
    EXPECT_EQ(buffer[0], 'z');
    EXPECT_EQ(CUsbIo::ErrorText(nullptr, 8, 0), nullptr);
}

}  // namespace
}  // namespace J4Test
