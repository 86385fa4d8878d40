// A second handle of a device, bound to one endpoint, for bulk reads and writes. A read and a write may run
// at the same time on their two pipes.
#pragma once

#include <cstdint>

#include "usbio/CUsbIo.h"

class CUsbIoPipe : public CUsbIo {
public:
    /// Opens the device unless it is open, and binds the handle to the endpoint.
    uint32_t Bind(int number, uint8_t endpoint, HDEVINFO list, const GUID* guid);
    uint32_t ResetPipe();
    uint32_t AbortPipe();

    /// One bulk transfer, to its end. A transfer that is late is cancelled and gives StatusTimeout.
    /// @param length   in: size of the buffer; out: bytes transferred, also after a time-out
    /// @param timeout  ms
    uint32_t ReadSync(void* buffer, uint32_t& length, uint32_t timeout);
    uint32_t WriteSync(const void* buffer, uint32_t& length, uint32_t timeout);

private:
    template <class Start>
    uint32_t Transfer(uint32_t& length, uint32_t timeout, Start start);
};
