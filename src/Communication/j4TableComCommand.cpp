#include "src/Communication/j4TableComCommand.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

j4TableComCommand::j4TableComCommand(uint8_t command, uint8_t subCommand, int32_t expectedLength)
    : expectedLength(expectedLength)
{
    Empty();
    this->command = command;
    this->subCommand = subCommand;
}

j4TableComCommand::j4TableComCommand(const CommandDefinition& definition, uint8_t selector)
    : j4TableComCommand(definition.letter, static_cast<uint8_t>(definition.subCommand + selector),
                        definition.expectedLength)
{
    answerTimeout = definition.answerTimeout;
}

void j4TableComCommand::Empty()
{
    command = ' ';
    subCommand = NoSubCommand;
    errorByte = NoErrorByte;
    sendData.clear();
    receiveData.clear();
    acknowledge = AcknowledgeNone;
    retries = 0;
    retryDelay = 500;
}

int32_t j4TableComCommand::TranslateAcknowledge(uint8_t byte)
{
    switch (byte) {
    case '!':
        return AcknowledgeAccepted;
    case '&':
        return AcknowledgeRejected;
    case '#':
        return AcknowledgeBusy;
    case '$':
        return AcknowledgeData;
    default:
        return AcknowledgeNone;
    }
}

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
