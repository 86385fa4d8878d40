#include "src/Communication/j4TableComMotors.h"

#include <cmath>
#include <locale>
#include <sstream>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/HexStringHelper.h"
#include "Utilities/Tools/WrappingArithmetic.h"
#include "src/j4TableProperties.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

using Utilities::Exceptions::ResourceException;
using Utilities::Tools::HexStringHelper;
using Utilities::Tools::TruncateToInt32;
using Utilities::Tools::WrapAdd;
using Utilities::Tools::WrapMultiply;
using Utilities::Tools::WrapSubtract;

namespace {

/// Half the width of the free corridor in the tower region.
constexpr int32_t CorridorHalfWidth = 150;

// Angles above the limit are replaced by pi to four places; what lies between the two passes unchanged.
constexpr float AngleLimit = 3.15f;
constexpr float AngleAtLimit = 3.1415f;

/// The parts, one after the other, as text.
template <class... Parts>
std::string Text(const Parts&... parts)
{
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    (stream << ... << parts);
    return stream.str();
}

float ElbowAngle(float angle) { return angle > AngleLimit ? AngleAtLimit : angle < 0.0f ? 0.0f : angle; }

float ShoulderAngle(float angle)
{
    return angle > AngleLimit ? AngleAtLimit : angle < -AngleLimit ? -AngleAtLimit : angle;
}

/// Angle at the elbow from its cosine. @throws IllegalPositionException when the point is out of reach
float ElbowFromCosine(float cosine, float x, float y)
{
    const float angle = acosf(cosine);
    if (std::isnan(angle)) {
        throw IllegalPositionException(Text("Invalid position (", x, "/", y, ")."));
    }
    return angle;
}

/// Direction of the first arm, for a point at the given reach from the elbow.
float ShoulderFromElbow(float x, float y, float elbow, float reach, float arm)
{
    return ShoulderAngle(atan2f(y, x) - atan2f(sinf(elbow) * reach, cosf(elbow) * reach + arm));
}

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

/// The error goes into the text as one raw character, which is what applications know.
[[noreturn]] void ThrowUnknownError(uint8_t error) { throw DeviceErrorException(Text("unknown error - ", error)); }

}  // namespace

void j4TableComMotors::SetLimits(int32_t xMin, int32_t xMax, int32_t yMin, int32_t yMax, uint16_t speedMin,
                                 uint16_t speedMax, int32_t armLength, int32_t sensorReach, int32_t visorBack,
                                 int32_t visorSide)
try {
    this->xMin = xMin;
    this->xMax = xMax;
    this->yMin = yMin;
    this->yMax = yMax;
    this->speedMin = speedMin;
    this->speedMax = speedMax;
    this->armLength = armLength;
    this->sensorReach = sensorReach;
    this->visorBack = visorBack;
    this->visorSide = visorSide;
    visorAlong = static_cast<float>(WrapSubtract(sensorReach, visorBack));
    visorReach = sqrtf(visorAlong * visorAlong + static_cast<float>(WrapMultiply(visorSide, visorSide)));
    visorAngle = atanf(static_cast<float>(visorSide) / visorAlong);
}
J4T_TRACE_FRAME

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
    if (tableProperties != nullptr && tableProperties->GetProperty(PropertyId::CheckRange).AsLong() == 0) {
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
    if (sensorX < xMin || sensorX > xMax) {
        throw IllegalPositionException(Text("Invalid x range (", sensorX, " != [", xMin, ",", xMax, "])."));
    }
    if (sensorY < yMin || sensorY > yMax) {
        throw IllegalPositionException(Text("Invalid y range (", sensorY, " != [", yMin, ",", yMax, "])."));
    }
    const int32_t squares = WrapAdd(WrapMultiply(sensorX, sensorX), WrapMultiply(sensorY, sensorY));
    const double radius = std::sqrt(static_cast<double>(squares));
    const int32_t innerRadius = WrapSubtract(armLength, sensorReach);
    if (radius < innerRadius || radius > WrapAdd(armLength, sensorReach)) {
        throw IllegalPositionException(Text("Invalid position (", sensorX, "/", sensorY, ") arms too short/long."));
    }
    if (sensorY < innerRadius && visorY < innerRadius &&
        (sensorX < WrapSubtract(innerRadius, CorridorHalfWidth) || sensorX > WrapAdd(innerRadius, CorridorHalfWidth))) {
        throw IllegalPositionException(Text("Invalid position (", sensorX, "/", sensorY, ") tower side region."));
    }
}
J4T_TRACE_FRAME

void j4TableComMotors::CalcVisierToSensor(float& x, float& y) const
try {
    const float arm = static_cast<float>(armLength);
    const float sensor = static_cast<float>(sensorReach);
    const float armSquare = static_cast<float>(WrapMultiply(armLength, armLength));
    const float cosine = (x * x + y * y - armSquare - visorReach * visorReach) /
                         (static_cast<float>(WrapMultiply(2, armLength)) * visorReach);
    const float visorElbow = ElbowFromCosine(cosine, x, y);
    const float elbow = ElbowAngle(visorElbow + visorAngle);
    const float shoulder = ShoulderFromElbow(x, y, visorElbow, visorReach, arm);
    const float sum = elbow + shoulder;
    x = cosf(sum) * sensor + cosf(shoulder) * arm;
    y = sinf(sum) * sensor + sinf(shoulder) * arm;
}
J4T_TRACE_FRAME

void j4TableComMotors::CalcSensorToVisier(float& x, float& y) const
try {
    const float arm = static_cast<float>(armLength);
    const float sensor = static_cast<float>(sensorReach);
    const float armSquare = static_cast<float>(WrapMultiply(armLength, armLength));
    const float sensorSquare = static_cast<float>(WrapMultiply(sensorReach, sensorReach));
    const float cosine = (x * x + y * y - armSquare - sensorSquare) /
                         static_cast<float>(WrapMultiply(WrapMultiply(2, sensorReach), armLength));
    const float sensorElbow = ElbowFromCosine(cosine, x, y);
    const float elbow = ElbowAngle(sensorElbow - visorAngle);
    const float shoulder = ShoulderFromElbow(x, y, sensorElbow, sensor, arm);
    const float sum = shoulder + elbow;
    x = cosf(sum) * visorReach + cosf(shoulder) * arm;
    y = sinf(shoulder) * arm + sinf(sum) * visorReach;
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
