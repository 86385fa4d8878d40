// The USB of a computer under umockdev: mocked table devices that libusb finds, opens and talks to as it does
// with real ones. The bench's tables answer, and single requests can be made to fail.
#pragma once

#include <umockdev.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/libusb/MockedDevice.h"

namespace J4Test {

class MockedBus {
public:
    /// Two buses without a device on them.
    MockedBus();
    ~MockedBus();
    MockedBus(const MockedBus&) = delete;
    MockedBus& operator=(const MockedBus&) = delete;

    /// Plugs a table in, as a device with a new number.
    /// @param place  bus and port path in the kernel's form, for instance "1-3.2"; the hub "1-3" must be there
    MockedDevice& Plug(const std::string& place, const MockedDevice::Traits& traits = {});

    /// Plugs in a hub, which is also a device that is not a table.
    void PlugHub(const std::string& place);

    /// Takes out what is plugged in at this place; requests of handles that are still open are refused.
    void Unplug(const std::string& place);

    /// Takes the device file's permissions from all users.
    void ForbidAccess(const std::string& place) const;

private:
    struct GObjectRelease {
        void operator()(void* object) const;
    };

    std::string AddDevice(const std::string& place, const std::vector<uint8_t>& descriptors);
    std::string Root() const;

    std::unique_ptr<UMockdevTestbed, GObjectRelease> testbed;
    std::map<std::string, std::string> paths;  ///< in sysfs, by place
    std::map<std::string, std::string> files;  ///< device files, by place
    std::map<std::string, std::shared_ptr<MockedDevice>> tables;
    std::vector<std::shared_ptr<MockedDevice>> unplugged;  ///< handles may still be open on them
    std::map<char, int> numbers;                           ///< last device number of each bus
};

}  // namespace J4Test
