#include "src/SerialUSB/TableLineSeams.h"

#include <chrono>
#include <thread>

#include "Utilities/Tools/Clock.h"
#include "src/SerialUSB/SystemUsb.h"
#include "src/SerialUSB/UsbFactory.h"
#include "src/SerialUSB/UsbLines.h"
#include "src/SerialUSB/Virtual/VirtualUsb.h"

namespace {

Kestrelon::DeviceDriver::J4T::LowLevel::UsbLines* bench = nullptr;

}  // namespace

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

void UseBench(UsbLines& lines) { bench = &lines; }

Utilities::Tools::SmartPointer<Usb> CreateUsb(uint32_t vendorId, uint32_t productId)
{
    return bench == nullptr ? CreateSystemUsb(vendorId, productId)
                            : Utilities::Tools::SmartPointer<Usb>(new VirtualUsb(*bench));
}

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel

namespace Kestrelon::Utilities::Tools::Clock {

uint32_t GetTickCount()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return bench == nullptr ? static_cast<uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count())
                            : bench->Milliseconds();
}

void Sleep(uint32_t milliseconds)
{
    if (bench == nullptr) {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    } else {
        bench->Pause(milliseconds);
    }
}

}  // namespace Kestrelon::Utilities::Tools::Clock
