// Where a patch lies and how large it is. The chart may lie askew, so the sides are vectors.
#pragma once

#include "chart/Point.h"

namespace J4Chart {

struct Place {
    Point centre;  ///< mm
    Point along;   ///< from the centre to the middle of the edge that a row passes last
    Point across;  ///< the same across the row

    /// A patch whose sides lie along x and y.
    static Place Upright(Point centre, double width, double height);

    /// The same turned about its centre, from x towards y.
    /// @param radians  beside the turn that it has
    Place Turned(double radians) const;

    /// By how much the row runs from x towards y, radians.
    double Rotation() const;

    /// Length of a side, mm.
    double Width() const;
    double Height() const;
};

}  // namespace J4Chart
