#include "simulator/faces/VirtualUsb.h"

#include <string>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "simulator/world/Bench.h"
#include "src/SerialUSB/UsbFactory.h"

namespace J4Bench {

namespace {

// Statuses of the USB driver, in the words that an application reads with the real device.
constexpr const char* Stalled = "Error code 0xE0000004: HC Error: stall PID.";
constexpr const char* Removed = "Error code 0xE000100A: Device is removed.";
constexpr const char* NotOpen = "Error code 0xE0001102: Device not open.";

[[noreturn]] void ThrowUsbError(const char* label, const char* status)
{
    throw CommunicationException(std::string("Error in UsbIo function: \"") + label + "\" Error: " + status);
}

void ThrowIfUsbError(Bridge::Status status, const char* label)
{
    if (status != Bridge::Status::Done) {
        ThrowUsbError(label, status == Bridge::Status::Removed ? Removed : Stalled);
    }
}

}  // namespace

std::shared_ptr<TableUnit> VirtualUsb::Table(const char* label) const
{
    if (!isOpen) {
        ThrowUsbError(label, NotOpen);
    }
    std::shared_ptr<TableUnit> open = table.lock();
    if (open == nullptr) {
        ThrowUsbError(label, Removed);
    }
    return open;
}

void VirtualUsb::Scan(unsigned short& count)
try {
    Bench& bench = Bench::Instance();
    if (bench.TableCount() == 0 || bench.GetFaults().tableUnplugged) {
        throw CommunicationException("No device connected.");
    }
    count = static_cast<unsigned short>(bench.TableCount());
}
J4T_TRACE_FRAME

void VirtualUsb::Open(unsigned short index)
try {
    std::shared_ptr<TableUnit> found = Bench::Instance().TableAt(index);
    if (isOpen || found == nullptr || found->GetBridge().Probe() != Bridge::Status::Done) {
        throw CommunicationException("No device connected.");
    }
    table = found;
    isOpen = true;
    found->GetBridge().Note("usb open " + std::to_string(index));
}
J4T_TRACE_FRAME

void VirtualUsb::Close()
try {
    if (const std::shared_ptr<TableUnit> open = table.lock()) {
        open->GetBridge().Note("usb close");
    }
    table.reset();
    isOpen = false;
}
J4T_TRACE_FRAME

void VirtualUsb::DeviceIo(unsigned char request, unsigned short value, unsigned short, bool in, void*, short)
try {
    const char* const label = in ? "ClassOrVendorInRequest" : "ClassOrVendorOutRequest";
    const std::shared_ptr<TableUnit> open = Table(label);
    ThrowIfUsbError(in ? Bridge::Status::Stalled : open->GetBridge().Control(request, value), label);
}
J4T_TRACE_FRAME

void VirtualUsb::Read(short, void* buffer, unsigned long* length)
try {
    size_t received = *length;
    *length = 0;
    const std::shared_ptr<TableUnit> open = Table("ReadSync");
    ThrowIfUsbError(open->GetBridge().Read(static_cast<uint8_t*>(buffer), received), "ReadSync");
    *length = static_cast<unsigned long>(received);
}
J4T_TRACE_FRAME

void VirtualUsb::Write(short, const void* data, unsigned long length)
try {
    const std::shared_ptr<TableUnit> open = Table("WriteSync");
    ThrowIfUsbError(open->GetBridge().Write({static_cast<const char*>(data), length}), "WriteSync");
}
J4T_TRACE_FRAME

// Transfers on the bench are over when they return, so there is never one to abort.
void VirtualUsb::Abort(short) {}

void VirtualUsb::GetSerialNumber(char* serial)
try {
    const std::shared_ptr<TableUnit> open = Table("GetDeviceDescriptor");
    ThrowIfUsbError(open->GetBridge().Probe(), "GetDeviceDescriptor");
    const size_t length = open->UsbSerial().copy(serial, SerialNumberSize - 1);
    serial[length] = '\0';
}
J4T_TRACE_FRAME

}  // namespace J4Bench

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

Utilities::Tools::SmartPointer<Usb> CreateUsb(uint32_t, uint32_t)
{
    return Utilities::Tools::SmartPointer<Usb>(new J4Bench::VirtualUsb);
}

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
