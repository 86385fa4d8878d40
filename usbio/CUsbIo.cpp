#include "usbio/CUsbIo.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "usbio/SetupApi.h"

namespace {

/// Interface version of the driver: this high byte, at least this low byte.
constexpr uint16_t VersionMajor = 0x02;
constexpr uint16_t VersionMinor = 0x30;

}  // namespace

uint32_t CUsbIo::LastError()
{
    const DWORD error = GetLastError();
    return error != ERROR_SUCCESS ? error : static_cast<uint32_t>(UsbIo::StatusFailed);
}

CUsbIo::CUsbIo() { InitializeCriticalSection(&controlLock); }

CUsbIo::~CUsbIo()
{
    Close();
    DeleteCriticalSection(&controlLock);
}

HDEVINFO CUsbIo::CreateDeviceList(const GUID* guid)
{
    const SetupApi* api = SetupApi::Instance();
    if (api == nullptr) {
        return nullptr;
    }
    const HDEVINFO list = api->getClassDevs(guid, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    return list == INVALID_HANDLE_VALUE ? nullptr : list;
}

void CUsbIo::DestroyDeviceList(HDEVINFO list)
{
    if (list == nullptr) {
        return;
    }
    if (const SetupApi* api = SetupApi::Instance()) {
        api->destroyDeviceInfoList(list);
    }
}

uint32_t CUsbIo::GetDeviceInstanceDetails(int number, HDEVINFO list, const GUID* guid)
{
    if (list == nullptr || guid == nullptr) {
        return UsbIo::StatusInvalidParameter;
    }
    const SetupApi* api = SetupApi::Instance();
    if (api == nullptr) {
        return UsbIo::StatusSetupApiMissing;
    }
    FreeDetails();
    SP_DEVICE_INTERFACE_DATA data{};
    data.cbSize = sizeof(data);
    static_assert(sizeof(data) == 32);
    if (!api->enumDeviceInterfaces(list, nullptr, guid, static_cast<DWORD>(number), &data)) {
        const uint32_t error = LastError();
        return error == ERROR_NO_MORE_ITEMS ? static_cast<uint32_t>(UsbIo::StatusNoSuchDeviceInstance) : error;
    }
    DWORD size = 0;
    api->getDeviceInterfaceDetail(list, &data, nullptr, 0, &size, nullptr);
    if (size == 0) {
        return UsbIo::StatusFailed;
    }
    // One byte more than the system asked for, so that the path ends whatever is written.
    const std::size_t room = std::max<std::size_t>(size, sizeof(*details)) + 1;
    details = static_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_A*>(std::calloc(1, room));
    if (details == nullptr) {
        return UsbIo::StatusNoMemory;
    }
    details->cbSize = sizeof(*details);
    static_assert(sizeof(*details) == 8);
    if (!api->getDeviceInterfaceDetail(list, &data, details, size, nullptr, nullptr)) {
        return LastError();
    }
    return UsbIo::StatusSuccess;
}

void CUsbIo::FreeDetails()
{
    std::free(details);
    details = nullptr;
}

uint32_t CUsbIo::Open(int number, HDEVINFO list, const GUID* guid)
{
    if (IsOpen()) {
        return UsbIo::StatusAlreadyOpen;
    }
    uint32_t status = UsbIo::StatusSuccess;
    if (list != nullptr) {
        status = GetDeviceInstanceDetails(number, list, guid);
        if (status == UsbIo::StatusSuccess) {
            status = OpenFile(details->DevicePath);
        }
    } else {
        char name[64];
        std::snprintf(name, sizeof(name), "\\\\.\\USBIO_Device%d", number);
        status = OpenFile(name);
    }
    if (status == UsbIo::StatusSuccess) {
        status = CheckDriver();
    }
    if (status != UsbIo::StatusSuccess) {
        Close();
    }
    return status;
}

uint32_t CUsbIo::OpenFile(const char* path)
{
    const HANDLE opened = CreateFileA(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        const uint32_t error = LastError();
        return error == ERROR_FILE_NOT_FOUND ? static_cast<uint32_t>(UsbIo::StatusDeviceNotFound) : error;
    }
    file = opened;
    overlapped = OVERLAPPED{};
    overlapped.hEvent = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    return overlapped.hEvent != nullptr ? UsbIo::StatusSuccess : UsbIo::StatusNoMemory;
}

uint32_t CUsbIo::CheckDriver()
{
    UsbIo::DriverInfo info{};
    const uint32_t status = Control(UsbIo::ControlGetDriverInfo, nullptr, 0, &info, sizeof(info), nullptr);
    if (status != UsbIo::StatusSuccess) {
        return status;
    }
    const bool matches = info.interfaceVersion >> 8 == VersionMajor && (info.interfaceVersion & 0xFF) >= VersionMinor;
    return matches ? UsbIo::StatusSuccess : UsbIo::StatusVersionMismatch;
}

void CUsbIo::Close()
{
    if (file != nullptr) {
        CloseHandle(file);
        file = nullptr;
    }
    if (overlapped.hEvent != nullptr) {
        CloseHandle(overlapped.hEvent);
        overlapped.hEvent = nullptr;
    }
    FreeDetails();
}

uint32_t CUsbIo::Control(DWORD code, const void* in, uint32_t inSize, void* out, uint32_t outSize, uint32_t* returned)
{
    if (!IsOpen()) {
        return UsbIo::StatusDeviceNotOpen;
    }
    EnterCriticalSection(&controlLock);
    DWORD bytes = 0;
    uint32_t status = UsbIo::StatusSuccess;
    if (!DeviceIoControl(file, code, const_cast<void*>(in), inSize, out, outSize, &bytes, &overlapped)) {
        status = LastError();
        if (status == ERROR_IO_PENDING) {
            status = GetOverlappedResult(file, &overlapped, &bytes, TRUE) ? UsbIo::StatusSuccess : LastError();
        }
    }
    LeaveCriticalSection(&controlLock);
    if (returned != nullptr) {
        *returned = std::min<uint32_t>(bytes, outSize);
    }
    return status;
}

uint32_t CUsbIo::GetDeviceDescriptor(UsbIo::DeviceDescriptor& descriptor)
{
    uint32_t length = sizeof(descriptor);
    return GetDescriptor(&descriptor, length, UsbIo::RecipientDevice, UsbIo::DescriptorDevice, 0, 0);
}

uint32_t CUsbIo::GetStringDescriptor(void* buffer, uint32_t& length, uint8_t index, uint16_t languageId)
{
    return GetDescriptor(buffer, length, UsbIo::RecipientDevice, UsbIo::DescriptorString, index, languageId);
}

uint32_t CUsbIo::GetDescriptor(void* buffer, uint32_t& length, uint32_t recipient, uint8_t type, uint8_t index,
                               uint16_t languageId)
{
    const UsbIo::DescriptorRequest request{recipient, type, index, languageId};
    return Control(UsbIo::ControlGetDescriptor, &request, sizeof(request), buffer, length, &length);
}

uint32_t CUsbIo::ClassOrVendorInRequest(void* buffer, uint32_t& length, const UsbIo::ClassOrVendorRequest& request)
{
    return Control(UsbIo::ControlClassOrVendorInRequest, &request, sizeof(request), buffer, length, &length);
}

uint32_t CUsbIo::ClassOrVendorOutRequest(void* buffer, uint32_t& length, const UsbIo::ClassOrVendorRequest& request)
{
    return Control(UsbIo::ControlClassOrVendorOutRequest, &request, sizeof(request), buffer, length, &length);
}

uint32_t CUsbIo::SetConfiguration(const UsbIo::Configuration& configuration)
{
    return Control(UsbIo::ControlSetConfiguration, &configuration, sizeof(configuration), nullptr, 0, nullptr);
}

uint32_t CUsbIo::UnconfigureDevice()
{
    return Control(UsbIo::ControlUnconfigureDevice, nullptr, 0, nullptr, 0, nullptr);
}

uint32_t CUsbIo::GetDeviceParameters(UsbIo::DeviceParameters& parameters)
{
    return Control(UsbIo::ControlGetDeviceParameters, nullptr, 0, &parameters, sizeof(parameters), nullptr);
}

uint32_t CUsbIo::SetDeviceParameters(const UsbIo::DeviceParameters& parameters)
{
    return Control(UsbIo::ControlSetDeviceParameters, &parameters, sizeof(parameters), nullptr, 0, nullptr);
}

uint32_t CUsbIo::ResetDevice() { return Control(UsbIo::ControlResetDevice, nullptr, 0, nullptr, 0, nullptr); }
