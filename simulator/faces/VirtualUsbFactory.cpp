// The virtual variant's way to its tables.
#include "simulator/ground/BenchLines.h"
#include "src/SerialUSB/UsbFactory.h"
#include "src/SerialUSB/Virtual/VirtualUsb.h"

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

Utilities::Tools::SmartPointer<Usb> CreateUsb(uint32_t, uint32_t)
{
    return Utilities::Tools::SmartPointer<Usb>(new VirtualUsb(*J4Bench::J4Bench_Lines()));
}

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
