// A point on the table: two coordinates with the unit that they are given in.
#pragma once

#include <cstdint>

namespace Kestrelon::DeviceDriver::J4T {

enum PositionUnit : int32_t {
    PositionUnitMillimetre = 0,
    PositionUnitTenthMillimetre = 1,  ///< the table's own unit
    PositionUnitInch = 2,             ///< 25.4 mm
    PositionUnitUserDefined = 3,      ///< unitFactor millimetres
};

struct Position {
    double x = 0.0;
    double y = 0.0;
    PositionUnit unit = PositionUnitMillimetre;
    double unitFactor = 0.0;  ///< millimetres per unit, for PositionUnitUserDefined only

    /// Gives the coordinates another unit without changing their numbers.
    /// @throws CalculationProblemException for a user-defined unit with factor 0
    void SetUnit(PositionUnit newUnit, double factor);

    /// Changes the unit and converts the coordinates. @throws CalculationProblemException as SetUnit and Convert
    void ConvertTo(PositionUnit newUnit, double factor);

    /// A number of this object's unit in another unit.
    /// @throws CalculationProblemException for an unknown unit or a target factor of 0
    double Convert(double value, PositionUnit targetUnit, double targetFactor) const;

    /// Adds a position in any unit; the sum keeps this object's unit.
    Position& operator+=(const Position& other);
};

}  // namespace Kestrelon::DeviceDriver::J4T
