// Whoever wants to be told of a device's messages.
#pragma once

#include <cstdint>
#include <string>

namespace Kestrelon::DeviceDriver::Generic {

class EventListener {
public:
    virtual ~EventListener() = default;
    virtual void MessageFromDevice(int32_t message, const std::string& text) = 0;
};

}  // namespace Kestrelon::DeviceDriver::Generic
