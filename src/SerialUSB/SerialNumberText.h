// The serial number of a table as narrow text, from the string descriptor that its USB device gives.
#pragma once

#include <cstddef>
#include <cstdint>

#include "src/SerialUSB/Usb.h"

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

/// Writes the text of a string descriptor (two bytes of header, then UTF-16) up to its first
/// zero, its end, or what the caller has room for. Characters beyond 8 bits become "?".
/// @param size    bytes of the descriptor
/// @param serial  room for Usb::SerialNumberSize bytes
inline void SerialNumberFromDescriptor(const uint8_t* descriptor, std::size_t size, char* serial)
{
    constexpr std::size_t header = 2;
    std::size_t written = 0;
    for (std::size_t i = header; i + 1 < size && written + 1 < Usb::SerialNumberSize; i += 2) {
        const unsigned character = static_cast<unsigned>(descriptor[i] | descriptor[i + 1] << 8);
        if (character == 0) {
            break;
        }
        serial[written++] = character <= 0xFF ? static_cast<char>(character) : '?';
    }
    serial[written] = '\0';
}

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
