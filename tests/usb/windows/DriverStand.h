// The USB of a Windows computer with the kernel driver's stand-in, which is installed as a kernel service: the driver's
// devices, their links, and the registry entries by which the system announces device interfaces to the Setup API.
#pragma once

#include <optional>

#include "tests/usb/UsbTest.h"
#include "tests/usb/windows/Relay.h"

namespace J4Test {

/// The folder of the test program, with a backslash at its end.
std::string ProgramFolder();

class DriverStand : public UsbStand {
public:
    /// The device interface of the table.
    static constexpr GUID interfaceGuid = {
        0xBAA97E70, 0xAFF9, 0x483F, {0xB4, 0x25, 0x67, 0x90, 0xB6, 0x2C, 0x7F, 0x5A}};

    DriverStand();
    ~DriverStand() override;

    /// The stand as what it is here.
    static DriverStand& Instance() { return static_cast<DriverStand&>(Stand()); }

    std::shared_ptr<TableDevice> Plug(unsigned socket, const TableDevice::Traits& traits = {}) override;
    void Unplug(unsigned socket) override;
    Lines Held() override { return relay->Open(); }
    const UsbWords& Words() const override;

    /// Announces the socket's interface and lets it be opened.
    /// @param padding  characters more than usual in the interface's path
    void Link(unsigned socket, size_t padding = 0);
    /// Announces an interface that can't be opened, as of a table that goes at this moment.
    void Announce(unsigned socket, size_t padding = 0);
    /// Takes the interface back; handles that are open stay so.
    void Unlink(unsigned socket);

    std::optional<Relay> relay;  ///< as long as the driver runs

private:
    void Stop();

    SC_HANDLE manager = nullptr;
    SC_HANDLE service = nullptr;
    std::shared_ptr<TableDevice> devices[Sockets];
};

inline Relay& TheRelay() { return *DriverStand::Instance().relay; }

/// Every injected fault must have been reached.
template <class Base>
struct OverDriver : Base {
    void TearDown() override
    {
        Base::TearDown();
        EXPECT_FALSE(TheRelay().IsWaiting()) << "a fault was not reached";
    }
};

}  // namespace J4Test
