// Owns the table's channel and the command objects that share it.
#pragma once

#include <cstdint>
#include <string>

#include "src/Communication/j4TableComFlash.h"
#include "src/Communication/j4TableComInfo.h"
#include "src/Communication/j4TableComMisc.h"
#include "src/Communication/j4TableComMotors.h"
#include "src/SerialUSB/SerialUSB.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

class j4TableComManager {
public:
    template <class T>
    using SmartPointer = Utilities::Tools::SmartPointer<T>;

    /// Opens the channel; no command is sent. @param deviceIndex  which table, counted from 0
    explicit j4TableComManager(uint16_t deviceIndex);
    ~j4TableComManager();
    j4TableComManager(const j4TableComManager&) = delete;
    j4TableComManager& operator=(const j4TableComManager&) = delete;

    void Initialize();
    void UnInitialize();

    /// Whether the USB device answers; the one call here that throws for nothing but missing memory.
    bool IsTableConnected();
    std::string GetSerialNumber();

    /// Sends the text with its checksum and CR; it must itself begin with the start byte and the command.
    void WriteSerialData(const std::string& text);
    /// Bytes as they come, without any check. @param timeout  milliseconds
    std::string ReadSerialData(int32_t count, int32_t timeout);
    void WriteToSerialLogFile(const std::string& text);

    // Copies, to be held for the call in hand only.
    SmartPointer<j4TableComInfo> GetInfo() const { return info; }
    SmartPointer<j4TableComMotors> GetMotors() const { return motors; }
    SmartPointer<j4TableComMisc> GetMisc() const { return misc; }
    SmartPointer<j4TableComFlash> GetFlash() const { return flash; }

private:
    uint16_t deviceIndex;
    SmartPointer<LowLevel::SerialUSB> serial;
    SmartPointer<j4TableComInfo> info;
    SmartPointer<j4TableComMotors> motors;
    SmartPointer<j4TableComMisc> misc;
    SmartPointer<j4TableComFlash> flash;
};

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
