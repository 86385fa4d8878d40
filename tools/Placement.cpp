#include "tools/Placement.h"

#include <cmath>

namespace J4Tool {

Point Placement::Turned(Point direction) const
{
    const double x = direction.x * stretchX;
    const double y = direction.y * stretchY;
    return {x * std::cos(rotation) - y * std::sin(rotation), x * std::sin(rotation) + y * std::cos(rotation)};
}

Point Placement::Of(Point place) const
{
    const Point arm = Turned({place.x - middle.x, place.y - middle.y});
    return {middle.x + shift.x + arm.x, middle.y + shift.y + arm.y};
}

}  // namespace J4Tool
