#include "chart/Place.h"

#include <cmath>

namespace J4Chart {

Place Place::Upright(Point centre, double width, double height)
{
    return {centre, {width / 2.0, 0.0}, {0.0, height / 2.0}};
}

double Place::Width() const { return 2.0 * std::hypot(along.x, along.y); }

double Place::Height() const { return 2.0 * std::hypot(across.x, across.y); }

}  // namespace J4Chart
