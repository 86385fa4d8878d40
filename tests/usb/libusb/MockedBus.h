// The USB of a Linux computer under umockdev: libusb finds, opens and talks to the tables on it as it does with real
// ones.
#pragma once

#include <umockdev.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/usb/UsbStand.h"
#include "tests/usb/libusb/DeviceFile.h"

namespace J4Test {

class MockedBus : public UsbStand {
public:
    MockedBus();
    ~MockedBus() override { UnplugAll(); }

    std::shared_ptr<TableDevice> Plug(unsigned socket, const TableDevice::Traits& traits = {}) override;
    void Unplug(unsigned socket) override;
    /// "device" for each handle, "timer" for each context of libusb.
    Lines Held() override;
    const UsbWords& Words() const override;

    /// Takes the device file's permissions from all users.
    void ForbidAccess(unsigned socket) const;

private:
    struct GObjectRelease {
        void operator()(void* object) const { g_object_unref(object); }
    };

    struct Device {
        std::string path;  ///< in sysfs
        std::string node;  ///< the device file
        std::unique_ptr<DeviceFile> file = {};
    };

    Device AddDevice(const std::string& path, const Bytes& descriptors);
    std::string Root() const;

    std::unique_ptr<UMockdevTestbed, GObjectRelease> testbed;
    std::map<unsigned, Device> plugged;                  ///< by socket
    std::vector<std::unique_ptr<DeviceFile>> unplugged;  ///< may still be open
    std::map<char, int> numbers;                         ///< last device number of each bus
};

}  // namespace J4Test
