// A place in the plane of the bed or of a chart, or a way between two of them, in millimetres.
#pragma once

#include <cmath>

namespace J4Chart {

struct Point {
    double x = 0.0;
    double y = 0.0;
};

inline Point Plus(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
inline Point Minus(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
inline Point Times(Point a, double factor) { return {a.x * factor, a.y * factor}; }
inline double Dot(Point a, Point b) { return a.x * b.x + a.y * b.y; }
inline double Length(Point way) { return std::hypot(way.x, way.y); }
inline double Distance(Point from, Point to) { return Length(Minus(to, from)); }

/// The same direction, of length 1; the way must have one.
inline Point Unit(Point way) { return Times(way, 1.0 / Length(way)); }

}  // namespace J4Chart
