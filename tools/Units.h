// The unit in which the person at the table gives and reads places and lengths; inside, everything is millimetres.
#pragma once

#include <string>

#include "tools/Point.h"

namespace J4Tool {

class Units {
public:
    enum class Unit { Millimetre, Inch };

    explicit Units(Unit unit = Unit::Millimetre) : unit(unit) {}

    double ToMillimetres(double value) const { return value * MillimetresPerUnit(); }
    double FromMillimetres(double value) const { return value / MillimetresPerUnit(); }
    Point ToMillimetres(Point point) const { return {ToMillimetres(point.x), ToMillimetres(point.y)}; }
    Point FromMillimetres(Point point) const { return {FromMillimetres(point.x), FromMillimetres(point.y)}; }

    const char* Name() const { return unit == Unit::Inch ? "inch" : "mm"; }

    /// A length for reading, as fine as the table works (a tenth of a millimetre), with the unit.
    std::string Text(double millimetres) const;

private:
    double MillimetresPerUnit() const { return unit == Unit::Inch ? 25.4 : 1.0; }

    Unit unit;
};

}  // namespace J4Tool
