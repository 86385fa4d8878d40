// Makes the table look like a serial line: sets up the USB bridge in the table, strips the status bytes
// that it puts in front of every 64-byte packet, and hands out exactly as many bytes as are asked for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Utilities/Tools/SmartPointer.h"
#include "src/SerialUSB/Usb.h"

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

/// Calling order: OpenDevice, ClearCache, InitCom, then WriteString and Read.
class SerialUSB {
public:
    SerialUSB();
    ~SerialUSB();
    SerialUSB(const SerialUSB&) = delete;
    SerialUSB& operator=(const SerialUSB&) = delete;

    /// Opens table number index, counted from 0; closes an open one first.
    void OpenDevice(uint16_t index);
    void CloseDevice();

    /// Resets the bridge and sets its line: about 57,692 baud, 8 data bits, no parity, 1 stop bit.
    void InitCom();

    /// Throws away what the bridge held from earlier use.
    void ClearCache();

    /// Sends the bytes in one transfer. @throws CommunicationException when the channel is closed or fails
    void WriteString(const std::string& data);

    /// @param count    number of bytes wanted
    /// @param timeout  milliseconds; at least five polls of the bridge are made
    /// @return at most count bytes: fewer, or none, when the table stays silent, which is no error here
    std::string Read(int32_t count, int32_t timeout);

    /// The device's serial number. Asks the device, so that an unplugged table shows as a failure.
    std::string SerialNumber();

    /// Does nothing: no log of the traffic is kept.
    void WriteToLogFile(const std::string& text);

private:
    void ThrowIfNotOpen() const;
    void WriteDataInternal(const uint8_t* data, uint32_t length);
    void RefreshCache(int32_t& retries, bool ignoreTimeout);
    void UnpackCache(std::size_t transferred);

    Utilities::Tools::SmartPointer<Usb> usb;
    bool open = false;
    std::vector<uint8_t> cache;
    uint64_t cacheLength = 0;    ///< payload bytes not yet handed out
    uint64_t cachePosition = 0;  ///< the next of them
    std::string logFileName;
};

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
