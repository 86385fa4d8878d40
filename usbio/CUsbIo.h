// Client of the USBIO kernel driver, which gives programs USB access through device interfaces, control
// codes and overlapped transfers. A CUsbIo is a device handle: it finds the device, opens it, and sends
// control requests.
//
// All operations give a status and throw nothing: 0, a system error code, or a code of the driver (0xE...).
#pragma once

#include <windows.h>
// The Setup API's header has to follow.
#include <setupapi.h>

#include <cstdint>

#include "usbio/UsbIoRecords.h"

class CUsbIo {
public:
    CUsbIo();
    virtual ~CUsbIo();
    CUsbIo(const CUsbIo&) = delete;
    CUsbIo& operator=(const CUsbIo&) = delete;

    /// The present devices with this interface; null on failure.
    static HDEVINFO CreateDeviceList(const GUID* guid);
    /// A null list is allowed.
    static void DestroyDeviceList(HDEVINFO list);

    /// Finds the path of device number `number` in the list and keeps it for Open.
    /// @return StatusNoSuchDeviceInstance one past the last device
    uint32_t GetDeviceInstanceDetails(int number, HDEVINFO list, const GUID* guid);

    /// Opens device number `number` and tests the driver's version.
    uint32_t Open(int number, HDEVINFO list, const GUID* guid);
    /// Closes all that Open opened; safe when closed.
    void Close();

    uint32_t GetDeviceDescriptor(UsbIo::DeviceDescriptor& descriptor);
    /// @param length  in: room in buffer; out: bytes written
    uint32_t GetStringDescriptor(void* buffer, uint32_t& length, uint8_t index, uint16_t languageId);
    uint32_t GetDescriptor(void* buffer, uint32_t& length, uint32_t recipient, uint8_t type, uint8_t index,
                           uint16_t languageId);
    uint32_t ClassOrVendorInRequest(void* buffer, uint32_t& length, const UsbIo::ClassOrVendorRequest& request);
    uint32_t ClassOrVendorOutRequest(void* buffer, uint32_t& length, const UsbIo::ClassOrVendorRequest& request);
    uint32_t SetConfiguration(const UsbIo::Configuration& configuration);
    uint32_t UnconfigureDevice();
    uint32_t GetDeviceParameters(UsbIo::DeviceParameters& parameters);
    uint32_t SetDeviceParameters(const UsbIo::DeviceParameters& parameters);
    uint32_t ResetDevice();

    /// Writes the text of a status, cut to size and always terminated. @return buffer
    static char* ErrorText(char* buffer, uint32_t size, uint32_t status);

protected:
    bool IsOpen() const { return file != nullptr; }
    HANDLE File() const { return file; }

    /// The Windows error in hand as a status that is never success.
    static uint32_t LastError();

    /// One control request, to its end.
    /// @param returned  receives the byte count that came back; may be null
    uint32_t Control(DWORD code, const void* in, uint32_t inSize, void* out, uint32_t outSize, uint32_t* returned);

private:
    uint32_t OpenFile(const char* path);
    uint32_t CheckDriver();
    void FreeDetails();

    HANDLE file = nullptr;
    OVERLAPPED overlapped{};
    CRITICAL_SECTION controlLock;
    SP_DEVICE_INTERFACE_DETAIL_DATA_A* details = nullptr;
};
