// The texts of the driver's statuses.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

#include "usbio/CUsbIo.h"

namespace {

struct StatusText {
    uint32_t status;
    const char* text;
};

constexpr std::array<StatusText, 85> statusTexts = {{
    {0x00000000, "No error."},
    {0xE0000001, "HC Error: Wrong CRC."},
    {0xE0000002, "HC Error: Wrong bit stuffing."},
    {0xE0000003, "HC Error: Data toggle mismatch."},
    {0xE0000004, "HC Error: stall PID."},
    {0xE0000005, "HC Error: Device not responding."},
    {0xE0000006, "HC Error: PID check failed."},
    {0xE0000007, "HC Error: Unexpected PID."},
    {0xE0000008, "HC Error: Data Overrun."},
    {0xE0000009, "HC Error: Data Underrun."},
    {0xE000000A, "HC Error: Reserved1."},
    {0xE000000B, "HC Error: Reserved2."},
    {0xE000000C, "HC Error: Buffer Overrun."},
    {0xE000000D, "HC Error: Buffer Underrun."},
    {0xE000000F, "HC Error: Not accessed."},
    {0xE0000010, "HC Error: FIFO error."},
    {0xE0000011, "HC Error: XACT error."},
    {0xE0000012, "HC Error: Babble detected."},
    {0xE0000013, "HC Error: Data buffer error."},
    {0xE0000030, "USBD Error: Endpoint halted."},
    {0xE0000100, "USBD Error: No system memory."},
    {0xE0000200, "USBD Error: Invalid URB function."},
    {0xE0000300, "USBD Error: Invalid parameter."},
    {0xE0000400, "USBD Error: Busy."},
    {0xE0000500, "USBD Error: Request failed."},
    {0xE0000600, "USBD Error: Invalid pipe handle."},
    {0xE0000700, "USBD Error: No bandwidth available."},
    {0xE0000800, "USBD Error: Internal HC error."},
    {0xE0000900, "USBD Error: Short transfer."},
    {0xE0000A00, "USBD Error: Bad start frame."},
    {0xE0000B00, "USBD Error: Isochronous request failed."},
    {0xE0000C00, "USBD Error: Frame control owned."},
    {0xE0000D00, "USBD Error: Frame control not owned."},
    {0xE0000E00, "USBD Error: Not supported."},
    {0xE0000F00, "USBD Error: Invalid configuration descriptor."},
    {0xE8001000, "USBD Error: Insufficient resources."},
    {0xE0002000, "USBD Error: Set configuration failed."},
    {0xE0003000, "USBD Error: Buffer too small."},
    {0xE0004000, "USBD Error: Interface not found."},
    {0xE0005000, "USBD Error: Invalid pipe flags."},
    {0xE0006000, "USBD Error: Timeout."},
    {0xE0007000, "USBD Error: Device gone."},
    {0xE0008000, "USBD Error: Status not mapped."},
    {0xE0010000, "USBD Error: cancelled."},
    {0xE0020000, "USBD Error: ISO not accessed by hardware."},
    {0xE0030000, "USBD Error: ISO TD error."},
    {0xE0040000, "USBD Error: ISO NA late USB port."},
    {0xE0050000, "USBD Error: ISO not accessed, submitted too late."},
    {0xE0001000, "Operation failed."},
    {0xE0001001, "Input buffer too small."},
    {0xE0001002, "Output buffer too small."},
    {0xE0001003, "Out of memory."},
    {0xE0001004, "There are pending requests."},
    {0xE0001005, "USB device is already configured."},
    {0xE0001006, "USB device is not configured."},
    {0xE0001007, "There are open pipes."},
    {0xE0001008, "Either handle or pipe is already bound."},
    {0xE0001009, "Handle is not bound to a pipe."},
    {0xE000100A, "Device is removed."},
    {0xE000100B, "Control code is not supported."},
    {0xE000100C, "The request has been timed out."},
    {0xE000100D, "Invalid recipient."},
    {0xE000100E, "Invalid pipe type or invalid request type."},
    {0xE000100F, "Invalid I/O control code."},
    {0xE0001010, "Invalid direction of read/write operation."},
    {0xE0001011, "Too much ISO packets."},
    {0xE0001012, "Request pool empty."},
    {0xE0001013, "Pipe not found."},
    {0xE0001014, "Invalid ISO packet."},
    {0xE0001015, "Out of address space. Not enough system resources."},
    {0xE0001016, "Interface not found."},
    {0xE0001017, "Invalid device state (stopped or power down)."},
    {0xE0001018, "Invalid parameter."},
    {0xE000101A, "Power state not allowed. Set to D0 first."},
    {0xE000101B, "Device powered down."},
    {0xE000101C, "API Version does not match."},
    {0xE000101D, "Set configuration failed."},
    {0xE000101F, "Invalid process."},
    {0xE0001020, "The device is acquired by another process for exclusive use."},
    {0xE0001021, "A different process has opened the device."},
    {0xE0001100, "Device not found or acquired for exclusive use."},
    {0xE0001102, "Device not open."},
    {0xE0001104, "No such device instance."},
    {0xE0001105, "An invalid parameter was passed."},
    {0xE0001107, "The handle is already opened."},
}};

}  // namespace

char* CUsbIo::ErrorText(char* buffer, uint32_t size, uint32_t status)
{
    if (buffer == nullptr || size == 0) {
        return buffer;
    }
    const auto found = std::find_if(statusTexts.begin(), statusTexts.end(),
                                    [status](const StatusText& entry) { return entry.status == status; });
    const char* text = found != statusTexts.end() ? found->text : "Windows system error code.";
    std::snprintf(buffer, size, "Error code 0x%08X: %s", status, text);
    buffer[size - 1] = '\0';
    return buffer;
}
