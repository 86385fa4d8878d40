#include "src/SerialUSB/Libusb/UsbLibusb.h"

#include <libusb.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/Clock.h"
#include "src/SerialUSB/SerialNumberText.h"
#include "src/SerialUSB/SystemUsb.h"
#include "src/SerialUSB/UsbBridge.h"

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

namespace Libusb {

namespace {

using UsbBridge::EndpointIn;
using UsbBridge::EndpointOut;

constexpr int TableInterface = 0;
constexpr unsigned long MaximumTransferSize = UsbBridge::LargestTransfer;
constexpr unsigned TransferTimeout = 1000;  ///< ms
constexpr int LongestPortPath = 7;          ///< tiers below the root, by the USB standard
constexpr std::size_t LongestStringDescriptor = 255;

// Languages of a string descriptor. Some devices stall on the first.
constexpr uint16_t AnyLanguage = 0;
constexpr uint16_t EnglishLanguage = 0x0409;

/// Where a device is plugged in.
std::vector<uint8_t> Place(libusb_device* device)
{
    std::vector<uint8_t> place(1 + LongestPortPath);
    place[0] = libusb_get_bus_number(device);
    const int depth = libusb_get_port_numbers(device, place.data() + 1, LongestPortPath);
    place.resize(1 + static_cast<std::size_t>(std::max(depth, 0)));
    return place;
}

}  // namespace

void ThrowIfLibusbError(int status, const char* label)
try {
    if (status < 0) {
        std::string text = std::string("Error in UsbIo function: \"") + label +
                           "\" Error: " + libusb_error_name(status) + ": " +
                           libusb_strerror(static_cast<libusb_error>(status)) + ".";
        if (status == LIBUSB_ERROR_ACCESS) {
            text +=
                " The user may not use the table: install the udev rule 70-j4tavla.rules and plug the table in again.";
        }
        throw CommunicationException(text);
    }
}
J4T_TRACE_FRAME

void UsbLibusb::ContextRelease::operator()(libusb_context* context) const { libusb_exit(context); }

void UsbLibusb::HandleRelease::operator()(libusb_device_handle* handle) const { libusb_close(handle); }

void UsbLibusb::DeviceRelease::operator()(libusb_device* device) const { libusb_unref_device(device); }

UsbLibusb::UsbLibusb(uint32_t vendorId, uint32_t productId)
    : vendorId(vendorId), productId(productId), maker(::getpid())
{}

UsbLibusb::~UsbLibusb()
{
    if (!IsOwnProcess()) {
        // To give them back here would end the parent's: the files below libusb are shared, its thread is not.
        static_cast<void>(handle.release());
        static_cast<void>(context.release());
    }
}

bool UsbLibusb::IsOwnProcess() const { return ::getpid() == maker; }

bool UsbLibusb::IsOpen() const { return handle != nullptr && IsOwnProcess(); }

void UsbLibusb::StartLibusb()
{
    if (!IsOwnProcess()) {
        ThrowIfLibusbError(LIBUSB_ERROR_NO_DEVICE, "libusb_init");
    }
    if (context == nullptr) {
        libusb_context* started = nullptr;
        ThrowIfLibusbError(libusb_init(&started), "libusb_init");
        context.reset(started);
    }
}

std::vector<UsbLibusb::Device> UsbLibusb::FindTables()
{
    StartLibusb();
    libusb_device** list = nullptr;
    const ssize_t count = libusb_get_device_list(context.get(), &list);
    ThrowIfLibusbError(static_cast<int>(std::min<ssize_t>(count, 0)), "libusb_get_device_list");
    const auto freeList = [](libusb_device** devices) { libusb_free_device_list(devices, 1); };
    const std::unique_ptr<libusb_device*, decltype(freeList)> listOwner(list, freeList);
    std::vector<Device> tables;
    for (ssize_t i = 0; i < count; ++i) {
        libusb_device_descriptor descriptor{};
        if (libusb_get_device_descriptor(list[i], &descriptor) == LIBUSB_SUCCESS && descriptor.idVendor == vendorId &&
            descriptor.idProduct == productId) {
            tables.emplace_back(libusb_ref_device(list[i]));
        }
    }
    std::sort(tables.begin(), tables.end(),
              [](const Device& a, const Device& b) { return Place(a.get()) < Place(b.get()); });
    return tables;
}

void UsbLibusb::Scan(unsigned short& count)
try {
    const std::vector<Device> tables = FindTables();
    if (tables.empty()) {
        throw CommunicationException("No device connected.");
    }
    count = static_cast<unsigned short>(tables.size());
}
J4T_TRACE_FRAME

void UsbLibusb::Open(unsigned short index)
try {
    const std::vector<Device> tables = FindTables();
    if (index >= tables.size()) {
        throw CommunicationException("No device connected.");
    }
    Handle opened = OpenHandle(tables[index].get());
    // Not every system lets drivers be detached; where one is in the way, claiming fails with its own text.
    libusb_set_auto_detach_kernel_driver(opened.get(), 1);
    SetConfiguration(opened.get());
    ThrowIfLibusbError(libusb_claim_interface(opened.get(), TableInterface), "libusb_claim_interface");
    ThrowIfLibusbError(libusb_clear_halt(opened.get(), EndpointOut), "libusb_clear_halt");
    ThrowIfLibusbError(libusb_clear_halt(opened.get(), EndpointIn), "libusb_clear_halt");
    handle = std::move(opened);
}
J4T_TRACE_FRAME

UsbLibusb::Handle UsbLibusb::OpenHandle(libusb_device* device)
{
    libusb_device_handle* opened = nullptr;
    ThrowIfLibusbError(libusb_open(device, &opened), "libusb_open");
    return Handle(opened);
}

/// Chooses the device's first configuration, unless it is the one in force: setting it again would reset the
/// device.
void UsbLibusb::SetConfiguration(libusb_device_handle* handle)
{
    libusb_config_descriptor* first = nullptr;
    ThrowIfLibusbError(libusb_get_config_descriptor(libusb_get_device(handle), 0, &first),
                       "libusb_get_config_descriptor");
    const int wanted = first->bConfigurationValue;
    libusb_free_config_descriptor(first);
    int current = 0;
    ThrowIfLibusbError(libusb_get_configuration(handle, &current), "libusb_get_configuration");
    if (current != wanted) {
        ThrowIfLibusbError(libusb_set_configuration(handle, wanted), "libusb_set_configuration");
    }
}

void UsbLibusb::Close()
{
    Abort(PipeDevice);
    Abort(PipeIn);
    Abort(PipeOut);
    if (IsOpen()) {
        // Gives the kernel's driver its interface back; a device that has gone has nothing to release.
        libusb_release_interface(handle.get(), TableInterface);
        handle.reset();
    }
}

libusb_device_handle* UsbLibusb::OpenedHandle(const char* label) const
{
    if (!IsOpen()) {
        ThrowIfLibusbError(LIBUSB_ERROR_NO_DEVICE, label);
    }
    return handle.get();
}

void UsbLibusb::DeviceIo(unsigned char request, unsigned short value, unsigned short index, bool in, void* buffer,
                         short length)
try {
    const char* const label = "libusb_control_transfer";
    const int direction = in ? LIBUSB_ENDPOINT_IN : LIBUSB_ENDPOINT_OUT;
    const uint8_t type = static_cast<uint8_t>(direction | LIBUSB_REQUEST_TYPE_VENDOR | LIBUSB_RECIPIENT_DEVICE);
    ThrowIfLibusbError(
        libusb_control_transfer(OpenedHandle(label), type, request, value, index, static_cast<unsigned char*>(buffer),
                                static_cast<uint16_t>(length), TransferTimeout),
        label);
}
J4T_TRACE_FRAME

/// After a stall the pipe is made usable for the next call before the failure is told.
void UsbLibusb::ThrowIfTransferError(int status, const char* label, unsigned char endpoint)
{
    if (status == LIBUSB_ERROR_PIPE) {
        libusb_clear_halt(handle.get(), endpoint);
    }
    ThrowIfLibusbError(status, label);
}

void UsbLibusb::Read(short, void* buffer, unsigned long* length)
try {
    const char* const label = "libusb_bulk_transfer(in)";
    const int room = static_cast<int>(std::min(*length, MaximumTransferSize));
    int received = 0;
    *length = 0;
    const int status = libusb_bulk_transfer(OpenedHandle(label), EndpointIn, static_cast<unsigned char*>(buffer), room,
                                            &received, TransferTimeout);
    *length = static_cast<unsigned long>(std::clamp(received, 0, room));
    if (status != LIBUSB_ERROR_TIMEOUT || received <= 0) {
        ThrowIfTransferError(status, label, EndpointIn);
    }
    if (*length <= UsbBridge::StatusSize) {
        PaceIdlePacket();
    }
}
J4T_TRACE_FRAME

/// The layers above measure time in idle packets. A program that had the table before may have left the bridge with an
/// interval of 1 ms, and it keeps that until it is plugged out: a time-out would come after a sixteenth of its time.
/// Meanwhile the bridge's own buffer takes what comes: at most 93 characters.
void UsbLibusb::PaceIdlePacket()
{
    using namespace Utilities::Tools;
    if (lastIdlePacket) {
        const uint32_t passed = Clock::GetTickCount() - *lastIdlePacket;
        if (passed < UsbBridge::UsualLatency) {
            Clock::Sleep(UsbBridge::UsualLatency - passed);
        }
    }
    lastIdlePacket = Clock::GetTickCount();
}

void UsbLibusb::Write(short, const void* data, unsigned long length)
try {
    const char* const label = "libusb_bulk_transfer(out)";
    unsigned char* next = static_cast<unsigned char*>(const_cast<void*>(data));
    while (length > 0) {
        const int piece = static_cast<int>(std::min(length, MaximumTransferSize));
        int sent = 0;
        ThrowIfTransferError(
            libusb_bulk_transfer(OpenedHandle(label), EndpointOut, next, piece, &sent, TransferTimeout), label,
            EndpointOut);
        if (sent <= 0 || sent > piece) {
            ThrowIfLibusbError(LIBUSB_ERROR_IO, label);
        }
        next += sent;
        length -= static_cast<unsigned long>(sent);
    }
}
J4T_TRACE_FRAME

void UsbLibusb::Abort(short pipe)
{
    // Transfers are synchronous: there is never one to abort on the two pipes.
    if (pipe == PipeDevice && IsOpen()) {
        libusb_reset_device(handle.get());
    }
}

void UsbLibusb::GetSerialNumber(char* serial)
try {
    const char* const label = "libusb_get_string_descriptor";
    libusb_device_handle* const opened = OpenedHandle(label);
    serial[0] = '\0';
    libusb_device_descriptor descriptor{};
    ThrowIfLibusbError(libusb_get_device_descriptor(libusb_get_device(opened), &descriptor),
                       "libusb_get_device_descriptor");
    if (descriptor.iSerialNumber == 0) {
        return;
    }
    std::array<uint8_t, LongestStringDescriptor> text{};
    int size = LIBUSB_ERROR_PIPE;
    for (const uint16_t language : {AnyLanguage, EnglishLanguage}) {
        if (size == LIBUSB_ERROR_PIPE) {
            size = libusb_get_string_descriptor(opened, descriptor.iSerialNumber, language, text.data(), text.size());
        }
    }
    ThrowIfLibusbError(size, label);
    SerialNumberFromDescriptor(text.data(), std::min<std::size_t>(static_cast<std::size_t>(size), text.size()), serial);
}
J4T_TRACE_FRAME

}  // namespace Libusb

Utilities::Tools::SmartPointer<Usb> CreateSystemUsb(uint32_t vendorId, uint32_t productId)
{
    return Utilities::Tools::SmartPointer<Usb>(new Libusb::UsbLibusb(vendorId, productId));
}

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
