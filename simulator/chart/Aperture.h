// The round opening through which the instrument sees the chart, as a fixed fine grid of sub-points. An
// average over the aperture is the average over these points.
#pragma once

#include <vector>

#include "simulator/ground/Point.h"

namespace J4Bench {

/// Diameter of the instruments' aperture in tenths of a millimetre.
inline constexpr double ApertureDiameter = 45.0;

/// Sub-points of a disc of diameter 1 about the origin: those points of a square grid of 21 by 21 cells
/// that lie inside, each standing for the same area.
const std::vector<Point>& UnitDisc();

}  // namespace J4Bench
