#include "src/Communication/j4TableArmGeometry.h"

#include <cmath>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Tools/StringTools.h"
#include "Utilities/Tools/WrappingArithmetic.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

using Utilities::Tools::Text;
using Utilities::Tools::WrapAdd;
using Utilities::Tools::WrapMultiply;
using Utilities::Tools::WrapSubtract;

namespace {

/// Half the width of the free corridor in the tower region.
constexpr int32_t CorridorHalfWidth = 150;

// Angles above the limit are replaced by pi to four places; what lies between the two passes unchanged.
constexpr float AngleLimit = 3.15f;
constexpr float AngleAtLimit = 3.1415f;

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

}  // namespace

j4TableArmGeometry::j4TableArmGeometry(int32_t xMin, int32_t xMax, int32_t yMin, int32_t yMax, int32_t armLength,
                                       int32_t sensorReach, int32_t visorBack, int32_t visorSide)
    : xMin(xMin), xMax(xMax), yMin(yMin), yMax(yMax), armLength(armLength), sensorReach(sensorReach)
{
    const float visorAlong = static_cast<float>(WrapSubtract(sensorReach, visorBack));
    visorReach = sqrtf(visorAlong * visorAlong + static_cast<float>(WrapMultiply(visorSide, visorSide)));
    visorAngle = atanf(static_cast<float>(visorSide) / visorAlong);
}

void j4TableArmGeometry::VisorToSensor(float& x, float& y) const
{
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

void j4TableArmGeometry::SensorToVisor(float& x, float& y) const
{
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

void j4TableArmGeometry::CheckSensorPosition(int32_t x, int32_t y, int32_t visorY) const
{
    if (x < xMin || x > xMax) {
        throw IllegalPositionException(Text("Invalid x range (", x, " != [", xMin, ",", xMax, "])."));
    }
    if (y < yMin || y > yMax) {
        throw IllegalPositionException(Text("Invalid y range (", y, " != [", yMin, ",", yMax, "])."));
    }
    const int32_t squares = WrapAdd(WrapMultiply(x, x), WrapMultiply(y, y));
    const double radius = std::sqrt(static_cast<double>(squares));
    const int32_t innerRadius = WrapSubtract(armLength, sensorReach);
    if (radius < innerRadius || radius > WrapAdd(armLength, sensorReach)) {
        throw IllegalPositionException(Text("Invalid position (", x, "/", y, ") arms too short/long."));
    }
    if (y < innerRadius && visorY < innerRadius &&
        (x < WrapSubtract(innerRadius, CorridorHalfWidth) || x > WrapAdd(innerRadius, CorridorHalfWidth))) {
        throw IllegalPositionException(Text("Invalid position (", x, "/", y, ") tower side region."));
    }
}

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
