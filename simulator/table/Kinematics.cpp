#include "simulator/table/Kinematics.h"

#include <algorithm>
#include <cmath>

namespace J4Bench {

namespace {

// The joints' stops. An angle beyond a stop is taken as the angle at which the arm is stretched or folded,
// with the four places of pi that the firmware has; what lies between the two numbers passes as it is.
constexpr double Stop = 3.15;
constexpr double AtStop = 3.1415;

}  // namespace

Kinematics::Kinematics(double armLength, double sensorReach, double visorBack, double visorSide)
    : armLength(armLength),
      sensorReach(sensorReach),
      visorReach(std::hypot(sensorReach - visorBack, visorSide)),
      visorAngle(std::atan(visorSide / (sensorReach - visorBack)))
{}

std::optional<Point> Kinematics::Convert(Point known, double knownReach, double wantedReach, double angle) const
{
    // Law of cosines at the elbow. Of the arm's two poses only the one with a positive elbow angle exists.
    const double squared = known.x * known.x + known.y * known.y;
    const double cosine = (squared - armLength * armLength - knownReach * knownReach) / (2.0 * armLength * knownReach);
    const double knownElbow = std::acos(cosine);
    if (std::isnan(knownElbow)) {
        return std::nullopt;
    }
    const double wantedElbow = knownElbow + angle > Stop ? AtStop : std::max(knownElbow + angle, 0.0);
    double shoulder = std::atan2(known.y, known.x) -
                      std::atan2(std::sin(knownElbow) * knownReach, std::cos(knownElbow) * knownReach + armLength);
    if (std::fabs(shoulder) > Stop) {
        shoulder = std::copysign(AtStop, shoulder);
    }
    const double direction = shoulder + wantedElbow;
    return Point{std::cos(direction) * wantedReach + std::cos(shoulder) * armLength,
                 std::sin(direction) * wantedReach + std::sin(shoulder) * armLength};
}

}  // namespace J4Bench
