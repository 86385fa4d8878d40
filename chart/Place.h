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

    /// Length of a side, mm.
    double Width() const;
    double Height() const;
};

}  // namespace J4Chart
