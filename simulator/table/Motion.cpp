#include "simulator/table/Motion.h"

#include <algorithm>
#include <cmath>

namespace J4Bench {

Motion::Motion(Point start, Point end, int64_t begin, double speed, double acceleration)
    : start(start), end(end), begin(begin), profile(std::hypot(end.x - start.x, end.y - start.y), speed, acceleration)
{
    stop = begin + static_cast<int64_t>(std::ceil(profile.Duration() * 1e6));
}

void Motion::StopAt(int64_t moment) { stop = std::clamp(moment, begin, stop); }

double Motion::DistanceAt(int64_t moment) const
{
    return profile.DistanceAt(1e-6 * static_cast<double>(std::min(moment, stop) - begin));
}

Point Motion::PositionAt(int64_t moment) const
{
    const double distance = DistanceAt(moment);
    if (distance >= profile.Distance()) {
        return end;
    }
    const double part = distance / profile.Distance();
    return Point{start.x + part * (end.x - start.x), start.y + part * (end.y - start.y)};
}

}  // namespace J4Bench
