// The densities of a sample as an instrument tells them.
#pragma once

#include <array>
#include <vector>

namespace J4Chart {

/// Red, green, blue and visual filter.
using Densities = std::array<double, 4>;

/// What their fields are called in files, in the same order.
inline constexpr std::array<const char*, 4> DensityFields = {"D_RED", "D_GREEN", "D_BLUE", "D_VIS"};

/// Of several samples those of their mean: a filter sees the mean of the light that they reflect.
/// @param samples  one at least
Densities MeanDensities(const std::vector<Densities>& samples);

}  // namespace J4Chart
