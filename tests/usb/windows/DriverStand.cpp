#include "tests/usb/windows/DriverStand.h"

#include <cstring>
#include <stdexcept>
#include <string_view>

namespace J4Test {

namespace {

constexpr const char* ServiceName = "J4BenchUsb";
constexpr DWORD StopTime = 10000;  ///< ms

constexpr const char* InterfaceName = "{baa97e70-aff9-483f-b425-6790b62c7f5a}";
constexpr const char* ClassesKey =
    "System\\CurrentControlSet\\Control\\DeviceClasses\\{BAA97E70-AFF9-483F-B425-6790B62C7F5A}";
constexpr const char* DevicesKey = "System\\CurrentControlSet\\Enum\\USB\\VID_0971&PID_2004";

/// The device's own part of the path; paths sort by the socket.
std::string Serial(unsigned socket, size_t padding)
{
    return std::to_string(640001 + socket) + std::string(padding, 'x');
}

/// The path of the interface behind "\\?\".
std::string Path(unsigned socket, size_t padding)
{
    return "usb#vid_0971&pid_2004#" + Serial(socket, padding) + "#" + InterfaceName;
}

void Check(bool good, const std::string& step)
{
    if (!good) {
        throw std::runtime_error(step + " failed with error " + std::to_string(GetLastError()));
    }
}

void SetValue(const std::string& key, const char* name, DWORD type, const void* data, size_t size)
{
    // Wide, since the narrow call has no room for a key that is longer than a path may be.
    HKEY handle = nullptr;
    const std::wstring wide(key.begin(), key.end());
    LSTATUS status = RegCreateKeyExW(HKEY_LOCAL_MACHINE, wide.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE,
                                     nullptr, &handle, nullptr);
    if (status == ERROR_SUCCESS) {
        status = RegSetValueExA(handle, name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size));
        RegCloseKey(handle);
    }
    SetLastError(static_cast<DWORD>(status));
    Check(status == ERROR_SUCCESS, "writing " + key);
}

void SetText(const std::string& key, const char* name, const std::string& text)
{
    SetValue(key, name, REG_SZ, text.c_str(), text.size() + 1);
}

}  // namespace

std::unique_ptr<UsbStand> UsbStand::Create() { return std::make_unique<DriverStand>(); }

std::string ProgramFolder()
{
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, sizeof(path));
    const std::string name = path;
    return name.substr(0, name.rfind('\\') + 1);
}

DriverStand::DriverStand()
{
    manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    Check(manager != nullptr, "opening the service manager");
    service = OpenServiceA(manager, ServiceName, SERVICE_ALL_ACCESS);
    if (service == nullptr) {
        service =
            CreateServiceA(manager, ServiceName, ServiceName, SERVICE_ALL_ACCESS, SERVICE_KERNEL_DRIVER,
                           SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL, (ProgramFolder() + "j4benchusb.sys").c_str(),
                           nullptr, nullptr, nullptr, nullptr, nullptr);
    }
    Check(service != nullptr, "creating the driver's service");
    Stop();  // one that was left behind
    Check(StartServiceA(service, 0, nullptr), "starting the driver");
    for (unsigned socket = 0; socket < Sockets; ++socket) {
        Unlink(socket);
    }
    relay.emplace();
    relay->CatchUp();
    RedirectPauses();
}

DriverStand::~DriverStand()
{
    UnplugAll();
    relay.reset();
    Stop();
    DeleteService(service);
    CloseServiceHandle(service);
    CloseServiceHandle(manager);
}

void DriverStand::Stop()
{
    SERVICE_STATUS status{};
    if (!ControlService(service, SERVICE_CONTROL_STOP, &status)) {
        return;
    }
    for (DWORD waited = 0;
         waited < StopTime && QueryServiceStatus(service, &status) && status.dwCurrentState != SERVICE_STOPPED;
         waited += 10) {
        Sleep(10);
    }
}

std::shared_ptr<TableDevice> DriverStand::Plug(unsigned socket, const TableDevice::Traits& traits)
{
    devices[socket] = std::make_shared<TableDevice>(traits, [this] { relay->CatchUp(); });
    relay->Plug(socket, devices[socket]);
    Link(socket);
    return devices[socket];
}

void DriverStand::Unplug(unsigned socket)
{
    if (devices[socket] != nullptr) {
        devices[socket]->isRemoved = true;
        Unlink(socket);
        devices[socket].reset();
    }
}

void DriverStand::Link(unsigned socket, size_t padding)
{
    const std::string path = Path(socket, padding);
    const std::wstring name(path.begin(), path.end());
    const uint32_t number = socket;
    Bytes input(sizeof(number) + name.size() * sizeof(WCHAR));
    std::memcpy(input.data(), &number, sizeof(number));
    std::memcpy(input.data() + sizeof(number), name.data(), name.size() * sizeof(WCHAR));
    Check(Relay::Ask(J4_DRIVER_PLUG, input.data(), input.size()), "plugging " + path);
    Announce(socket, padding);
}

void DriverStand::Announce(unsigned socket, size_t padding)
{
    const std::string serial = Serial(socket, padding);
    const std::string interface = std::string(ClassesKey) + "\\##?#" + Path(socket, padding);
    const DWORD linked = 1;
    SetText(std::string(DevicesKey) + "\\" + serial, "ClassGUID", "{36FC9E60-C465-11CF-8056-444553540000}");
    SetText(interface, "DeviceInstance", "USB\\VID_0971&PID_2004\\" + serial);
    SetText(interface + "\\#", "SymbolicLink", "\\\\?\\" + Path(socket, padding));
    SetValue(interface + "\\#\\Control", "Linked", REG_DWORD, &linked, sizeof(linked));
    SetValue(interface + "\\Control", "Linked", REG_DWORD, &linked, sizeof(linked));
}

void DriverStand::Unlink(unsigned socket)
{
    // The name may have been padded: all that begin with the serial number go.
    for (const char* root : {ClassesKey, DevicesKey}) {
        HKEY key = nullptr;
        if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, root, 0, KEY_ALL_ACCESS, &key) != ERROR_SUCCESS) {
            continue;
        }
        char name[512];
        for (DWORD i = 0; RegEnumKeyA(key, i, name, sizeof(name)) == ERROR_SUCCESS;) {
            if (std::string_view(name).find(Serial(socket, 0)) == std::string_view::npos ||
                RegDeleteTreeA(key, name) != ERROR_SUCCESS) {
                ++i;
            }
        }
        RegCloseKey(key);
    }
    const uint32_t number = socket;
    Relay::Ask(J4_DRIVER_UNPLUG, &number, sizeof(number));
}

const UsbWords& DriverStand::Words() const
{
    static const UsbWords words = {
        "ReadSync",
        "WriteSync",
        "ClassOrVendorOutRequest",
        "GetDeviceDescriptor",
        "Error code 0xE000100A: Device is removed.",
        "Error code 0xE0000004: HC Error: stall PID.",
        UsbSessionTest::notFound,
        "Error code 0xE000100C: The request has been timed out.",
        {nullptr, "UnconfigureDevice", "SetConfiguration", "GetDeviceParameters", "GetDeviceParameters", "Bind(out)",
         "Bind(out)", "Bind(in)", "Bind(in)", "Reset(out)", "Reset(in)", "ReadSync"},
        127};
    return words;
}

}  // namespace J4Test
