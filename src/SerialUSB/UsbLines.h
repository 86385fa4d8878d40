// What shows of the bench at the computer's end of the USB cables, as abstract classes: a program that finds the bench at
// run time, and so does not link it, reaches the tables by them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

/// The USB-to-serial bridge in a table. No call throws.
class UsbLine {
public:
    enum class Status { Done, Removed, Stalled };

    virtual ~UsbLine() = default;

    /// What opening, closing and asking for a descriptor need: is the device still there?
    virtual Status Probe() = 0;

    /// One vendor request without data.
    virtual Status Control(uint8_t request, uint16_t value) = 0;

    /// One bulk OUT transfer.
    virtual Status Write(std::string_view data) = 0;

    /// One bulk IN transfer.
    /// @param length  in: room in buffer; out: bytes received
    virtual Status Read(uint8_t* buffer, size_t& length) = 0;

    /// Adds an event such as "open 0" to the journal.
    virtual void Note(const std::string& event) = 0;
};

class UsbLines {
public:
    virtual ~UsbLines() = default;

    /// Why the bench is not to be worked with, empty when it is.
    virtual std::string Refusal() = 0;

    /// How many tables are plugged in.
    virtual size_t LineCount() = 0;

    /// The table at this place, nullptr where there is none; the serial number that its USB device shows.
    virtual std::shared_ptr<UsbLine> LineAt(size_t index, std::string& serialNumber) = 0;

    /// The bench's time, and a wait in it.
    virtual uint32_t Milliseconds() = 0;
    virtual void Pause(uint32_t milliseconds) = 0;
};

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
