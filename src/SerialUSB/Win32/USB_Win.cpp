#include "src/SerialUSB/Win32/USB_Win.h"

#include <array>
#include <cstddef>
#include <string>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "src/SerialUSB/SerialNumberText.h"
#include "src/SerialUSB/SystemUsb.h"
#include "src/SerialUSB/UsbBridge.h"

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

namespace Win32 {

using Utilities::Tools::SmartPointer;

namespace {

/// The driver's device interface of the table.
constexpr GUID interfaceGuid = {0xBAA97E70, 0xAFF9, 0x483F, {0xB4, 0x25, 0x67, 0x90, 0xB6, 0x2C, 0x7F, 0x5A}};

constexpr uint32_t TransferTimeout = 1000;  ///< ms
constexpr std::size_t StringDescriptorRoom = 516;

/// The present devices, for the time of one operation.
class DeviceList {
public:
    DeviceList() : list(CUsbIo::CreateDeviceList(&interfaceGuid))
    {
        if (list == nullptr) {
            throw CommunicationException("Unable to create device list");
        }
    }
    ~DeviceList() { CUsbIo::DestroyDeviceList(list); }
    DeviceList(const DeviceList&) = delete;
    DeviceList& operator=(const DeviceList&) = delete;

    HDEVINFO Get() const { return list; }

private:
    HDEVINFO list;
};

}  // namespace

void ThrowIfUsbIoError(uint32_t status, const CUsbIo&, const char* label)
try {
    if (status != UsbIo::StatusSuccess) {
        std::array<char, 1024> text{};
        throw CommunicationException(std::string("Error in UsbIo function: \"") + label +
                                     "\" Error: " + CUsbIo::ErrorText(text.data(), text.size(), status));
    }
}
J4T_TRACE_FRAME

UsbWin::UsbWin(uint32_t vendorId, uint32_t productId)
try : vendorId(vendorId), productId(productId), device(new CUsbIo()), outPipe(new CUsbIoPipe()),
    inPipe(new CUsbIoPipe()) {
}
J4T_TRACE_FRAME

void UsbWin::Scan(unsigned short& count)
try {
    CUsbIo finder;
    const DeviceList list;
    unsigned short found = 0;
    while (finder.GetDeviceInstanceDetails(found, list.Get(), &interfaceGuid) == UsbIo::StatusSuccess) {
        ++found;
    }
    if (found == 0) {
        throw CommunicationException("No device connected.");
    }
    count = found;
}
J4T_TRACE_FRAME

void UsbWin::Open(unsigned short index)
try {
    const DeviceList list;
    if (device->Open(index, list.Get(), &interfaceGuid) != UsbIo::StatusSuccess) {
        throw CommunicationException("No device connected.");
    }
    ThrowIfUsbIoError(device->UnconfigureDevice(), *device, "UnconfigureDevice");
    UsbIo::Configuration configuration{};
    configuration.configurationIndex = 0;
    configuration.numberOfInterfaces = 1;
    configuration.interfaces[0] = UsbIo::InterfaceSetting{0, 0, UsbBridge::LargestTransfer};
    ThrowIfUsbIoError(device->SetConfiguration(configuration), *device, "SetConfiguration");
    UsbIo::DeviceParameters parameters{};
    ThrowIfUsbIoError(device->GetDeviceParameters(parameters), *device, "GetDeviceParameters");
    parameters.requestTimeout = 0;
    // A failure is told under the name of the request before it.
    ThrowIfUsbIoError(device->SetDeviceParameters(parameters), *device, "GetDeviceParameters");
    ThrowIfUsbIoError(outPipe->Bind(index, UsbBridge::EndpointOut, list.Get(), &interfaceGuid), *device, "Bind(out)");
    ThrowIfUsbIoError(inPipe->Bind(index, UsbBridge::EndpointIn, list.Get(), &interfaceGuid), *device, "Bind(in)");
    ThrowIfUsbIoError(outPipe->ResetPipe(), *device, "Reset(out)");
    ThrowIfUsbIoError(inPipe->ResetPipe(), *device, "Reset(in)");
}
J4T_TRACE_FRAME

void UsbWin::Close()
try {
    Abort(PipeDevice);
    Abort(PipeIn);
    Abort(PipeOut);
    inPipe->Close();
    outPipe->Close();
    device->Close();
}
J4T_TRACE_FRAME

void UsbWin::DeviceIo(unsigned char request, unsigned short value, unsigned short index, bool in, void* buffer,
                      short length)
try {
    const UsbIo::ClassOrVendorRequest record{0, UsbIo::TypeVendor, UsbIo::RecipientDevice, 0, request, value, index};
    uint32_t byteCount = static_cast<uint32_t>(static_cast<int32_t>(length));
    if (in) {
        ThrowIfUsbIoError(device->ClassOrVendorInRequest(buffer, byteCount, record), *device, "ClassOrVendorInRequest");
    } else {
        ThrowIfUsbIoError(device->ClassOrVendorOutRequest(buffer, byteCount, record), *device,
                          "ClassOrVendorOutRequest");
    }
}
J4T_TRACE_FRAME

void UsbWin::Read(short, void* buffer, unsigned long* length)
try {
    uint32_t byteCount = static_cast<uint32_t>(*length);
    const uint32_t status = inPipe->ReadSync(buffer, byteCount, TransferTimeout);
    *length = byteCount;
    ThrowIfUsbIoError(status, *inPipe, "ReadSync");
}
J4T_TRACE_FRAME

void UsbWin::Write(short, const void* data, unsigned long length)
try {
    uint32_t byteCount = static_cast<uint32_t>(length);
    ThrowIfUsbIoError(outPipe->WriteSync(data, byteCount, TransferTimeout), *outPipe, "WriteSync");
}
J4T_TRACE_FRAME

void UsbWin::Abort(short pipe)
try {
    // The statuses are not looked at: a device that has gone can still be closed.
    switch (pipe) {
    case PipeDevice:
        device->ResetDevice();
        break;
    case PipeIn:
        inPipe->AbortPipe();
        break;
    case PipeOut:
        outPipe->AbortPipe();
        break;
    default:
        break;
    }
}
J4T_TRACE_FRAME

void UsbWin::GetSerialNumber(char* serial)
try {
    std::array<uint8_t, StringDescriptorRoom> text{};
    UsbIo::DeviceDescriptor descriptor{};
    ThrowIfUsbIoError(device->GetDeviceDescriptor(descriptor), *device, "GetDeviceDescriptor");
    serial[0] = '\0';
    if (descriptor.iSerialNumber == 0) {
        return;
    }
    uint32_t length = text.size();
    ThrowIfUsbIoError(device->GetStringDescriptor(text.data(), length, descriptor.iSerialNumber, 0), *device,
                      "GetStringDescriptor");
    SerialNumberFromDescriptor(text.data(), text.size(), serial);
}
J4T_TRACE_FRAME

}  // namespace Win32

Utilities::Tools::SmartPointer<Usb> CreateSystemUsb(uint32_t vendorId, uint32_t productId)
{
    return Utilities::Tools::SmartPointer<Usb>(new Win32::UsbWin(vendorId, productId));
}

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
