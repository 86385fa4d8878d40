// The table's USB device as the serial channel needs it: open, vendor request, bulk transfers, serial
// number. Each platform implements it once, in a folder of its own beside this file.
#pragma once

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

class Usb {
public:
    /// Numbers by which Read, Write and Abort name what they act on.
    static constexpr short PipeDevice = 0;
    static constexpr short PipeIn = 1;
    static constexpr short PipeOut = 2;

    virtual ~Usb() = default;

    /// Counts the tables that can be opened. @throws CommunicationException when there is none
    virtual void Scan(unsigned short& count) = 0;

    /// Opens table number index (from 0), with configuration set and both pipes bound and reset.
    virtual void Open(unsigned short index) = 0;

    /// Ends all pending transfers and closes everything; works also on a device that has gone.
    virtual void Close() = 0;

    /// One vendor request to the device.
    /// @param in  true for device-to-host; false sends length bytes of buffer
    virtual void DeviceIo(unsigned char request, unsigned short value, unsigned short index, bool in, void* buffer,
                          short length) = 0;

    /// One bulk IN transfer that ends within about 1000 milliseconds.
    /// @param length  in: room in buffer, at most 131072 bytes; out: bytes received, the bridge's status
    ///                bytes included
    virtual void Read(short pipe, void* buffer, unsigned long* length) = 0;

    /// One bulk OUT transfer that ends within about 1000 milliseconds.
    virtual void Write(short pipe, const void* data, unsigned long length) = 0;

    /// Resets the device (0) or aborts a pipe (1, 2); any other number does nothing. Never fails.
    virtual void Abort(short pipe) = 0;

    /// Writes the serial number as a zero-terminated text, empty when the device has none.
    /// @param serial  room for SerialNumberSize bytes, which is never exceeded
    virtual void GetSerialNumber(char* serial) = 0;

    static constexpr unsigned SerialNumberSize = 128;

    Usb() = default;
    Usb(const Usb&) = delete;
    Usb& operator=(const Usb&) = delete;
};

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
