#include "usbio/CUsbIoPipe.h"

#include <algorithm>
#include <cstdint>

uint32_t CUsbIoPipe::Bind(int number, uint8_t endpoint, HDEVINFO list, const GUID* guid)
{
    if (!IsOpen()) {
        const uint32_t status = Open(number, list, guid);
        if (status != UsbIo::StatusSuccess) {
            return status;
        }
    }
    return Control(UsbIo::ControlBind, &endpoint, sizeof(endpoint), nullptr, 0, nullptr);
}

uint32_t CUsbIoPipe::ResetPipe() { return Control(UsbIo::ControlResetPipe, nullptr, 0, nullptr, 0, nullptr); }

uint32_t CUsbIoPipe::AbortPipe() { return Control(UsbIo::ControlAbortPipe, nullptr, 0, nullptr, 0, nullptr); }

uint32_t CUsbIoPipe::ReadSync(void* buffer, uint32_t& length, uint32_t timeout)
{
    return Transfer(length, timeout, [this, buffer](DWORD size, DWORD* transferred, OVERLAPPED* transfer) {
        return ReadFile(File(), buffer, size, transferred, transfer);
    });
}

uint32_t CUsbIoPipe::WriteSync(const void* buffer, uint32_t& length, uint32_t timeout)
{
    return Transfer(length, timeout, [this, buffer](DWORD size, DWORD* transferred, OVERLAPPED* transfer) {
        return WriteFile(File(), buffer, size, transferred, transfer);
    });
}

template <class Start>
uint32_t CUsbIoPipe::Transfer(uint32_t& length, uint32_t timeout, Start start)
{
    const uint32_t size = length;
    length = 0;
    OVERLAPPED transfer{};
    transfer.hEvent = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    if (transfer.hEvent == nullptr) {
        return UsbIo::StatusNoMemory;
    }
    DWORD transferred = 0;
    uint32_t status = UsbIo::StatusSuccess;
    if (!start(size, &transferred, &transfer)) {
        status = LastError();
        if (status == ERROR_IO_PENDING) {
            const DWORD waited = WaitForMultipleObjects(1, &transfer.hEvent, FALSE, timeout);
            if (waited == WAIT_OBJECT_0) {
                const BOOL good = GetOverlappedResult(File(), &transfer, &transferred, FALSE);
                status = good ? static_cast<uint32_t>(UsbIo::StatusSuccess) : LastError();
            } else {
                status = waited == WAIT_TIMEOUT ? static_cast<uint32_t>(UsbIo::StatusTimeout) : waited;
                // The transfer must have ended before its buffer is used again.
                CancelIo(File());
                WaitForMultipleObjects(1, &transfer.hEvent, FALSE, INFINITE);
                GetOverlappedResult(File(), &transfer, &transferred, FALSE);
            }
        }
    }
    CloseHandle(transfer.hEvent);
    length = std::min<uint32_t>(transferred, size);
    return status;
}
