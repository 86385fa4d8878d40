// The figures that an instrument computes from a reflectance spectrum: tristimulus values, CIELab, densities.
#pragma once

#include <array>

#include "simulator/bench/Spectrum.h"

namespace J4Bench::Colorimetry {

using Triple = std::array<double, 3>;

/// Cyan, magenta, yellow, black.
using Densities = std::array<double, 4>;

/// X, Y, Z for the CIE 1931 2 degree observer and D50: sums over the 36 bands (CIE 15), scaled so that the
/// perfect diffuser has Y = 100.
Triple TristimulusValues(const Spectrum& reflectance);

/// L*, a*, b* (CIE 15) relative to the perfect diffuser under D50.
Triple Lab(const Spectrum& reflectance);

/// L*, C*ab, h (degrees, 0 up to 360).
Triple LCh(const Spectrum& reflectance);

/// x, y, Y; the chromaticity of black is that of D50.
Triple Chromaticity(const Spectrum& reflectance);

/// Euclidean distance of two triples; for CIELab values the CIE 1976 colour difference.
double Distance(const Triple& first, const Triple& second);

/// Minus the decimal logarithm of the mean reflectance in a band: 600 to 700 nm for cyan, 500 to 590 nm for
/// magenta, 400 to 490 nm for yellow, each with equal weights, and Y / 100 for black. These simple bands are
/// not the status densities of ISO 5-3. A reflectance below 0.0001 counts as 0.0001.
Densities DensitiesOf(const Spectrum& reflectance);

}  // namespace J4Bench::Colorimetry
