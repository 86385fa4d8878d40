#include "tests/usb/libusb/DeviceFile.h"

#include <linux/usbdevice_fs.h>
#include <poll.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <sstream>
#include <utility>

namespace J4Test {

namespace {

constexpr uint8_t DirectionIn = 0x80;
constexpr uint8_t RequestTypeMask = 0x60;
constexpr uint8_t VendorRequest = 0x40;
constexpr uint8_t GetDescriptor = 6;

constexpr size_t SetupSize = 8;

struct Unreference {
    void operator()(UMockdevIoctlData* data) const { g_object_unref(data); }
};
using Memory = std::unique_ptr<UMockdevIoctlData, Unreference>;

/// The client's memory that an ioctl's argument, or a field of it, points to.
Memory Resolve(UMockdevIoctlData* data, size_t offset, size_t length)
{
    return Memory(length > 0 ? umockdev_ioctl_data_resolve(data, offset, length, nullptr) : nullptr);
}

template <class Value>
Value ValueOf(UMockdevIoctlData* argument)
{
    Value value{};
    if (const Memory data = Resolve(argument, 0, sizeof value)) {
        std::memcpy(&value, data->data, sizeof value);
    }
    return value;
}

int StatusOf(UsbEnd end) { return end == UsbEnd::Done ? 0 : end == UsbEnd::Stalled ? -EPIPE : -ESHUTDOWN; }

}  // namespace

/// A transfer that the kernel has taken over. Its memory is the client's, mirrored by umockdev.
struct Urb {
    explicit Urb(Memory memory) : block(std::move(memory)) {}

    usbdevfs_urb& Record() { return *reinterpret_cast<usbdevfs_urb*>(block->data); }
    size_t Room() { return static_cast<size_t>(std::max(Record().buffer_length, 0)); }

    /// The buffer, or so many bytes of it: no more are fetched than are used. The first call decides.
    uint8_t* Buffer(size_t size)
    {
        if (buffer == nullptr) {
            buffer = Resolve(block.get(), offsetof(usbdevfs_urb, buffer), size);
        }
        return buffer != nullptr ? buffer->data : nullptr;
    }

    /// Puts data behind what the buffer begins with.
    void Receive(const Bytes& data, size_t before = 0)
    {
        const size_t count = std::min(data.size(), Room() - before);
        if (count > 0) {
            std::copy_n(data.begin(), count, Buffer(before + count) + before);
        }
        Record().actual_length = static_cast<int>(count);
    }

    Memory block;
    Memory buffer;
};

DeviceFile::DeviceFile(std::shared_ptr<TableDevice> device)
    : device(std::move(device)), handler(umockdev_ioctl_base_new())
{
    g_signal_connect(handler, "handle-ioctl", G_CALLBACK(&DeviceFile::HandleIoctl), this);
}

DeviceFile::~DeviceFile()
{
    g_signal_handlers_disconnect_by_data(handler, this);
    g_object_unref(handler);
}

gboolean DeviceFile::HandleIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer file)
{
    DeviceFile& self = *static_cast<DeviceFile*>(file);
    const int error = self.Handle(umockdev_ioctl_client_get_request(client), umockdev_ioctl_client_get_arg(client));
    if (error == EAGAIN && !self.pending.empty()) {
        // The mocked file always looks ready; this keeps a wait for a silent transfer from taking the whole processor.
        ::poll(nullptr, 0, 5);
    }
    umockdev_ioctl_client_complete(client, error == 0 ? 0 : -1, error);
    return TRUE;
}

/// @return 0 or the error number of the ioctl
int DeviceFile::Handle(unsigned long request, UMockdevIoctlData* argument)
{
    switch (request) {
    case USBDEVFS_REAPURB:
    case USBDEVFS_REAPURBNDELAY:
        return Reap(argument);
    case USBDEVFS_DISCARDURB:
        return Discard(argument);
    case USBDEVFS_SUBMITURB:
        return Submit(argument);
    case USBDEVFS_GET_CAPABILITIES:
        if (const Memory data = Resolve(argument, 0, sizeof(uint32_t))) {
            const uint32_t capabilities = USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_BULK_CONTINUATION |
                                          USBDEVFS_CAP_NO_PACKET_SIZE_LIM | USBDEVFS_CAP_BULK_SCATTER_GATHER |
                                          USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
            std::memcpy(data->data, &capabilities, sizeof capabilities);
        }
        return 0;
    default:
        return HandleDeviceRequest(request, argument);
    }
}

/// What is no transfer.
int DeviceFile::HandleDeviceRequest(unsigned long request, UMockdevIoctlData* argument)
{
    const UsbEnd end = device->Other();
    if (device->isRemoved) {
        return ENODEV;
    }
    const bool reachesDevice = request == USBDEVFS_CLEAR_HALT || request == USBDEVFS_SETCONFIGURATION;
    if (reachesDevice && end != UsbEnd::Done) {
        return end == UsbEnd::Stalled ? EPIPE : ETIMEDOUT;
    }
    std::ostringstream line;
    switch (request) {
    case USBDEVFS_DISCONNECT_CLAIM:
        line << "claim " << ValueOf<usbdevfs_disconnect_claim>(argument).interface;
        break;
    case USBDEVFS_RELEASEINTERFACE:
        line << "release " << ValueOf<unsigned>(argument);
        break;
    case USBDEVFS_SETCONFIGURATION:
        line << "configuration " << ValueOf<unsigned>(argument);
        break;
    case USBDEVFS_CLEAR_HALT:
        line << "clear halt " << std::hex << ValueOf<unsigned>(argument);
        halted.erase(static_cast<uint8_t>(ValueOf<unsigned>(argument)));
        break;
    case USBDEVFS_RESET:
        line << "reset";
        break;
    case USBDEVFS_IOCTL: {
        const usbdevfs_ioctl inner = ValueOf<usbdevfs_ioctl>(argument);
        line << (inner.ioctl_code == static_cast<int>(USBDEVFS_CONNECT) ? "connect " : "ioctl ") << inner.ifno;
        break;
    }
    default:
        line << "unknown " << std::hex << request;
        break;
    }
    device->Note(line.str());
    return 0;
}

int DeviceFile::Submit(UMockdevIoctlData* argument)
{
    Memory block = Resolve(argument, 0, sizeof(usbdevfs_urb));
    if (block == nullptr) {
        return EFAULT;
    }
    auto urb = std::make_unique<Urb>(std::move(block));
    urb->Record().actual_length = 0;
    const uint8_t endpoint = urb->Record().endpoint;
    const UsbEnd end = halted.contains(endpoint) ? UsbEnd::Stalled : Answer(*urb);
    if (end == UsbEnd::Gone) {
        return ENODEV;
    }
    if (end == UsbEnd::Stalled && urb->Record().type == USBDEVFS_URB_TYPE_BULK) {
        halted.insert(endpoint);
    }
    urb->Record().status = StatusOf(end);
    if (end == UsbEnd::Never) {
        pending.push_back(std::move(urb));
    } else {
        finished.push_back(std::move(urb));
    }
    return 0;
}

int DeviceFile::Reap(UMockdevIoctlData* argument)
{
    if (finished.empty()) {
        return device->isRemoved ? ENODEV : EAGAIN;
    }
    const Memory data = Resolve(argument, 0, sizeof(void*));
    if (data == nullptr) {
        return EFAULT;
    }
    umockdev_ioctl_data_set_ptr(data.get(), 0, finished.front()->block.get());
    finished.pop_front();
    return 0;
}

/// The argument is the address of the client's urb.
int DeviceFile::Discard(UMockdevIoctlData* argument)
{
    unsigned long address = 0;
    std::memcpy(&address, argument->data, sizeof address);
    const auto found =
        std::ranges::find_if(pending, [&](const auto& urb) { return urb->block->client_addr == address; });
    if (found == pending.end()) {
        return EINVAL;
    }
    device->Note("cancel");
    (*found)->Record().status = -ENOENT;
    finished.push_back(std::move(*found));
    pending.erase(found);
    return 0;
}

UsbEnd DeviceFile::Answer(Urb& urb)
{
    const usbdevfs_urb& record = urb.Record();
    if (record.type == USBDEVFS_URB_TYPE_CONTROL) {
        return AnswerControl(urb);
    }
    TableDevice::Reply reply;
    if ((record.endpoint & DirectionIn) != 0) {
        reply = device->Read(urb.Room());
        urb.Receive(reply.data);
    } else {
        const uint8_t* const data = urb.Buffer(urb.Room());
        reply = device->Write({reinterpret_cast<const char*>(data), urb.Room()});
        urb.Record().actual_length = static_cast<int>(reply.taken);
    }
    return reply.end;
}

/// A vendor request goes to the bridge; of the standard ones libusb needs the string descriptor.
UsbEnd DeviceFile::AnswerControl(Urb& urb)
{
    const uint8_t* const setup = urb.Buffer(urb.Room());
    const uint8_t type = setup[0];
    const uint8_t request = setup[1];
    const auto value = static_cast<uint16_t>(setup[2] | setup[3] << 8);
    const auto language = static_cast<uint16_t>(setup[4] | setup[5] << 8);
    if ((type & RequestTypeMask) == VendorRequest) {
        return device->Control(request, value);
    }
    if (request != GetDescriptor || value != (StringType << 8 | TableDevice::SerialIndex)) {
        return UsbEnd::Stalled;
    }
    const TableDevice::Reply reply = device->Serial(language);
    urb.Receive(reply.data, SetupSize);
    return reply.end;
}

}  // namespace J4Test
