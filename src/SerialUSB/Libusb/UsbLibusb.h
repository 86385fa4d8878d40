// The table's USB device on Linux, through libusb-1.0. Transfers are synchronous: no thread is started, and
// nothing is pending between two calls. It belongs to the process that made it: in the child of a fork it does nothing
// to device and libusb, which are the parent's.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "src/SerialUSB/Usb.h"

struct libusb_context;
struct libusb_device;
struct libusb_device_handle;

namespace Kestrelon::DeviceDriver::J4T::LowLevel::Libusb {

class UsbLibusb : public Usb {
public:
    /// Opens nothing yet, and does not touch libusb.
    UsbLibusb(uint32_t vendorId, uint32_t productId);
    ~UsbLibusb() override;

    /// Tables are counted in the order of their bus, then their port path, so that a table keeps its number
    /// as long as it keeps its socket.
    void Scan(unsigned short& count) override;
    void Open(unsigned short index) override;
    void Close() override;
    void DeviceIo(unsigned char request, unsigned short value, unsigned short index, bool in, void* buffer,
                  short length) override;
    /// A time-out with nothing received is a failure; what was received before one is a success. Packets without
    /// payload are at least 16 milliseconds apart.
    void Read(short pipe, void* buffer, unsigned long* length) override;
    void Write(short pipe, const void* data, unsigned long length) override;
    void Abort(short pipe) override;
    void GetSerialNumber(char* serial) override;

private:
    struct ContextRelease {
        void operator()(libusb_context* context) const;
    };
    struct HandleRelease {
        void operator()(libusb_device_handle* handle) const;
    };
    struct DeviceRelease {
        void operator()(libusb_device* device) const;
    };
    using Device = std::unique_ptr<libusb_device, DeviceRelease>;
    using Handle = std::unique_ptr<libusb_device_handle, HandleRelease>;

    void StartLibusb();
    std::vector<Device> FindTables();
    static Handle OpenHandle(libusb_device* device);
    static void SetConfiguration(libusb_device_handle* handle);
    bool IsOwnProcess() const;
    bool IsOpen() const;
    libusb_device_handle* OpenedHandle(const char* label) const;
    void PaceIdlePacket();
    void ThrowIfTransferError(int status, const char* label, unsigned char endpoint);

    uint32_t vendorId;
    uint32_t productId;
    pid_t maker;
    std::unique_ptr<libusb_context, ContextRelease> context;
    Handle handle;
    std::optional<uint32_t> lastIdlePacket;  ///< tick
};

/// Throws a CommunicationException with the label of the libusb call, and libusb's name and description of
/// the error; does nothing for a status that is no error.
void ThrowIfLibusbError(int status, const char* label);

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel::Libusb
