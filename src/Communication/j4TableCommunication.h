// The frame layer of the table's protocol: turns a command into the bytes of a request, reads and checks
// the reply, and tells what the table answered. Base of the classes that know what the commands mean.
//
// Request: ";" command [sub-command] data checksum CR. Reply: ":" acknowledge command [sub-command] [error
// character [data]] checksum CR. The checksum, two hexadecimal digits, makes the bytes before it and its
// value add up to 0 modulo 256.
#pragma once

#include <cstdint>
#include <string>

#include "Utilities/Tools/SmartPointer.h"
#include "src/Communication/j4TableComCommand.h"
#include "src/SerialUSB/SerialUSB.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

class j4TableCommunication {
public:
    explicit j4TableCommunication(const Utilities::Tools::SmartPointer<LowLevel::SerialUSB>& channel);
    virtual ~j4TableCommunication() = default;
    j4TableCommunication(const j4TableCommunication&) = delete;
    j4TableCommunication& operator=(const j4TableCommunication&) = delete;

    /// One request and its first reply.
    /// @throws CommunicationTimeoutException, CommunicationDataException for a missing or damaged reply,
    ///         GeneralCommunicationException for a refused command, DeviceErrorException for a busy table
    void SendAndReceive(j4TableComCommand& command);

    /// A reply that is due later, for instance the end of a motion.
    void Receive(j4TableComCommand& command);

    /// The whole exchange with its second reply. After a missing or damaged reply the request is sent again
    /// while command.retries last.
    void SendAndReceive2(j4TableComCommand& command);

    /// Two's complement of the sum of all bytes.
    static uint8_t CalculateChecksum(const std::string& text);

    /// CalculateChecksum as the two digits that go on the wire.
    static std::string ChecksumText(const std::string& text);

    /// True when the last two characters are the checksum of what is before them.
    static bool CheckChecksum(const std::string& text);

protected:
    static std::string FormatCommand(const j4TableComCommand& command);

    /// Runs the whole exchange of a command without request data and gives the reply's data.
    std::string Ask(const CommandDefinition& definition, uint8_t selector = 0);

private:
    void SendCommand(const j4TableComCommand& command);
    std::string ReceiveData(int32_t count, uint32_t timeout);
    std::string ReceiveByte(uint32_t timeout, const char* timeoutText);
    void ParseCommand(j4TableComCommand& command);
    void ReadCommand(j4TableComCommand& command);

    Utilities::Tools::SmartPointer<LowLevel::SerialUSB> channel;
};

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
