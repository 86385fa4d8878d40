#include "tests/libusb/MockedBus.h"

#include <sys/stat.h>

#include <cstdio>
#include <stdexcept>

namespace J4Test {

namespace {

constexpr int MaximumNumber = 127;  ///< then the kernel begins anew

std::string Hex(const std::vector<uint8_t>& bytes)
{
    std::string text;
    for (const uint8_t byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", byte);
        text += digits;
    }
    return text;
}

/// A USB 2.0 hub with one configuration.
std::vector<uint8_t> HubDescriptors()
{
    return {
        18, 1, 0x00, 0x02, 9, 0, 1,  64,   0x6B, 0x1D, 0x02, 0x00, 0x05, 0x06, 0, 0, 0, 1,  // device
        9,  2, 25,   0,    1, 1, 0,  0xE0, 0,                                               // configuration
        9,  4, 0,    0,    1, 9, 0,  0,    0,                                               // interface
        7,  5, 0x81, 3,    4, 0, 12,                                                        // interrupt IN
    };
}

void ThrowIfError(GError* error)
{
    if (error != nullptr) {
        const std::string text = error->message;
        g_error_free(error);
        throw std::runtime_error(text);
    }
}

/// "1-3" for "1-3.2", "usb1" for "1-3".
std::string ParentOf(const std::string& place)
{
    const size_t dot = place.rfind('.');
    return dot != std::string::npos ? place.substr(0, dot) : "usb" + place.substr(0, place.find('-'));
}

}  // namespace

void MockedBus::GObjectRelease::operator()(void* object) const { g_object_unref(object); }

MockedBus::MockedBus() : testbed(umockdev_testbed_new())
{
    // Everybody may look into the mocked system, as into a real one, and listen to its events, for which umockdev
    // makes files.
    ::chmod(Root().c_str(), 0777);
    AddDevice("usb1", HubDescriptors());
    AddDevice("usb2", HubDescriptors());
}

MockedBus::~MockedBus()
{
    while (!tables.empty()) {
        Unplug(tables.begin()->first);
    }
}

std::string MockedBus::AddDevice(const std::string& place, const std::vector<uint8_t>& descriptors)
{
    const bool isRoot = place.starts_with("usb");
    const char bus = isRoot ? place[3] : place[0];
    const int number = numbers[bus] = numbers[bus] % MaximumNumber + 1;
    const std::string path = (isRoot ? "/devices" : paths.at(ParentOf(place)).substr(4)) + "/" + place;
    char node[32];
    std::snprintf(node, sizeof node, "bus/usb/00%c/%03d", bus, number);
    const std::string text = "P: " + path + "\nN: " + node +
                             "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nE: DEVNAME=/dev/" + node + "\nE: BUSNUM=00" +
                             bus + "\nE: DEVNUM=" + std::to_string(number) + "\nA: busnum=" + bus +
                             "\nA: devnum=" + std::to_string(number) + "\nA: speed=12\nA: bConfigurationValue=1" +
                             "\nH: descriptors=" + Hex(descriptors) + "\n\n";
    GError* error = nullptr;
    umockdev_testbed_add_from_string(testbed.get(), text.c_str(), &error);
    ThrowIfError(error);
    paths[place] = "/sys" + path;
    files[place] = std::string("/dev/") + node;
    return files[place];
}

MockedDevice& MockedBus::Plug(const std::string& place, const MockedDevice::Traits& traits)
{
    const auto device = std::make_shared<MockedDevice>(traits);
    const std::string file = AddDevice(place, device->Descriptors());
    if (traits.configuration != 1) {
        umockdev_testbed_set_attribute_int(testbed.get(), paths[place].c_str(), "bConfigurationValue",
                                           traits.configuration);
    }
    GError* error = nullptr;
    umockdev_testbed_attach_ioctl(testbed.get(), file.c_str(), device->Handler(), &error);
    ThrowIfError(error);
    umockdev_testbed_uevent(testbed.get(), paths[place].c_str(), "add");
    tables[place] = device;
    return *device;
}

void MockedBus::PlugHub(const std::string& place) { AddDevice(place, HubDescriptors()); }

void MockedBus::Unplug(const std::string& place)
{
    const std::shared_ptr<MockedDevice> device = tables.at(place);
    device->Remove();
    umockdev_testbed_detach_ioctl(testbed.get(), files[place].c_str(), nullptr);
    umockdev_testbed_uevent(testbed.get(), paths[place].c_str(), "remove");
    umockdev_testbed_remove_device(testbed.get(), paths[place].c_str());
    paths.erase(place);
    files.erase(place);
    tables.erase(place);
    unplugged.push_back(device);
}

void MockedBus::ForbidAccess(const std::string& place) const
{
    const std::string& file = files.at(place);
    // umockdev connects to the file's handler whether the file could be opened or not, and must be able to.
    if (::chmod((Root() + file).c_str(), 0) != 0 || ::chmod((Root() + "/ioctl" + file).c_str(), 0777) != 0) {
        throw std::runtime_error("the permissions of the mocked device file can't be changed");
    }
}

std::string MockedBus::Root() const
{
    gchar* const root = umockdev_testbed_get_root_dir(testbed.get());
    const std::string text = root;
    g_free(root);
    return text;
}

}  // namespace J4Test
