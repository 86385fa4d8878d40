// The two-link arm: a first arm from the tower's axis to the elbow, a second one that carries the sensor at
// its end and the visor a little behind and beside it. Turns the place of one into the place of the other.
#pragma once

#include <optional>

#include "simulator/ground/Point.h"

namespace J4Bench {

class Kinematics {
public:
    /// All lengths in tenths of a millimetre.
    /// @param visorBack  how far the visor stands behind the sensor, along the second arm
    /// @param visorSide  how far the visor stands beside the second arm's axis
    Kinematics(double armLength, double sensorReach, double visorBack, double visorSide);

    /// Where the sensor is while the visor is here; nothing when the arm can't bring the visor here.
    std::optional<Point> VisorToSensor(Point visor) const
    {
        return Convert(visor, visorReach, sensorReach, visorAngle);
    }

    /// Where the visor is while the sensor is here; nothing when the arm can't bring the sensor here.
    std::optional<Point> SensorToVisor(Point sensor) const
    {
        return Convert(sensor, sensorReach, visorReach, -visorAngle);
    }

private:
    /// @param angle  from the known point to the wanted one, seen from the elbow
    std::optional<Point> Convert(Point known, double knownReach, double wantedReach, double angle) const;

    double armLength;
    double sensorReach;
    double visorReach;
    double visorAngle;
};

}  // namespace J4Bench
