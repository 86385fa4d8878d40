// The density values that an instrument computes from a reflectance spectrum.
#pragma once

#include <array>

#include "simulator/ground/Spectrum.h"

namespace J4Bench {

/// Cyan, magenta, yellow, black.
using Densities = std::array<double, 4>;

/// Minus the decimal logarithm of the mean reflectance in a band: 600 to 700 nm for cyan, 500 to 590 nm for
/// magenta, 400 to 490 nm for yellow, each with equal weights, and Y / 100 for black. These simple bands are
/// not the status densities of ISO 5-3. A reflectance below 0.0001 counts as 0.0001.
Densities DensitiesOf(const Spectrum& reflectance);

}  // namespace J4Bench
