#include "tests/usb/libusb/MockedBus.h"

#include <sys/stat.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace J4Test {

namespace {

constexpr int MaximumNumber = 127;  ///< then the kernel begins anew

/// The buses and a hub, each of them also a device that is not a table.
constexpr const char* hubs[] = {"/devices/usb1", "/devices/usb2", "/devices/usb1/1-10"};

/// Where the sockets are, neither in the order of their texts nor all on one bus or hub.
constexpr const char* sockets[UsbStand::Sockets] = {"/devices/usb1/1-2", "/devices/usb1/1-10/1-10.1",
                                                    "/devices/usb1/1-10/1-10.4", "/devices/usb2/2-1"};

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
    for (const char* const hub : hubs) {
        AddDevice(hub, HubDescriptors());
    }
}

MockedBus::Device MockedBus::AddDevice(const std::string& path, const Bytes& descriptors)
{
    const char bus = path[std::string("/devices/usb").size()];
    const int number = numbers[bus] = numbers[bus] % MaximumNumber + 1;
    char node[32];
    std::snprintf(node, sizeof node, "bus/usb/00%c/%03d", bus, number);
    const std::string text = "P: " + path + "\nN: " + node +
                             "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nE: DEVNAME=/dev/" + node + "\nE: BUSNUM=00" +
                             bus + "\nE: DEVNUM=" + std::to_string(number) + "\nA: busnum=" + bus +
                             "\nA: devnum=" + std::to_string(number) +
                             "\nA: speed=12\nA: bConfigurationValue=1\nH: descriptors=" + Hex(descriptors) + "\n\n";
    GError* error = nullptr;
    umockdev_testbed_add_from_string(testbed.get(), text.c_str(), &error);
    ThrowIfError(error);
    return {"/sys" + path, std::string("/dev/") + node};
}

std::shared_ptr<TableDevice> MockedBus::Plug(unsigned socket, const TableDevice::Traits& traits)
{
    const auto table = std::make_shared<TableDevice>(traits);
    Device device = AddDevice(sockets[socket], table->Descriptors());
    device.file = std::make_unique<DeviceFile>(table);
    umockdev_testbed_set_attribute_int(testbed.get(), device.path.c_str(), "bConfigurationValue", traits.configuration);
    GError* error = nullptr;
    umockdev_testbed_attach_ioctl(testbed.get(), device.node.c_str(), device.file->Handler(), &error);
    ThrowIfError(error);
    umockdev_testbed_uevent(testbed.get(), device.path.c_str(), "add");
    plugged[socket] = std::move(device);
    return table;
}

void MockedBus::Unplug(unsigned socket)
{
    const auto found = plugged.find(socket);
    if (found == plugged.end()) {
        return;
    }
    Device& device = found->second;
    device.file->device->isRemoved = true;
    umockdev_testbed_detach_ioctl(testbed.get(), device.node.c_str(), nullptr);
    umockdev_testbed_uevent(testbed.get(), device.path.c_str(), "remove");
    umockdev_testbed_remove_device(testbed.get(), device.path.c_str());
    unplugged.push_back(std::move(device.file));
    plugged.erase(found);
}

void MockedBus::ForbidAccess(unsigned socket) const
{
    const std::string& node = plugged.at(socket).node;
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
    static const UsbWords words = {
        "libusb_bulk_transfer(in)",
        "libusb_bulk_transfer(out)",
        "libusb_control_transfer",
        "libusb_get_string_descriptor",
        "LIBUSB_ERROR_NO_DEVICE: No such device (it may have been disconnected).",
        "LIBUSB_ERROR_PIPE: Pipe error.",
        "LIBUSB_ERROR_OTHER: Other error.",
        "LIBUSB_ERROR_TIMEOUT: Operation timed out.",
        {"libusb_claim_interface", "libusb_clear_halt", "libusb_clear_halt", "libusb_bulk_transfer(in)"},
        126};
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

/// The library's pauses, and its looks at the clock, come here instead of into the systems' libraries.
extern "C" [[gnu::visibility("default")]] int nanosleep(const timespec* duration, timespec*)
{
    J4Test::PassOnBench(static_cast<unsigned>(duration->tv_sec * 1000 + duration->tv_nsec / 1000000));
    return 0;
}

namespace std::chrono {
inline namespace _V2 {

steady_clock::time_point steady_clock::now() noexcept { return time_point(microseconds(J4Test::BenchTime())); }

}  // namespace _V2
}  // namespace std::chrono
