#include "chart/PlaneMap.h"

namespace J4Chart {

namespace {

Point Difference(Point left, Point right) { return {left.x - right.x, left.y - right.y}; }

Point Sum(Point left, Point right) { return {left.x + right.x, left.y + right.y}; }

Point Combined(double a, Point first, double b, Point second)
{
    return {a * first.x + b * second.x, a * first.y + b * second.y};
}

}  // namespace

PlaneMap::PlaneMap(const Corners& from, const Corners& to) : fromOrigin(from[0]), toOrigin(to[0])
{
    const Point along = Difference(from[1], from[0]);
    const Point down = Difference(from[2], from[0]);
    const Point newAlong = Difference(to[1], to[0]);
    const Point newDown = Difference(to[2], to[0]);
    // A vector is so much of the way along and so much of the way down, here as there.
    const double area = AreaOf(from);
    ofX = Combined(down.y / area, newAlong, -along.y / area, newDown);
    ofY = Combined(-down.x / area, newAlong, along.x / area, newDown);
}

Point PlaneMap::Turned(Point vector) const { return Combined(vector.x, ofX, vector.y, ofY); }

Point PlaneMap::operator()(Point point) const { return Sum(toOrigin, Turned(Difference(point, fromOrigin))); }

Place PlaneMap::operator()(const Place& place) const
{
    return {(*this)(place.centre), Turned(place.along), Turned(place.across)};
}

double PlaneMap::AreaOf(const Corners& corners)
{
    const Point along = Difference(corners[1], corners[0]);
    const Point down = Difference(corners[2], corners[0]);
    return along.x * down.y - along.y * down.x;
}

}  // namespace J4Chart
