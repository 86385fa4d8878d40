// The system's own way to USB devices. Each platform folder defines this function.
#pragma once

#include <cstdint>

#include "Utilities/Tools/SmartPointer.h"
#include "src/SerialUSB/Usb.h"

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

/// Makes the platform's Usb for devices with these identifiers; nothing is opened.
Utilities::Tools::SmartPointer<Usb> CreateSystemUsb(uint32_t vendorId, uint32_t productId);

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
