// Where a chart really lies, against where its layout says: a shift, a rotation about the layout's middle and a stretch
// along and across the rows.
#pragma once

#include "tools/Point.h"

namespace J4Tool {

struct Placement {
    Point middle;           ///< of the layout, mm: what the rest refers to
    Point shift;            ///< of the middle, mm
    double rotation = 0.0;  ///< from x towards y, radians
    double stretchX = 1.0;  ///< along x
    double stretchY = 1.0;

    /// Where a place of the layout lies on the bed.
    Point Of(Point place) const;

    /// A direction of the layout on the bed.
    Point Turned(Point direction) const;
};

}  // namespace J4Tool
