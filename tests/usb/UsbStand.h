// A computer's USB with tables to plug in and out. Each platform has a provider in a folder of its own: the library
// under test, as it is shipped, finds the tables through the system's own way and talks to them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/usb/TableDevice.h"

namespace J4Test {

/// How failures read where the library talks to the system.
struct UsbWords {
    const char* read;  ///< the calls, as a failure names them
    const char* write;
    const char* control;
    const char* serial;
    const char* gone;  ///< what went wrong
    const char* stalled;
    const char* refused;  ///< in opening
    const char* timedOut;
    std::vector<const char*> opening;  ///< the calls of the opening, one for each request; null: finds no table
    size_t longestSerial;              ///< characters of a serial number that can be told

    static std::string Failure(const std::string& call, const std::string& what)
    {
        return "Error in UsbIo function: \"" + call + "\" Error: " + what;
    }
};

class UsbStand {
public:
    /// Makes the platform's stand, on which nothing is plugged in.
    /// @throws std::exception with the reason why this machine can't have one
    static std::unique_ptr<UsbStand> Create();

    virtual ~UsbStand() = default;

    /// Plugs a table in, as a new device. Tables are counted in the order of their sockets.
    /// @param socket  0 to 3
    virtual std::shared_ptr<TableDevice> Plug(unsigned socket, const TableDevice::Traits& traits = {}) = 0;

    /// What is still open there finds its device removed. A socket may be empty.
    virtual void Unplug(unsigned socket) = 0;
    void UnplugAll()
    {
        for (unsigned socket = 0; socket < Sockets; ++socket) {
            Unplug(socket);
        }
    }

    /// What the library has open.
    virtual Lines Held() = 0;

    virtual const UsbWords& Words() const = 0;

    static constexpr unsigned Sockets = 4;
};

/// The stand of this test program.
UsbStand& Stand();

}  // namespace J4Test
