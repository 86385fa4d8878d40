// One machine's measures: the arm, the work area, the speed, and where the white tile lies. Decides which
// targets the arm may go to.
#pragma once

#include <cstdint>
#include <optional>

#include "simulator/ground/Point.h"
#include "simulator/table/Kinematics.h"
#include "src/TableFacts.h"

namespace J4Bench {

namespace FactoryMeasures = Kestrelon::DeviceDriver::J4T::FactoryMeasures;

struct Machine {
    // Tenths of a millimetre.
    int32_t armLength = FactoryMeasures::ArmLength;
    int32_t sensorReach = FactoryMeasures::SensorReach;
    int32_t visorSide = FactoryMeasures::VisorSide;
    int32_t visorBack = FactoryMeasures::VisorBack;
    int32_t tileX = 1000;
    int32_t tileY = 800;

    // Permitted places of the sensor, millimetres.
    int32_t xMax = FactoryMeasures::HighestPlace;
    int32_t xMin = FactoryMeasures::LowestPlace;
    int32_t yMax = FactoryMeasures::HighestPlace;
    int32_t yMin = FactoryMeasures::LowestPlace;

    int32_t maximumSpeed = 400;  ///< mm/s

    /// Half of the width of the corridor that leads past the tower, tenths of a millimetre. Stated here once more, as
    /// the whole judgement is made once more: that is how the library's is tested.
    static constexpr int32_t CorridorHalfWidth = 150;

    Kinematics Arm() const;

    /// The middle of the white tile.
    Point Tile() const;

    /// The place of the sensor that brings visor or sensor to target; nothing when the arm can't or may not go
    /// there.
    std::optional<Point> SensorAt(Point target, bool isVisor) const;
};

}  // namespace J4Bench
