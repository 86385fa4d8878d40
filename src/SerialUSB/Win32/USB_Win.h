// The table's USB device on Windows, through the USBIO kernel driver: one configuration, one interface, one
// bulk pipe in each direction.
#pragma once

#include <cstdint>

#include "Utilities/Tools/SmartPointer.h"
#include "src/SerialUSB/Usb.h"
#include "usbio/CUsbIo.h"
#include "usbio/CUsbIoPipe.h"

namespace Kestrelon::DeviceDriver::J4T::LowLevel::Win32 {

/// The driver tells tables by its interface GUID alone; vendor and product id are kept and not compared.
class UsbWin : public Usb {
public:
    /// Opens nothing yet.
    UsbWin(uint32_t vendorId, uint32_t productId);

    void Scan(unsigned short& count) override;
    void Open(unsigned short index) override;
    void Close() override;
    void DeviceIo(unsigned char request, unsigned short value, unsigned short index, bool in, void* buffer,
                  short length) override;
    /// The pipe number is ignored, in Write too.
    void Read(short pipe, void* buffer, unsigned long* length) override;
    void Write(short pipe, const void* data, unsigned long length) override;
    void Abort(short pipe) override;
    void GetSerialNumber(char* serial) override;

private:
    uint32_t vendorId;
    uint32_t productId;
    Utilities::Tools::SmartPointer<CUsbIo> device;
    Utilities::Tools::SmartPointer<CUsbIoPipe> outPipe;
    Utilities::Tools::SmartPointer<CUsbIoPipe> inPipe;
};

/// Throws a CommunicationException with the label of the driver call and the text of its status; does
/// nothing for status 0.
void ThrowIfUsbIoError(uint32_t status, const CUsbIo& device, const char* label);

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel::Win32
