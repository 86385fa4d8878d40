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
    ~MockedBus() override;

    /// The stand as what it is here.
    static MockedBus& Instance() { return static_cast<MockedBus&>(Stand()); }

    std::shared_ptr<TableDevice> Plug(unsigned socket, const TableDevice::Traits& traits = {}) override;
    void Unplug(unsigned socket) override;
    /// "device" for each handle, "timer" for each context of libusb.
    Lines Held() override;
    const UsbWords& Words() const override;

    /// @param place  bus and port path in the kernel's form, for instance "1-3.2"; the hub "1-3" must be there
    std::shared_ptr<TableDevice> PlugAt(const std::string& place, const TableDevice::Traits& traits = {});
    void UnplugAt(const std::string& place);

    /// Plugs in a hub, which is also a device that is not a table.
    void PlugHub(const std::string& place);

    /// Takes the device file's permissions from all users.
    void ForbidAccess(unsigned socket) const;

private:
    struct GObjectRelease {
        void operator()(void* object) const { g_object_unref(object); }
    };

    std::string AddDevice(const std::string& place, const Bytes& descriptors);
    std::string Root() const;

    std::unique_ptr<UMockdevTestbed, GObjectRelease> testbed;
    std::map<std::string, std::string> paths;  ///< in sysfs, by place
    std::map<std::string, std::string> nodes;  ///< device files, by place
    std::map<std::string, std::unique_ptr<DeviceFile>> files;
    std::vector<std::unique_ptr<DeviceFile>> unplugged;  ///< may still be open
    std::map<char, int> numbers;                         ///< last device number of each bus
};

}  // namespace J4Test
