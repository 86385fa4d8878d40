// The USB device of a table on the bench, as the library's serial channel sees it.
#pragma once

#include <memory>
#include <string>

#include "src/SerialUSB/Usb.h"
#include "src/SerialUSB/UsbLines.h"

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

class VirtualUsb : public Usb {
public:
    /// @param lines  of the bench; must last
    explicit VirtualUsb(UsbLines& lines) : lines(lines) {}

    void Scan(unsigned short& count) override;
    void Open(unsigned short index) override;
    void Close() override;
    void DeviceIo(unsigned char request, unsigned short value, unsigned short index, bool in, void* buffer,
                  short length) override;
    void Read(short pipe, void* buffer, unsigned long* length) override;
    void Write(short pipe, const void* data, unsigned long length) override;
    void Abort(short pipe) override;
    void GetSerialNumber(char* serial) override;

private:
    /// The line of the open table, held for the length of one operation.
    /// @throws CommunicationException when nothing is open or the table is gone from the bench
    std::shared_ptr<UsbLine> Line(const char* label) const;

    UsbLines& lines;
    std::weak_ptr<UsbLine> line;
    std::string serialNumber;
    bool isOpen = false;
};

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
