#include "simulator/table/Machine.h"

#include <cmath>

namespace J4Bench {

Kinematics Machine::Arm() const { return Kinematics(armLength, sensorReach, visorBack, visorSide); }

Point Machine::Tile() const { return Point{static_cast<double>(tileX), static_cast<double>(tileY)}; }

std::optional<Point> Machine::SensorAt(Point target, bool isVisor) const
{
    const std::optional<Point> other = isVisor ? Arm().VisorToSensor(target) : Arm().SensorToVisor(target);
    if (!other) {
        return std::nullopt;
    }
    // The host judges a converted place by its whole tenths; a target on the edge must not be judged otherwise
    // here.
    const Point converted{std::trunc(other->x), std::trunc(other->y)};
    const Point sensor = isVisor ? converted : target;
    const double visorY = isVisor ? target.y : converted.y;
    const auto tenths = [](int32_t millimetres) { return double{TenthsPerMillimetre} * millimetres; };
    if (sensor.x < tenths(xMin) || sensor.x > tenths(xMax) || sensor.y < tenths(yMin) || sensor.y > tenths(yMax)) {
        return std::nullopt;
    }
    const double folded = armLength - sensorReach;
    const double distance = std::hypot(sensor.x, sensor.y);
    if (distance < folded || distance > armLength + sensorReach) {
        return std::nullopt;
    }
    const bool besideTower = sensor.y < folded && visorY < folded;
    if (besideTower && std::fabs(sensor.x - folded) > CorridorHalfWidth) {
        return std::nullopt;
    }
    return isVisor ? *other : target;
}

}  // namespace J4Bench
