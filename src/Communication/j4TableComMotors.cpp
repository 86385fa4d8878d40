#include "src/Communication/j4TableComMotors.h"

#include <cmath>
#include <string>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/HexStringHelper.h"
#include "Utilities/Tools/StringTools.h"
#include "Utilities/Tools/WrappingArithmetic.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

using Utilities::Exceptions::ResourceException;
using Utilities::Tools::HexStringHelper;
using Utilities::Tools::Text;
using Utilities::Tools::TruncateToInt32;

namespace {

const char* InitializeErrorText(uint8_t error)
{
    switch (error) {
    case 1:
        return "Position out of range.";
    case 3:
        return "Maximum accuracy exceeded.";
    case 4:
        return "Current limit reached.";
    case 5:
        return "Null indices not fount.";
    case 6:
        return "Initialisation interrupted.";
    case 7:
        return "Invalid command in current mode.";
    case 8:
        return "No configuration data available.";
    case 9:
        return "Invalid configuration data.";
    case 10:
        return "Wrong hardware.";
    default:
        return "unknown error";
    }
}

/// The error goes into the text as one raw character.
[[noreturn]] void ThrowUnknownError(uint8_t error) { throw DeviceErrorException(Text("unknown error - ", error)); }

}  // namespace

void j4TableComMotors::SetLimits(int32_t xMin, int32_t xMax, int32_t yMin, int32_t yMax, uint16_t speedMin,
                                 uint16_t speedMax, int32_t armLength, int32_t sensorReach, int32_t visorBack,
                                 int32_t visorSide)
{
    geometry = j4TableArmGeometry(xMin, xMax, yMin, yMax, armLength, sensorReach, visorBack, visorSide);
    this->speedMin = speedMin;
    this->speedMax = speedMax;
}

void j4TableComMotors::Initialize()
try {
    j4TableComCommand command(Commands::Initialize);
    SendAndReceive2(command);
    if (command.errorByte != 0) {
        throw DeviceErrorException(std::string("Device initialization failed : ") +
                                   InitializeErrorText(command.errorByte) + " (" + command.GetErrorText() + ").");
    }
}
J4T_TRACE_FRAME

void j4TableComMotors::GoHome()
try {
    j4TableComCommand command(Commands::GoHome);
    SendAndReceive2(command);
    if (command.errorByte != 0) {
        throw DeviceErrorException("Can't find white plate (" + command.GetErrorText() + ").");
    }
}
J4T_TRACE_FRAME

void j4TableComMotors::Move(int32_t x, int32_t y, uint16_t speed, bool isVisor, bool isScan)
try {
    j4TableComCommand command = MoveStart(x, y, speed, isVisor, isScan);
    MoveEnd(command);
}
J4T_TRACE_FRAME

j4TableComCommand j4TableComMotors::MoveStart(int32_t x, int32_t y, uint16_t speed, bool isVisor, bool isScan)
try {
    CheckXYRange(x, y, isVisor);
    CheckSpeed(speed);
    j4TableComCommand command(Commands::MoveStart, static_cast<uint8_t>(2 * isScan + isVisor));
    command.SetSendData(HexStringHelper::ToHexString(x, 4) + HexStringHelper::ToHexString(y, 4) +
                        HexStringHelper::ToHexString(speed, 4));
    SendAndReceive(command);
    return command;
}
J4T_TRACE_FRAME

void j4TableComMotors::MoveEnd(j4TableComCommand& command)
try {
    Receive(command);
    ThrowIfMoveError(command.errorByte);
}
J4T_TRACE_FRAME

void j4TableComMotors::GetPosition(int32_t& x, int32_t& y, bool isVisor)
try {
    j4TableComCommand command(Commands::GetPosition, isVisor);
    GetEncoders(command, x, y);
}
J4T_TRACE_FRAME

void j4TableComMotors::GetEncoders(j4TableComCommand& command, int32_t& x, int32_t& y)
try {
    SendAndReceive2(command);
    ThrowIfEncoderError(command.errorByte);
    const std::string reply = command.GetReceiveData();
    x = HexStringHelper::SignedShortFromHexString(reply.substr(0, 4));
    y = HexStringHelper::SignedShortFromHexString(reply.substr(4, 4));
}
J4T_TRACE_FRAME

void j4TableComMotors::HoldPosition(bool hold)
try {
    j4TableComCommand command(Commands::HoldPosition, hold);
    SendAndReceive2(command);
    ThrowIfError(command.errorByte);
}
J4T_TRACE_FRAME

void j4TableComMotors::SetScanDelay(uint16_t delay)
try {
    j4TableComCommand command(Commands::SetScanDelay);
    command.SetSendData(HexStringHelper::ToHexString(delay, 4));
    SendAndReceive2(command);
    ThrowIfError(command.errorByte);
}
J4T_TRACE_FRAME

void j4TableComMotors::CheckSpeed(uint16_t speed) const
try {
    if (speed < speedMin || speed > speedMax) {
        throw ResourceException(Text("Invalid speed (", speed, " != [", speedMin, ",", speedMax, "])."));
    }
}
J4T_TRACE_FRAME

void j4TableComMotors::CheckXYRange(int32_t x, int32_t y, bool isVisor) const
try {
    if (checksTargets && !checksTargets()) {
        return;
    }
    int32_t sensorX = x;
    int32_t sensorY = y;
    int32_t visorX = x;
    int32_t visorY = y;
    if (isVisor) {
        TransformPosition(x, y, sensorX, sensorY, true);
    } else {
        TransformPosition(x, y, visorX, visorY, false);
    }
    geometry.CheckSensorPosition(sensorX, sensorY, visorY);
}
J4T_TRACE_FRAME

void j4TableComMotors::CalcVisierToSensor(float& x, float& y) const
try {
    geometry.VisorToSensor(x, y);
}
J4T_TRACE_FRAME

void j4TableComMotors::CalcSensorToVisier(float& x, float& y) const
try {
    geometry.SensorToVisor(x, y);
}
J4T_TRACE_FRAME

void j4TableComMotors::TransformPosition(int32_t x, int32_t y, int32_t& resultX, int32_t& resultY,
                                         bool visorToSensor) const
try {
    float convertedX = static_cast<float>(x);
    float convertedY = static_cast<float>(y);
    if (visorToSensor) {
        CalcVisierToSensor(convertedX, convertedY);
    } else {
        CalcSensorToVisier(convertedX, convertedY);
    }
    if (std::isnan(convertedX) || std::isnan(convertedY)) {
        throw IllegalPositionException(Text("Invalid position (", convertedX, "/", convertedY, ")."));
    }
    resultX = TruncateToInt32(convertedX);
    resultY = TruncateToInt32(convertedY);
}
J4T_TRACE_FRAME

void j4TableComMotors::ThrowIfError(uint8_t error)
try {
    if (error != 0) {
        ThrowUnknownError(error);
    }
}
J4T_TRACE_FRAME

void j4TableComMotors::ThrowIfMoveError(uint8_t error)
try {
    switch (error) {
    case 0:
        return;
    case 1:
        throw IllegalPositionException("Position out of range.");
    case 2:
        throw ResourceException("Speed out of range.");
    case 3:
        throw PositionNotReachedException("Maximum accuracy exceeded.");
    case 4:
        throw PositionNotReachedException("Current limit reached.");
    case 8:
        throw FirmwareException("No configuration data available.");
    case 9:
        throw FirmwareException("Invalid configuration data.");
    default:
        ThrowUnknownError(error);
    }
}
J4T_TRACE_FRAME

void j4TableComMotors::ThrowIfEncoderError(uint8_t error)
try {
    switch (error) {
    case 0:
        return;
    case 1:
        throw FirmwareException("No config block.");
    case 2:
        throw FirmwareException("Logical error in config block.");
    default:
        ThrowUnknownError(error);
    }
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
