// The table's two arms and their work area: which pose puts sensor or visor on a point, and which points are allowed.
// A first arm turns about the tower, a second about the elbow; the second carries the sensor and, beside it, the
// visor.
//
// Coordinates and lengths are tenths of a millimetre, the origin is the tower's axis.
#pragma once

#include <cstdint>

namespace Kestrelon::DeviceDriver::J4T::Communication {

/// A plain value; without an arm and a work area until it is given them.
class j4TableArmGeometry {
public:
    j4TableArmGeometry() = default;

    /// @param xMin, xMax, yMin, yMax  work area of the sensor, both ends allowed
    /// @param armLength    tower axis to elbow
    /// @param sensorReach  elbow to sensor, along the second arm
    /// @param visorBack    how far the visor stands back from the sensor along the second arm
    /// @param visorSide    how far the visor stands to the side of the second arm's axis
    j4TableArmGeometry(int32_t xMin, int32_t xMax, int32_t yMin, int32_t yMax, int32_t armLength, int32_t sensorReach,
                       int32_t visorBack, int32_t visorSide);

    /// A visor position becomes the sensor position of the same pose. @throws IllegalPositionException
    void VisorToSensor(float& x, float& y) const;
    /// A sensor position becomes the visor position of the same pose. @throws IllegalPositionException
    void SensorToVisor(float& x, float& y) const;

    /// @param visorY  the visor's y while the sensor is at x, y
    /// @throws IllegalPositionException for a sensor position that the arm can't reach or must not
    void CheckSensorPosition(int32_t x, int32_t y, int32_t visorY) const;

private:
    int32_t xMin = 0;
    int32_t xMax = 0;
    int32_t yMin = 0;
    int32_t yMax = 0;
    int32_t armLength = 0;
    int32_t sensorReach = 0;
    float visorReach = 0.0f;  ///< elbow to visor
    float visorAngle = 0.0f;  ///< at the elbow, between sensor and visor
};

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
