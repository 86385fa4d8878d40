// The seam of the variants for real tables.
#include "src/SerialUSB/SystemUsb.h"
#include "src/SerialUSB/UsbFactory.h"

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

Utilities::Tools::SmartPointer<Usb> CreateUsb(uint32_t vendorId, uint32_t productId)
{
    return CreateSystemUsb(vendorId, productId);
}

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
