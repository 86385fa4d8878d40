#include "src/SerialUSB/Virtual/VirtualUsb.h"

#include <string>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

namespace {

// Statuses of the USB driver, in the words that an application reads with the real device.
constexpr const char* Stalled = "Error code 0xE0000004: HC Error: stall PID.";
constexpr const char* Removed = "Error code 0xE000100A: Device is removed.";
constexpr const char* NotOpen = "Error code 0xE0001102: Device not open.";

[[noreturn]] void ThrowUsbError(const char* label, const char* status)
{
    throw CommunicationException(std::string("Error in UsbIo function: \"") + label + "\" Error: " + status);
}

void ThrowIfUsbError(UsbLine::Status status, const char* label)
{
    if (status != UsbLine::Status::Done) {
        ThrowUsbError(label, status == UsbLine::Status::Removed ? Removed : Stalled);
    }
}

}  // namespace

std::shared_ptr<UsbLine> VirtualUsb::Line(const char* label) const
{
    if (!isOpen) {
        ThrowUsbError(label, NotOpen);
    }
    std::shared_ptr<UsbLine> open = line.lock();
    if (open == nullptr) {
        ThrowUsbError(label, Removed);
    }
    return open;
}

void VirtualUsb::Scan(unsigned short& count)
try {
    const size_t found = lines.LineCount();
    if (found == 0) {
        throw CommunicationException("No device connected.");
    }
    count = static_cast<unsigned short>(found);
}
J4T_TRACE_FRAME

void VirtualUsb::Open(unsigned short index)
try {
    if (const std::string refusal = lines.Refusal(); !refusal.empty()) {
        throw CommunicationException(refusal);
    }
    std::string serial;
    const std::shared_ptr<UsbLine> found = lines.LineAt(index, serial);
    if (isOpen || found == nullptr || found->Probe() != UsbLine::Status::Done) {
        throw CommunicationException("No device connected.");
    }
    line = found;
    serialNumber = serial;
    isOpen = true;
    found->Note("open " + std::to_string(index));
}
J4T_TRACE_FRAME

void VirtualUsb::Close()
try {
    if (const std::shared_ptr<UsbLine> open = line.lock()) {
        open->Note("close");
    }
    line.reset();
    isOpen = false;
}
J4T_TRACE_FRAME

void VirtualUsb::DeviceIo(unsigned char request, unsigned short value, unsigned short, bool in, void*, short)
try {
    const char* const label = in ? "ClassOrVendorInRequest" : "ClassOrVendorOutRequest";
    const std::shared_ptr<UsbLine> open = Line(label);
    ThrowIfUsbError(in ? UsbLine::Status::Stalled : open->Control(request, value), label);
}
J4T_TRACE_FRAME

void VirtualUsb::Read(short, void* buffer, unsigned long* length)
try {
    size_t received = *length;
    *length = 0;
    const std::shared_ptr<UsbLine> open = Line("ReadSync");
    ThrowIfUsbError(open->Read(static_cast<uint8_t*>(buffer), received), "ReadSync");
    *length = static_cast<unsigned long>(received);
}
J4T_TRACE_FRAME

void VirtualUsb::Write(short, const void* data, unsigned long length)
try {
    const std::shared_ptr<UsbLine> open = Line("WriteSync");
    ThrowIfUsbError(open->Write({static_cast<const char*>(data), length}), "WriteSync");
}
J4T_TRACE_FRAME

// Transfers on the bench are over when they return, so there is never one to abort.
void VirtualUsb::Abort(short) {}

void VirtualUsb::GetSerialNumber(char* serial)
try {
    ThrowIfUsbError(Line("GetDeviceDescriptor")->Probe(), "GetDeviceDescriptor");
    const size_t length = serialNumber.copy(serial, SerialNumberSize - 1);
    serial[length] = '\0';
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
