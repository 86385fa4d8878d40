// One request to the table with its reply: a plain value on the issuer's stack, used for one exchange.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "src/Communication/j4TableCommands.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

enum Acknowledge : int32_t {
    AcknowledgeAccepted = 0,  ///< "!": a second reply follows when the operation ends
    AcknowledgeRejected = 1,  ///< "&": refused
    AcknowledgeBusy = 2,      ///< "#": busy
    AcknowledgeData = 3,      ///< "$": the final answer, with its data
    AcknowledgeNone = 4,      ///< no valid acknowledge
};

class j4TableComCommand {
public:
    /// Value of errorByte when no reply carried one.
    static constexpr uint8_t NoErrorByte = 0xFF;

    j4TableComCommand(uint8_t command, uint8_t subCommand, int32_t expectedLength);

    /// @param selector  added to the definition's sub-command
    explicit j4TableComCommand(const CommandDefinition& definition, uint8_t selector = 0);
    virtual ~j4TableComCommand() = default;
    j4TableComCommand(const j4TableComCommand&) = default;
    j4TableComCommand& operator=(const j4TableComCommand&) = default;

    /// Makes the object ready for reuse; time-outs and expected length stay.
    void Empty();

    bool HasSubCommand() const { return subCommand != NoSubCommand; }
    std::string GetSendData() const { return std::string(sendData.begin(), sendData.end()); }
    std::string GetReceiveData() const { return std::string(receiveData.begin(), receiveData.end()); }
    void SetSendData(const std::string& data) { sendData.assign(data.begin(), data.end()); }
    void SetReceiveData(const std::string& data) { receiveData.assign(data.begin(), data.end()); }

    /// The error value as decimal text.
    std::string GetErrorText() const { return std::to_string(errorByte); }

    /// @return an Acknowledge
    static int32_t TranslateAcknowledge(uint8_t byte);

    uint8_t command = ' ';
    uint8_t subCommand = NoSubCommand;
    uint8_t errorByte = NoErrorByte;          ///< the table's error value, 0 for none
    int32_t expectedLength = 0;               ///< data characters that the reply is to carry
    std::vector<uint8_t> sendData;            ///< characters between command and checksum
    std::vector<uint8_t> receiveData;         ///< data characters of the reply
    uint32_t ackTimeout = DefaultTimeout;     ///< ms; first reply, and each byte until the CR
    uint32_t answerTimeout = DefaultTimeout;  ///< ms; data of a reply, and the second reply
    int32_t acknowledge = AcknowledgeNone;    ///< of the last reply
    int32_t retries = 0;                      ///< attempts of SendAndReceive2 in all; it counts them down
    uint32_t retryDelay = 500;                ///< ms between attempts
};

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
