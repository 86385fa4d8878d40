#include "tests/usb/libusb/MockedBus.h"

#include <sys/stat.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace J4Test {

namespace {

constexpr int MaximumNumber = 127;  ///< then the kernel begins anew

/// Where the sockets are, neither in the order of their texts nor all on one bus.
constexpr const char* places[UsbStand::Sockets] = {"1-2", "1-10", "2-1"};

std::string Hex(const Bytes& bytes)
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
Bytes HubDescriptors()
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

std::unique_ptr<UsbStand> UsbStand::Create()
{
    const char* const preloaded = std::getenv("LD_PRELOAD");
    if (preloaded == nullptr || std::string(preloaded).find("umockdev") == std::string::npos) {
        throw std::runtime_error("the program was not started by umockdev-wrapper");
    }
    return std::make_unique<MockedBus>();
}

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
    while (!files.empty()) {
        UnplugAt(files.begin()->first);
    }
}

std::string MockedBus::AddDevice(const std::string& place, const Bytes& descriptors)
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
    nodes[place] = std::string("/dev/") + node;
    return nodes[place];
}

std::shared_ptr<TableDevice> MockedBus::Plug(unsigned socket, const TableDevice::Traits& traits)
{
    return PlugAt(places[socket], traits);
}

void MockedBus::Unplug(unsigned socket) { UnplugAt(places[socket]); }

std::shared_ptr<TableDevice> MockedBus::PlugAt(const std::string& place, const TableDevice::Traits& traits)
{
    auto file = std::make_unique<DeviceFile>(std::make_shared<TableDevice>(traits));
    const std::shared_ptr<TableDevice> device = file->device;
    const std::string node = AddDevice(place, file->Descriptors());
    if (traits.configuration != 1) {
        umockdev_testbed_set_attribute_int(testbed.get(), paths[place].c_str(), "bConfigurationValue",
                                           traits.configuration);
    }
    GError* error = nullptr;
    umockdev_testbed_attach_ioctl(testbed.get(), node.c_str(), file->Handler(), &error);
    ThrowIfError(error);
    umockdev_testbed_uevent(testbed.get(), paths[place].c_str(), "add");
    files[place] = std::move(file);
    return device;
}

void MockedBus::PlugHub(const std::string& place) { AddDevice(place, HubDescriptors()); }

void MockedBus::UnplugAt(const std::string& place)
{
    const auto found = files.find(place);
    if (found == files.end()) {
        return;
    }
    found->second->device->isRemoved = true;
    umockdev_testbed_detach_ioctl(testbed.get(), nodes[place].c_str(), nullptr);
    umockdev_testbed_uevent(testbed.get(), paths[place].c_str(), "remove");
    umockdev_testbed_remove_device(testbed.get(), paths[place].c_str());
    paths.erase(place);
    nodes.erase(place);
    unplugged.push_back(std::move(found->second));
    files.erase(found);
}

void MockedBus::ForbidAccess(unsigned socket) const
{
    const std::string& node = nodes.at(places[socket]);
    // umockdev connects to the file's handler whether the file could be opened or not, and must be able to.
    if (::chmod((Root() + node).c_str(), 0) != 0 || ::chmod((Root() + "/ioctl" + node).c_str(), 0777) != 0) {
        throw std::runtime_error("the permissions of the mocked device file can't be changed");
    }
}

Lines MockedBus::Held()
{
    namespace fs = std::filesystem;
    Lines held;
    for (const fs::directory_entry& file : fs::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const std::string target = fs::read_symlink(file.path(), error).string();
        if (target.find("/bus/usb/") != std::string::npos) {
            held.push_back("device");
        } else if (target.find("[timerfd]") != std::string::npos) {
            held.push_back("timer");
        }
    }
    std::ranges::sort(held);
    return held;
}

const UsbWords& MockedBus::Words() const
{
    static constexpr UsbWords words = {"libusb_bulk_transfer(in)",
                                       "libusb_bulk_transfer(out)",
                                       "libusb_control_transfer",
                                       "libusb_get_string_descriptor",
                                       "LIBUSB_ERROR_NO_DEVICE: No such device (it may have been disconnected).",
                                       "LIBUSB_ERROR_PIPE: Pipe error.",
                                       "LIBUSB_ERROR_OTHER: Other error.",
                                       "LIBUSB_ERROR_TIMEOUT: Operation timed out."};
    return words;
}

std::string MockedBus::Root() const
{
    gchar* const root = umockdev_testbed_get_root_dir(testbed.get());
    const std::string text = root;
    g_free(root);
    return text;
}

}  // namespace J4Test

/// The library's pauses come here instead of into the system's library.
extern "C" [[gnu::visibility("default")]] int nanosleep(const timespec* duration, timespec*)
{
    J4Test::PassOnBench(static_cast<unsigned>(duration->tv_sec * 1000 + duration->tv_nsec / 1000000));
    return 0;
}
