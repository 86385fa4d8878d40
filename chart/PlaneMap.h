// Brings a chart from where its file says to where it really lies: the map of the plane that takes three points to
// three others, by offset, turn, scale and skew.
#pragma once

#include <array>

#include "chart/Place.h"
#include "chart/Point.h"

namespace J4Chart {

class PlaneMap {
public:
    using Corners = std::array<Point, 3>;

    /// @param from  three points that do not lie in one line
    /// @param to    where they come to
    PlaneMap(const Corners& from, const Corners& to);

    Point operator()(Point point) const;
    Place operator()(const Place& place) const;

    /// Area of the parallelogram of three points, mm²; 0 for points in one line, less than 0 the other way round.
    static double AreaOf(const Corners& corners);

private:
    Point Turned(Point vector) const;

    Point fromOrigin;
    Point toOrigin;
    Point ofX;  ///< what a vector along x becomes
    Point ofY;  ///< what a vector along y becomes
};

}  // namespace J4Chart
