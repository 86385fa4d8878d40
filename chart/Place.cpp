#include "chart/Place.h"

#include <cmath>

namespace J4Chart {

Place Place::Upright(Point centre, double width, double height)
{
    return {centre, {width / 2.0, 0.0}, {0.0, height / 2.0}};
}

Place Place::Turned(double radians) const
{
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    const auto turn = [&](Point side) { return Point{side.x * c - side.y * s, side.x * s + side.y * c}; };
    return {centre, turn(along), turn(across)};
}

double Place::Rotation() const { return std::atan2(along.y, along.x); }

double Place::Width() const { return 2.0 * Length(along); }

double Place::Height() const { return 2.0 * Length(across); }

}  // namespace J4Chart
