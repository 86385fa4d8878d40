// Installs the stand-in of the USB kernel driver as a kernel service, and plugs tables in and out: the
// driver's device, its link, and the registry entries by which the system announces a device interface.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace J4Test {

/// The test process holds one for its whole life; everything is removed at the end.
class KernelDriver {
public:
    /// The device interface of the table.
    static constexpr GUID interfaceGuid = {
        0xBAA97E70, 0xAFF9, 0x483F, {0xB4, 0x25, 0x67, 0x90, 0xB6, 0x2C, 0x7F, 0x5A}};

    /// Starts the driver from a file. @throws std::runtime_error with the step that failed
    explicit KernelDriver(const std::string& file);
    ~KernelDriver();
    KernelDriver(const KernelDriver&) = delete;
    KernelDriver& operator=(const KernelDriver&) = delete;

    /// The path under which the table's interface is announced; they sort by the table's number.
    /// @param padding  characters more than usual
    static std::string Path(uint32_t table, size_t padding = 0);

    /// Announces the table's interface and lets it be opened.
    void Plug(uint32_t table, size_t padding = 0);
    /// Takes the interface back; handles that are open stay so.
    void Unplug(uint32_t table);
    /// Announces an interface that can't be opened, as of a table that goes at this moment.
    void Announce(uint32_t table, size_t padding = 0);
    void UnplugAll();

    /// A handle of the driver's control device.
    /// @param flags  FILE_FLAG_OVERLAPPED or 0
    static HANDLE OpenControl(DWORD flags);

    /// One request to the control device that has no answer. @return whether it was done
    static bool Ask(DWORD code, const void* input, size_t size);

private:
    void Stop();
    void Remove();

    SC_HANDLE manager = nullptr;
    SC_HANDLE service = nullptr;
};

}  // namespace J4Test
