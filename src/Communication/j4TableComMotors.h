// Drives the table's two arms: initialises the drives, finds the home position, starts and ends moves, and
// reads the position. Refuses targets that the arm can't reach before a byte is sent.
//
// Coordinates are tenths of a millimetre from the tower's axis.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>

#include "src/Communication/j4TableArmGeometry.h"
#include "src/Communication/j4TableCommunication.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

class j4TableComMotors : public j4TableCommunication {
public:
    using j4TableCommunication::j4TableCommunication;

    /// Sets work area, speeds and arm geometry; sends nothing.
    /// @param speedMin, speedMax  mm/s, both allowed
    /// @param armLength    tower axis to elbow
    /// @param sensorReach  elbow to sensor, along the second arm
    /// @param visorBack    how far the visor stands back from the sensor along the second arm
    /// @param visorSide    how far the visor stands to the side of the second arm's axis
    void SetLimits(int32_t xMin, int32_t xMax, int32_t yMin, int32_t yMax, uint16_t speedMin, uint16_t speedMax,
                   int32_t armLength, int32_t sensorReach, int32_t visorBack, int32_t visorSide);

    /// @param checks  asked before each move whether its target is to be checked; empty: always
    void SetTargetCheck(std::function<bool()> checks) { checksTargets = std::move(checks); }

    /// Brings the drives up. @throws DeviceErrorException
    void Initialize();
    /// Moves to the white tile by the motors' reference run. @throws DeviceErrorException
    void GoHome();

    /// A move from start to end. @param speed  mm/s
    void Move(int32_t x, int32_t y, uint16_t speed, bool isVisor, bool isScan);
    /// Starts a move and returns once the table has accepted it.
    /// @return the open command, to be closed by MoveEnd
    /// @throws IllegalPositionException, ResourceException before anything is sent
    j4TableComCommand MoveStart(int32_t x, int32_t y, uint16_t speed, bool isVisor, bool isScan);
    /// Waits for the end of a move. @throws what ThrowIfMoveError throws
    void MoveEnd(j4TableComCommand& command);

    void GetPosition(int32_t& x, int32_t& y, bool isVisor);
    /// The motors hold the arm (true) or let it go.
    void HoldPosition(bool hold);
    /// @param delay  ms that the table waits before a scan's motion
    void SetScanDelay(uint16_t delay);

    /// @throws ResourceException for a speed out of the limits
    void CheckSpeed(uint16_t speed) const;
    /// @throws IllegalPositionException for a target that the sensor can't reach or must not
    void CheckXYRange(int32_t x, int32_t y, bool isVisor) const;

    /// A visor position becomes the sensor position of the same pose. @throws IllegalPositionException
    void CalcVisierToSensor(float& x, float& y) const;
    /// A sensor position becomes the visor position of the same pose. @throws IllegalPositionException
    void CalcSensorToVisier(float& x, float& y) const;
    /// Either conversion on integers, truncated toward zero.
    void TransformPosition(int32_t x, int32_t y, int32_t& resultX, int32_t& resultY, bool visorToSensor) const;

    static void ThrowIfError(uint8_t error);
    static void ThrowIfMoveError(uint8_t error);
    static void ThrowIfEncoderError(uint8_t error);

private:
    void GetEncoders(j4TableComCommand& command, int32_t& x, int32_t& y);

    j4TableArmGeometry geometry;
    uint16_t speedMin = 0;
    uint16_t speedMax = 0;
    std::function<bool()> checksTargets;
};

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
