// What everybody on the cable knows of the USB-to-serial bridge in the table: end points, packets, vendor requests. The
// library talks to it by them, the virtual table answers by them, and the tool reads captures by them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Kestrelon::DeviceDriver::J4T::LowLevel::UsbBridge {

inline constexpr uint8_t EndpointOut = 0x02;
inline constexpr uint8_t EndpointIn = 0x81;

/// Bytes of the largest transfer that the device is configured for.
inline constexpr std::size_t LargestTransfer = 0x20000;

// An incoming packet: two status bytes, then up to 62 bytes of payload.
inline constexpr std::size_t PacketSize = 64;
inline constexpr std::size_t StatusSize = 2;
inline constexpr std::size_t PayloadSize = PacketSize - StatusSize;

/// Milliseconds between packets while there is no payload, until a program sets it otherwise.
inline constexpr uint32_t UsualLatency = 16;

/// Vendor requests.
enum Request : uint8_t { Reset = 0, ModemControl = 1, FlowControl = 2, BaudRate = 3, LineFormat = 4, LatencyTimer = 9 };

/// Values of Reset.
enum ResetValue : uint16_t { ResetAll = 0, PurgeReceived = 1, PurgeSent = 2 };

/// The value of BaudRate for the table: 3,000,000 baud by 52.
inline constexpr uint16_t TableDivisor = 52;

/// The value of LineFormat for the table.
inline constexpr uint16_t EightBitsNoParityOneStop = 8;

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel::UsbBridge
