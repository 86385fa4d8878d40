#include "src/Communication/j4TableCommunication.h"

#include <algorithm>
#include <cstddef>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/Clock.h"
#include "Utilities/Tools/HexStringHelper.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

using LowLevel::SerialUSB;
using Utilities::Tools::HexStringHelper;
using Utilities::Tools::SmartPointer;
namespace Clock = Utilities::Tools::Clock;

namespace {

constexpr char RequestStart = ';';
constexpr char ReplyStart = ':';
constexpr char CarriageReturn = '\r';

/// Foreign frames that are read before a reply is given up.
constexpr int ReadAttempts = 5;

/// What is left to wait for a reply, in milliseconds, when a foreign frame used up the time-out.
constexpr uint32_t LastChance = 10;

/// Length of a reply's header, with start byte, acknowledge, command and sub-command.
std::size_t HeaderLength(const j4TableComCommand& command) { return command.HasSubCommand() ? 4 : 3; }

/// Value of an error character, a base-36 digit. @throws CommunicationDataException
uint8_t ErrorValue(char character)
{
    if (character >= '0' && character <= '9') {
        return static_cast<uint8_t>(character - '0');
    }
    if (character >= 'A' && character <= 'Z') {
        return static_cast<uint8_t>(character - 'A' + 10);
    }
    if (character >= 'a' && character <= 'z') {
        return static_cast<uint8_t>(character - 'a' + 10);
    }
    throw CommunicationDataException("Invalid error byte.");
}

/// Keeps the two time-outs of a command while attempts shorten them.
class SavedTimeouts {
public:
    explicit SavedTimeouts(j4TableComCommand& command)
        : command(command), ackTimeout(command.ackTimeout), answerTimeout(command.answerTimeout)
    {}
    ~SavedTimeouts()
    {
        command.ackTimeout = ackTimeout;
        command.answerTimeout = answerTimeout;
    }
    SavedTimeouts(const SavedTimeouts&) = delete;
    SavedTimeouts& operator=(const SavedTimeouts&) = delete;

    void Shorten(uint32_t elapsed)
    {
        Shorten(command.ackTimeout, ackTimeout, elapsed);
        Shorten(command.answerTimeout, answerTimeout, elapsed);
    }

private:
    static void Shorten(uint32_t& timeout, uint32_t saved, uint32_t elapsed)
    {
        timeout -= elapsed;
        if (timeout > saved) {
            timeout = std::min(saved, LastChance);
        }
    }

    j4TableComCommand& command;
    const uint32_t ackTimeout;
    const uint32_t answerTimeout;
};

}  // namespace

j4TableCommunication::j4TableCommunication(const SmartPointer<SerialUSB>& channel) : channel(channel) {}

uint8_t j4TableCommunication::CalculateChecksum(const std::string& text)
{
    uint8_t checksum = 0;
    for (const char character : text) {
        checksum = static_cast<uint8_t>(checksum - static_cast<uint8_t>(character));
    }
    return checksum;
}

std::string j4TableCommunication::ChecksumText(const std::string& text)
{
    return HexStringHelper::ToHexString(CalculateChecksum(text), 2);
}

bool j4TableCommunication::CheckChecksum(const std::string& text)
try {
    if (text.size() < 2) {
        return false;
    }
    const std::string digits = text.substr(text.size() - 2);
    return HexStringHelper::CharFromHexString(digits) == CalculateChecksum(text.substr(0, text.size() - 2));
}
J4T_TRACE_FRAME

std::string j4TableCommunication::FormatCommand(const j4TableComCommand& command)
try {
    std::string frame(1, RequestStart);
    frame += static_cast<char>(command.command);
    if (command.HasSubCommand()) {
        frame += static_cast<char>(command.subCommand);
    }
    frame.append(command.sendData.begin(), command.sendData.end());
    return frame + ChecksumText(frame) + CarriageReturn;
}
J4T_TRACE_FRAME

void j4TableCommunication::SendCommand(const j4TableComCommand& command)
try {
    channel->WriteString(FormatCommand(command));
}
J4T_TRACE_FRAME

std::string j4TableCommunication::ReceiveData(int32_t count, uint32_t timeout)
try {
    std::string data = channel->Read(count, static_cast<int32_t>(timeout));
    if (data.size() != static_cast<std::size_t>(count)) {
        throw CommunicationTimeoutException("Read timeout.");
    }
    return data;
}
J4T_TRACE_FRAME

/// A time-out begins its trace with the caller.
std::string j4TableCommunication::ReceiveByte(uint32_t timeout, const char* timeoutText)
{
    try {
        return ReceiveData(1, timeout);
    } catch (const CommunicationTimeoutException&) {
        throw CommunicationTimeoutException(timeoutText);
    }
}

void j4TableCommunication::ParseCommand(j4TableComCommand& command)
try {
    const std::size_t header = HeaderLength(command);
    const uint32_t timeout = command.acknowledge == AcknowledgeAccepted ? command.answerTimeout : command.ackTimeout;
    std::string frame = ReceiveData(static_cast<int32_t>(header + 3), timeout);
    while (frame[0] != ReplyStart) {
        // A frame with a wrong start is swallowed to its end: no search for a later start byte.
        frame += ReceiveByte(timeout, "Missing ':'.");
        frame.resize(1);
    }
    const int32_t acknowledge = j4TableComCommand::TranslateAcknowledge(static_cast<uint8_t>(frame[1]));
    if (acknowledge == AcknowledgeNone) {
        throw CommunicationDataException("No valid acknowledge.");
    }
    if (static_cast<uint8_t>(frame[2]) != command.command ||
        (command.HasSubCommand() && static_cast<uint8_t>(frame[3]) != command.subCommand)) {
        throw GeneralCommunicationException("Not matching acknowledge.");
    }
    if (acknowledge == AcknowledgeData) {
        frame += ReceiveData(command.expectedLength + 1, command.answerTimeout);
    }
    while (frame.back() != CarriageReturn) {
        frame += ReceiveByte(command.ackTimeout, "Missing CR.");
    }
    if (!CheckChecksum(frame.substr(0, frame.size() - 1))) {
        throw CommunicationDataException("Checksum not valid.");
    }
    if (frame.size() > header + 3) {
        const uint8_t errorByte = ErrorValue(frame[header]);
        if (command.expectedLength > 0) {
            command.SetReceiveData(frame.substr(header + 1, static_cast<std::size_t>(command.expectedLength)));
        }
        command.errorByte = errorByte;
    }
    command.acknowledge = acknowledge;
}
J4T_TRACE_FRAME

void j4TableCommunication::ReadCommand(j4TableComCommand& command)
try {
    SavedTimeouts saved(command);
    for (int attempt = 0; attempt < ReadAttempts; ++attempt) {
        const uint32_t start = Clock::GetTickCount();
        try {
            ParseCommand(command);
            return;
        } catch (const GeneralCommunicationException&) {
            // A late reply to an earlier request: wait for ours in what is left of the time.
            saved.Shorten(Clock::GetTickCount() - start);
        }
    }
}
J4T_TRACE_FRAME

void j4TableCommunication::SendAndReceive(j4TableComCommand& command)
try {
    SendCommand(command);
    ReadCommand(command);
    switch (command.acknowledge) {
    case AcknowledgeAccepted:
    case AcknowledgeData:
        return;
    case AcknowledgeRejected:
        throw GeneralCommunicationException("Invalid command (NAK).");
    case AcknowledgeBusy:
        throw DeviceErrorException("Device busy.");
    default:
        throw GeneralCommunicationException("Unknown acknowledge.");
    }
}
J4T_TRACE_FRAME

void j4TableCommunication::Receive(j4TableComCommand& command)
try {
    ReadCommand(command);
}
J4T_TRACE_FRAME

void j4TableCommunication::SendAndReceive2(j4TableComCommand& command)
try {
    const auto attempt = [&] {
        try {
            SendAndReceive(command);
            if (command.acknowledge == AcknowledgeAccepted) {
                ReadCommand(command);
            }
            return true;
        } catch (const CommunicationException& exception) {
            const bool lostOrDamaged = dynamic_cast<const CommunicationTimeoutException*>(&exception) != nullptr ||
                                       dynamic_cast<const CommunicationDataException*>(&exception) != nullptr;
            if (!lostOrDamaged || --command.retries <= 0) {
                throw;
            }
            return false;
        }
    };
    while (!attempt()) {
        Clock::Sleep(command.retryDelay);
    }
}
J4T_TRACE_FRAME

std::string j4TableCommunication::Ask(const CommandDefinition& definition, uint8_t selector)
{
    j4TableComCommand command(definition, selector);
    SendAndReceive2(command);
    return command.GetReceiveData();
}

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
