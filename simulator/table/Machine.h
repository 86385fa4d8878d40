// One machine's measures: the arm, the work area, the speed, and where the white tile lies. Decides which
// targets the arm may go to.
#pragma once

#include <cstdint>
#include <optional>

#include "simulator/ground/Point.h"
#include "simulator/table/Kinematics.h"

namespace J4Bench {

struct Machine {
    // Tenths of a millimetre.
    int32_t armLength = 5000;
    int32_t sensorReach = 4000;
    int32_t visorSide = 300;
    int32_t visorBack = 500;
    int32_t tileX = 1000;
    int32_t tileY = 800;

    // Permitted places of the sensor, millimetres.
    int32_t xMax = 800;
    int32_t xMin = -100;
    int32_t yMax = 800;
    int32_t yMin = -100;

    int32_t maximumSpeed = 400;  ///< mm/s

    /// Half of the width of the corridor that leads past the tower, tenths of a millimetre.
    static constexpr int32_t CorridorHalfWidth = 150;

    Kinematics Arm() const;

    /// The middle of the white tile.
    Point Tile() const;

    /// The place of the sensor that brings visor or sensor to target; nothing when the arm can't or may not go
    /// there.
    std::optional<Point> SensorAt(Point target, bool isVisor) const;
};

}  // namespace J4Bench
