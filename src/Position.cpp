#include "src/Position.h"

#include <string>

#include "Utilities/Exceptions/Exceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"

namespace Kestrelon::DeviceDriver::J4T {

using Utilities::Exceptions::CalculationProblemException;

namespace {

constexpr double MillimetresPerTenth = 0.1;
constexpr double MillimetresPerInch = 25.4;

void ThrowIfNoFactor(PositionUnit unit, double factor)
{
    if (unit == PositionUnitUserDefined && factor == 0.0) {
        throw CalculationProblemException("Unit factor is 0.0!");
    }
}

[[noreturn]] void ThrowUndefinedUnit(PositionUnit unit)
{
    throw CalculationProblemException("Unit not defined (" + std::to_string(static_cast<int32_t>(unit)) + ")");
}

}  // namespace

void Position::SetUnit(PositionUnit newUnit, double factor)
try {
    ThrowIfNoFactor(newUnit, factor);
    unit = newUnit;
    unitFactor = factor;
}
J4T_TRACE_FRAME

void Position::ConvertTo(PositionUnit newUnit, double factor)
try {
    ThrowIfNoFactor(newUnit, factor);
    x = Convert(x, newUnit, factor);
    y = Convert(y, newUnit, factor);
    unit = newUnit;
    unitFactor = factor;
}
J4T_TRACE_FRAME

double Position::Convert(double value, PositionUnit targetUnit, double targetFactor) const
try {
    double millimetres = 0.0;
    switch (unit) {
    case PositionUnitMillimetre:
        millimetres = value;
        break;
    case PositionUnitTenthMillimetre:
        millimetres = value * MillimetresPerTenth;
        break;
    case PositionUnitInch:
        millimetres = value * MillimetresPerInch;
        break;
    case PositionUnitUserDefined:
        millimetres = value * unitFactor;
        break;
    default:
        ThrowUndefinedUnit(unit);
    }
    switch (targetUnit) {
    case PositionUnitMillimetre:
        return millimetres;
    case PositionUnitTenthMillimetre:
        return millimetres / MillimetresPerTenth;
    case PositionUnitInch:
        return millimetres / MillimetresPerInch;
    case PositionUnitUserDefined:
        ThrowIfNoFactor(targetUnit, targetFactor);
        return millimetres / targetFactor;
    default:
        ThrowUndefinedUnit(unit);
    }
}
J4T_TRACE_FRAME

Position& Position::operator+=(const Position& other)
try {
    const bool sameUnit = unit == other.unit && (unit != PositionUnitUserDefined || unitFactor == other.unitFactor);
    Position summand = other;
    if (!sameUnit) {
        summand.ConvertTo(unit, unitFactor);
    }
    x += summand.x;
    y += summand.y;
    return *this;
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::J4T
