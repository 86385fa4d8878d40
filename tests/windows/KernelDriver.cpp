#include "tests/windows/KernelDriver.h"

#include <cstring>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "tests/windows/driver/DriverWire.h"

namespace J4Test {

namespace {

constexpr uint32_t MaximumTables = 8;
constexpr const char* ServiceName = "J4BenchUsb";
constexpr DWORD StopTime = 10000;  ///< ms

constexpr const char* InterfaceName = "{baa97e70-aff9-483f-b425-6790b62c7f5a}";
constexpr const char* ClassesKey =
    "System\\CurrentControlSet\\Control\\DeviceClasses\\{BAA97E70-AFF9-483F-B425-6790B62C7F5A}";
constexpr const char* DevicesKey = "System\\CurrentControlSet\\Enum\\USB\\VID_0971&PID_2004";

/// The device's own part of the path.
std::string Serial(uint32_t table, size_t padding)
{
    return std::to_string(640001 + table) + std::string(padding, 'x');
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

KernelDriver::KernelDriver(const std::string& file)
try {
    manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    Check(manager != nullptr, "opening the service manager");
    service = OpenServiceA(manager, ServiceName, SERVICE_ALL_ACCESS);
    if (service == nullptr) {
        service = CreateServiceA(manager, ServiceName, ServiceName, SERVICE_ALL_ACCESS, SERVICE_KERNEL_DRIVER,
                                 SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL, file.c_str(), nullptr, nullptr, nullptr,
                                 nullptr, nullptr);
    }
    Check(service != nullptr, "creating the driver's service");
    Stop();  // one that was left behind
    Check(StartServiceA(service, 0, nullptr), "starting the driver");
    UnplugAll();
} catch (...) {
    Remove();
    throw;
}

KernelDriver::~KernelDriver()
{
    UnplugAll();
    for (const char* key : {ClassesKey, DevicesKey}) {
        RegDeleteKeyA(HKEY_LOCAL_MACHINE, key);
    }
    Remove();
}

void KernelDriver::Remove()
{
    if (service != nullptr) {
        Stop();
        DeleteService(service);
        CloseServiceHandle(service);
    }
    if (manager != nullptr) {
        CloseServiceHandle(manager);
    }
}

void KernelDriver::Stop()
{
    SERVICE_STATUS status{};
    if (!ControlService(service, SERVICE_CONTROL_STOP, &status)) {
        return;
    }
    const DWORD start = GetTickCount();
    while (QueryServiceStatus(service, &status) && status.dwCurrentState != SERVICE_STOPPED &&
           GetTickCount() - start < StopTime) {
        Sleep(10);
    }
}

HANDLE KernelDriver::OpenControl(DWORD flags)
{
    return CreateFileA("\\\\.\\" J4_DRIVER_CONTROL_DEVICE, GENERIC_READ | GENERIC_WRITE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, flags, nullptr);
}

bool KernelDriver::Ask(DWORD code, const void* input, size_t size)
{
    DWORD bytes = 0;
    const HANDLE control = OpenControl(0);
    const BOOL good =
        DeviceIoControl(control, code, const_cast<void*>(input), static_cast<DWORD>(size), nullptr, 0, &bytes, nullptr);
    CloseHandle(control);
    return good;
}

std::string KernelDriver::Path(uint32_t table, size_t padding)
{
    return "\\\\?\\usb#vid_0971&pid_2004#" + Serial(table, padding) + "#" + InterfaceName;
}

void KernelDriver::Announce(uint32_t table, size_t padding)
{
    const std::string path = Path(table, padding);
    const std::string serial = Serial(table, padding);
    const std::string interface = std::string(ClassesKey) + "\\##?#" + path.substr(4);
    const DWORD linked = 1;
    SetText(std::string(DevicesKey) + "\\" + serial, "ClassGUID", "{36FC9E60-C465-11CF-8056-444553540000}");
    SetText(interface, "DeviceInstance", "USB\\VID_0971&PID_2004\\" + serial);
    SetText(interface + "\\#", "SymbolicLink", path);
    SetValue(interface + "\\#\\Control", "Linked", REG_DWORD, &linked, sizeof(linked));
    SetValue(interface + "\\Control", "Linked", REG_DWORD, &linked, sizeof(linked));
}

void KernelDriver::Plug(uint32_t table, size_t padding)
{
    const std::string name = Path(table, padding).substr(4);
    std::vector<uint8_t> input(sizeof(table) + name.size() * sizeof(WCHAR));
    std::memcpy(input.data(), &table, sizeof(table));
    for (size_t i = 0; i < name.size(); ++i) {
        input[sizeof(table) + i * sizeof(WCHAR)] = static_cast<uint8_t>(name[i]);
    }
    Check(Ask(J4_DRIVER_PLUG, input.data(), input.size()), "plugging " + name);
    Announce(table, padding);
}

void KernelDriver::Unplug(uint32_t table)
{
    // The name may have been padded: all that begin with the serial number go.
    const std::string serial = Serial(table, 0);
    for (const char* root : {ClassesKey, DevicesKey}) {
        HKEY key = nullptr;
        if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, root, 0, KEY_ALL_ACCESS, &key) != ERROR_SUCCESS) {
            continue;
        }
        char name[512];
        for (DWORD i = 0; RegEnumKeyA(key, i, name, sizeof(name)) == ERROR_SUCCESS;) {
            if (std::string_view(name).find(serial) == std::string_view::npos ||
                RegDeleteTreeA(key, name) != ERROR_SUCCESS) {
                ++i;
            }
        }
        RegCloseKey(key);
    }
    Ask(J4_DRIVER_UNPLUG, &table, sizeof(table));
}

void KernelDriver::UnplugAll()
{
    for (uint32_t table = 0; table < MaximumTables; ++table) {
        Unplug(table);
    }
}

}  // namespace J4Test
