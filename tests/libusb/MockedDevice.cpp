#include "tests/libusb/MockedDevice.h"

#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <sstream>
#include <thread>
#include <utility>

#include "simulator/table/TableUnit.h"
#include "simulator/world/Bench.h"

namespace J4Test {

using J4Bench::Bridge;

/// A transfer that the kernel has taken over. Its memory is the client's, mirrored by umockdev.
struct Urb {
    Urb(UMockdevIoctlData* block, UMockdevIoctlData* bufferBlock) : block(block), bufferBlock(bufferBlock) {}
    ~Urb()
    {
        g_clear_object(&bufferBlock);
        g_object_unref(block);
    }
    Urb(const Urb&) = delete;
    Urb& operator=(const Urb&) = delete;

    usbdevfs_urb& Record() { return *reinterpret_cast<usbdevfs_urb*>(block->data); }
    uint8_t* Buffer() { return bufferBlock != nullptr ? bufferBlock->data : nullptr; }
    size_t Room() { return static_cast<size_t>(Record().buffer_length); }

    void Finish(int status, size_t length)
    {
        Record().status = status;
        Record().actual_length = static_cast<int>(length);
        isFinished = true;
    }

    UMockdevIoctlData* block;
    UMockdevIoctlData* bufferBlock;
    bool isFinished = false;
};

namespace {

constexpr uint8_t DirectionIn = 0x80;
constexpr uint8_t RequestTypeMask = 0x60;
constexpr uint8_t VendorRequest = 0x40;
constexpr uint8_t GetDescriptor = 6;
constexpr uint8_t StringType = 3;
constexpr uint8_t SerialIndex = 3;
constexpr size_t SetupSize = 8;

std::string Hex(unsigned value)
{
    std::ostringstream text;
    text << std::hex << value;
    return text.str();
}

/// Fetches the memory that an ioctl's argument, or a field of it, points to.
UMockdevIoctlData* Resolve(UMockdevIoctlData* data, size_t offset, size_t length)
{
    return length > 0 ? umockdev_ioctl_data_resolve(data, offset, length, nullptr) : nullptr;
}

template <class Value>
Value ValueOf(UMockdevIoctlData* argument)
{
    Value value{};
    if (UMockdevIoctlData* const data = Resolve(argument, 0, sizeof value)) {
        std::memcpy(&value, data->data, sizeof value);
        g_object_unref(data);
    }
    return value;
}

/// The characters of a transfer without the status bytes of its packets.
std::string Unpacked(const std::vector<uint8_t>& transfer)
{
    std::string text;
    for (size_t i = 0; i < transfer.size(); ++i) {
        if (i % Bridge::PacketSize >= Bridge::StatusSize) {
            text += static_cast<char>(transfer[i]);
        }
    }
    return text;
}

std::vector<uint8_t> Packed(const std::string& text)
{
    const std::vector<uint8_t> status = {0x01, 0x60};
    std::vector<uint8_t> transfer = status;
    for (const char character : text) {
        if (transfer.size() % Bridge::PacketSize == 0) {
            transfer.insert(transfer.end(), status.begin(), status.end());
        }
        transfer.push_back(static_cast<uint8_t>(character));
    }
    return transfer;
}

/// Lets the bench's time pass where the library has waited without asking the table: its pauses are real ones here.
/// What is shorter than all of them is the computer's own time, of which the bench takes no notice.
void KeepUpWithPauses()
{
    using namespace std::chrono;
    constexpr microseconds shortest = 400ms;
    static steady_clock::time_point last = steady_clock::now();
    const steady_clock::time_point now = steady_clock::now();
    if (const auto passed = duration_cast<microseconds>(now - std::exchange(last, now)); passed >= shortest) {
        J4Bench::Bench::Instance().Clock().Advance(passed.count());
    }
}

int StatusOf(Bridge::Status status)
{
    switch (status) {
    case Bridge::Status::Done:
        return 0;
    case Bridge::Status::Stalled:
        return -EPIPE;
    default:
        return -ESHUTDOWN;
    }
}

}  // namespace

std::vector<uint8_t> StringDescriptor(const std::string& text)
{
    std::vector<uint8_t> descriptor = {static_cast<uint8_t>(2 + 2 * text.size()), StringType};
    for (const char character : text) {
        descriptor.push_back(static_cast<uint8_t>(character));
        descriptor.push_back(0);
    }
    return descriptor;
}

MockedDevice::MockedDevice(const Traits& traits) : traits(traits), handler(umockdev_ioctl_base_new())
{
    g_signal_connect(handler, "handle-ioctl", G_CALLBACK(&MockedDevice::HandleIoctl), this);
}

MockedDevice::~MockedDevice()
{
    g_signal_handlers_disconnect_by_data(handler, this);
    g_object_unref(handler);
}

std::vector<uint8_t> MockedDevice::Descriptors() const
{
    const uint8_t serial = traits.hasSerial ? SerialIndex : 0;
    return {
        18, 1, 0x00, 0x02, 0,  0,    0,    64,   0x71, 0x09, 0x04, 0x20, 0x00, 0x06, 1, 2, serial, 1,  // device
        9,  2, 32,   0,    1,  1,    0,    0xA0, 45,  // configuration 1
        9,  4, 0,    0,    2,  0xFF, 0xFF, 0xFF, 2,   // interface 0
        7,  5, 0x81, 2,    64, 0,    0,               // bulk IN
        7,  5, 0x02, 2,    64, 0,    0,               // bulk OUT
    };
}

void MockedDevice::Fail(int skip, Fault next, size_t bytes)
{
    const std::lock_guard lock(mutex);
    untilFault = skip;
    fault = next;
    faultBytes = bytes;
}

void MockedDevice::Limit(size_t in, size_t out)
{
    const std::lock_guard lock(mutex);
    limitIn = in;
    limitOut = out;
}

void MockedDevice::Deliver(const std::vector<uint8_t>& transfer)
{
    const std::lock_guard lock(mutex);
    deliveries.push_back(transfer);
}

void MockedDevice::Remove()
{
    const std::lock_guard lock(mutex);
    removed = true;
}

bool MockedDevice::IsRemoved() const
{
    const std::lock_guard lock(mutex);
    return removed;
}

std::vector<std::string> MockedDevice::TakeRecord()
{
    const std::lock_guard lock(mutex);
    return std::exchange(record, {});
}

gboolean MockedDevice::HandleIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer device)
{
    MockedDevice& self = *static_cast<MockedDevice*>(device);
    int error = 0;
    {
        const std::lock_guard lock(self.mutex);
        error = self.Handle(umockdev_ioctl_client_get_request(client), umockdev_ioctl_client_get_arg(client));
    }
    if (error == EAGAIN) {
        // The mocked file always looks ready; this keeps a wait for a silent transfer from taking the whole processor.
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    umockdev_ioctl_client_complete(client, error == 0 ? 0 : -1, error);
    return TRUE;
}

/// @return 0 or the error number of the ioctl
int MockedDevice::Handle(unsigned long request, UMockdevIoctlData* argument)
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
        if (UMockdevIoctlData* const data = Resolve(argument, 0, sizeof(uint32_t))) {
            const uint32_t capabilities = USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_BULK_CONTINUATION |
                                          USBDEVFS_CAP_NO_PACKET_SIZE_LIM | USBDEVFS_CAP_BULK_SCATTER_GATHER |
                                          USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
            std::memcpy(data->data, &capabilities, sizeof capabilities);
            g_object_unref(data);
        }
        return 0;
    default:
        return HandleDeviceRequest(request, argument);
    }
}

/// What is no transfer.
int MockedDevice::HandleDeviceRequest(unsigned long request, UMockdevIoctlData* argument)
{
    const Fault happening = NextFault();
    if (removed) {
        return ENODEV;
    }
    const bool reachesDevice = request == USBDEVFS_CLEAR_HALT || request == USBDEVFS_SETCONFIGURATION;
    if (reachesDevice && happening == Fault::Stall) {
        return EPIPE;
    }
    if (reachesDevice && happening == Fault::Silence) {
        return ETIMEDOUT;
    }
    switch (request) {
    case USBDEVFS_DISCONNECT_CLAIM:
        Note("claim " + std::to_string(ValueOf<usbdevfs_disconnect_claim>(argument).interface));
        return 0;
    case USBDEVFS_RELEASEINTERFACE:
        Note("release " + std::to_string(ValueOf<unsigned>(argument)));
        return 0;
    case USBDEVFS_SETCONFIGURATION:
        Note("configuration " + std::to_string(ValueOf<unsigned>(argument)));
        return 0;
    case USBDEVFS_CLEAR_HALT: {
        const unsigned endpoint = ValueOf<unsigned>(argument);
        halted.erase(static_cast<uint8_t>(endpoint));
        Note("clear halt " + Hex(endpoint));
        return 0;
    }
    case USBDEVFS_RESET:
        Note("reset");
        return 0;
    case USBDEVFS_IOCTL: {
        const usbdevfs_ioctl inner = ValueOf<usbdevfs_ioctl>(argument);
        Note((inner.ioctl_code == static_cast<int>(USBDEVFS_CONNECT) ? "connect " : "ioctl ") +
             std::to_string(inner.ifno));
        return 0;
    }
    default:
        Note("unknown " + Hex(static_cast<unsigned>(request)));
        return ENOTTY;
    }
}

Fault MockedDevice::NextFault()
{
    KeepUpWithPauses();
    if (untilFault < 0 || untilFault-- > 0) {
        return Fault::None;
    }
    removed = removed || fault == Fault::Removed || fault == Fault::RemovedInFlight;
    return fault;
}

int MockedDevice::Submit(UMockdevIoctlData* argument)
{
    const bool wasRemoved = removed;
    const Fault happening = NextFault();
    if (wasRemoved || happening == Fault::Removed) {
        return ENODEV;
    }
    UMockdevIoctlData* const block = Resolve(argument, 0, sizeof(usbdevfs_urb));
    if (block == nullptr) {
        return EFAULT;
    }
    const int length = reinterpret_cast<usbdevfs_urb*>(block->data)->buffer_length;
    auto urb = std::make_unique<Urb>(
        block, Resolve(block, offsetof(usbdevfs_urb, buffer), static_cast<size_t>(std::max(length, 0))));
    Answer(*urb, happening);
    if (urb->isFinished) {
        finished.push_back(std::move(urb));
    } else {
        pending.push_back(std::move(urb));
    }
    return 0;
}

int MockedDevice::Reap(UMockdevIoctlData* argument)
{
    if (finished.empty()) {
        return removed ? ENODEV : EAGAIN;
    }
    UMockdevIoctlData* const data = Resolve(argument, 0, sizeof(void*));
    if (data == nullptr) {
        return EFAULT;
    }
    umockdev_ioctl_data_set_ptr(data, 0, finished.front()->block);
    g_object_unref(data);
    finished.pop_front();
    return 0;
}

/// The argument is the address of the client's urb.
int MockedDevice::Discard(UMockdevIoctlData* argument)
{
    unsigned long address = 0;
    std::memcpy(&address, argument->data, sizeof address);
    const auto found =
        std::ranges::find_if(pending, [&](const auto& urb) { return urb->block->client_addr == address; });
    if (found == pending.end()) {
        return EINVAL;
    }
    Note("cancel");
    (*found)->Finish(-ENOENT, static_cast<size_t>((*found)->Record().actual_length));
    finished.push_back(std::move(*found));
    pending.erase(found);
    return 0;
}

void MockedDevice::Answer(Urb& urb, Fault happening)
{
    usbdevfs_urb& record = urb.Record();
    record.actual_length = 0;
    if (happening == Fault::RemovedInFlight) {
        urb.Finish(-ESHUTDOWN, 0);
    } else if (happening == Fault::Stall || halted.contains(record.endpoint)) {
        if (record.type == USBDEVFS_URB_TYPE_BULK) {
            halted.insert(record.endpoint);
        }
        urb.Finish(-EPIPE, 0);
    } else if (record.type == USBDEVFS_URB_TYPE_CONTROL) {
        if (happening == Fault::None) {
            AnswerControl(urb);
        }
    } else if ((record.endpoint & DirectionIn) != 0) {
        AnswerIn(urb, happening);
    } else {
        AnswerOut(urb, happening);
    }
}

/// A vendor request goes to the bridge; of the standard ones libusb needs the string descriptor.
void MockedDevice::AnswerControl(Urb& urb)
{
    const uint8_t* const setup = urb.Buffer();
    const uint8_t type = setup[0];
    const uint8_t request = setup[1];
    const auto value = static_cast<uint16_t>(setup[2] | setup[3] << 8);
    const auto language = static_cast<uint16_t>(setup[4] | setup[5] << 8);
    Note("control " + Hex(type) + " " + Hex(request) + " " + Hex(value));
    if ((type & RequestTypeMask) == VendorRequest) {
        const std::shared_ptr<J4Bench::TableUnit> table = Table();
        urb.Finish(table != nullptr ? StatusOf(table->GetBridge().Control(request, value)) : -ESHUTDOWN, 0);
        return;
    }
    if (request != GetDescriptor || value != (StringType << 8 | SerialIndex) || !traits.hasSerial ||
        (traits.needsLanguage && language == 0)) {
        urb.Finish(-EPIPE, 0);
        return;
    }
    const std::vector<uint8_t> descriptor =
        traits.serial ? *traits.serial : StringDescriptor(Table() != nullptr ? Table()->UsbSerial() : "");
    const size_t length = std::min(descriptor.size(), urb.Room() - SetupSize);
    std::copy_n(descriptor.begin(), length, urb.Buffer() + SetupSize);
    urb.Finish(0, length);
}

void MockedDevice::AnswerIn(Urb& urb, Fault happening)
{
    Note("in " + std::to_string(urb.Room()));
    std::vector<uint8_t> transfer;
    if (!deliveries.empty()) {
        transfer = std::move(deliveries.front());
        deliveries.pop_front();
    } else {
        if (characters.empty()) {
            const std::shared_ptr<J4Bench::TableUnit> table = Table();
            std::vector<uint8_t> read(urb.Room());
            size_t length = read.size();
            if (table == nullptr || table->GetBridge().Read(read.data(), length) != Bridge::Status::Done) {
                urb.Finish(-ESHUTDOWN, 0);
                return;
            }
            read.resize(length);
            characters = Unpacked(read);
        }
        const size_t limit = happening == Fault::Silence ? faultBytes : limitIn > 0 ? limitIn : characters.size();
        transfer = Packed(characters.substr(0, limit));
        characters.erase(0, limit);
        if (happening == Fault::Silence && limit == 0) {
            transfer.clear();
        }
    }
    const size_t length = std::min(transfer.size(), urb.Room());
    std::copy_n(transfer.begin(), length, urb.Buffer());
    if (happening == Fault::Silence) {
        urb.Record().actual_length = static_cast<int>(length);
    } else {
        urb.Finish(0, length);
    }
}

void MockedDevice::AnswerOut(Urb& urb, Fault happening)
{
    const size_t limit = happening == Fault::Silence ? faultBytes : limitOut > 0 ? limitOut : urb.Room();
    const std::string taken(reinterpret_cast<const char*>(urb.Buffer()), std::min(limit, urb.Room()));
    Note("out " + taken.substr(0, taken.find('\r')));
    const std::shared_ptr<J4Bench::TableUnit> table = Table();
    const int status = table != nullptr ? StatusOf(table->GetBridge().Write(taken)) : -ESHUTDOWN;
    if (happening == Fault::Silence) {
        urb.Record().actual_length = static_cast<int>(taken.size());
    } else {
        urb.Finish(status, status == 0 ? taken.size() : 0);
    }
}

std::shared_ptr<J4Bench::TableUnit> MockedDevice::Table() const
{
    return J4Bench::Bench::Instance().TableAt(traits.table);
}

}  // namespace J4Test
