// Which of an instrument's four densities is which, its library does not tell. The spectra of the same patches do, where
// a chart has enough colours.
#pragma once

#include <string>

#include "tools/Measurements.h"

namespace J4Tool {

/// @return what speaks against the order red, green, blue, visual, for people; empty when nothing does, or densities
///         were not asked for
std::string DensityOrderDoubt(const Measurements& measurements);

}  // namespace J4Tool
