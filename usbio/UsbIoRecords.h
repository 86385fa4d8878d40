// The wire of the USBIO kernel driver: control codes, request records, statuses. All records are packed and
// little-endian.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

namespace UsbIo {

/// Control codes of the driver. Input and output buffer of each are named behind it.
enum ControlCode : DWORD {
    ControlGetDescriptor = 0x80942006,            // DescriptorRequest; the descriptor
    ControlSetConfiguration = 0x80942024,         // Configuration; none
    ControlUnconfigureDevice = 0x80942028,        // none; none
    ControlClassOrVendorInRequest = 0x80942032,   // ClassOrVendorRequest; the data
    ControlClassOrVendorOutRequest = 0x80942035,  // ClassOrVendorRequest; the data, in the output position too
    ControlGetDeviceParameters = 0x8094203C,      // none; DeviceParameters
    ControlSetDeviceParameters = 0x80942040,      // DeviceParameters; none
    ControlResetDevice = 0x80942054,              // none; none
    ControlGetDriverInfo = 0x8094206C,            // none; DriverInfo
    ControlBind = 0x80942078,                     // endpoint address, 1 byte; none
    ControlResetPipe = 0x80942080,                // none; none
    ControlAbortPipe = 0x80942084,                // none; none
};

/// Statuses of the driver and its client; 0 is success, other values are system error codes.
enum Status : uint32_t {
    StatusSuccess = 0,
    StatusNoMemory = 0xE0000100,
    StatusFailed = 0xE0001000,
    StatusTimeout = 0xE000100C,
    StatusVersionMismatch = 0xE000101C,
    StatusDeviceNotFound = 0xE0001100,
    StatusDeviceNotOpen = 0xE0001102,
    StatusNoSuchDeviceInstance = 0xE0001104,
    StatusInvalidParameter = 0xE0001105,
    StatusSetupApiMissing = 0xE0001106,
    StatusAlreadyOpen = 0xE0001107,
};

enum : uint32_t { RecipientDevice = 0, TypeVendor = 2 };
enum : uint8_t { DescriptorDevice = 1, DescriptorString = 3 };

#pragma pack(push, 1)

struct DescriptorRequest {
    uint32_t recipient;
    uint8_t type;
    uint8_t index;
    uint16_t languageId;
};

struct ClassOrVendorRequest {
    uint32_t flags;
    uint32_t type;
    uint32_t recipient;
    uint8_t requestTypeReservedBits;
    uint8_t request;
    uint16_t value;
    uint16_t index;
};

struct InterfaceSetting {
    uint16_t interfaceIndex;
    uint16_t alternateSettingIndex;
    uint32_t maximumTransferSize;
};

struct Configuration {
    uint16_t configurationIndex;
    uint16_t numberOfInterfaces;
    InterfaceSetting interfaces[32];
};

struct DeviceParameters {
    uint32_t options;
    uint32_t requestTimeout;  ///< ms; 0 for none
};

struct DriverInfo {
    uint16_t interfaceVersion;
    uint16_t driverVersion;
    uint32_t buildNumber;
    uint32_t flags;
};

/// The device descriptor of the USB standard.
struct DeviceDescriptor {
    uint8_t bLength;
    uint8_t bDescriptorType;
    uint16_t bcdUSB;
    uint8_t bDeviceClass;
    uint8_t bDeviceSubClass;
    uint8_t bDeviceProtocol;
    uint8_t bMaxPacketSize0;
    uint16_t idVendor;
    uint16_t idProduct;
    uint16_t bcdDevice;
    uint8_t iManufacturer;
    uint8_t iProduct;
    uint8_t iSerialNumber;
    uint8_t bNumConfigurations;
};

#pragma pack(pop)

static_assert(sizeof(DescriptorRequest) == 8 && offsetof(DescriptorRequest, recipient) == 0 &&
              offsetof(DescriptorRequest, type) == 4 && offsetof(DescriptorRequest, index) == 5 &&
              offsetof(DescriptorRequest, languageId) == 6);
static_assert(sizeof(ClassOrVendorRequest) == 18 && offsetof(ClassOrVendorRequest, flags) == 0 &&
              offsetof(ClassOrVendorRequest, type) == 4 && offsetof(ClassOrVendorRequest, recipient) == 8 &&
              offsetof(ClassOrVendorRequest, requestTypeReservedBits) == 12 &&
              offsetof(ClassOrVendorRequest, request) == 13 && offsetof(ClassOrVendorRequest, value) == 14 &&
              offsetof(ClassOrVendorRequest, index) == 16);
static_assert(sizeof(InterfaceSetting) == 8 && offsetof(InterfaceSetting, interfaceIndex) == 0 &&
              offsetof(InterfaceSetting, alternateSettingIndex) == 2 &&
              offsetof(InterfaceSetting, maximumTransferSize) == 4);
static_assert(sizeof(Configuration) == 260 && offsetof(Configuration, configurationIndex) == 0 &&
              offsetof(Configuration, numberOfInterfaces) == 2 && offsetof(Configuration, interfaces) == 4);
static_assert(sizeof(DeviceParameters) == 8 && offsetof(DeviceParameters, options) == 0 &&
              offsetof(DeviceParameters, requestTimeout) == 4);
static_assert(sizeof(DriverInfo) == 12 && offsetof(DriverInfo, interfaceVersion) == 0 &&
              offsetof(DriverInfo, driverVersion) == 2 && offsetof(DriverInfo, buildNumber) == 4 &&
              offsetof(DriverInfo, flags) == 8);
static_assert(sizeof(DeviceDescriptor) == 18 && offsetof(DeviceDescriptor, iSerialNumber) == 16);

}  // namespace UsbIo
