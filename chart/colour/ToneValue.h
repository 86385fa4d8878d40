// Tone values: how much of the paper a halftone covers with its ink, in percent, as it measures. 0 is the paper, 100 the
// solid.
#pragma once

#include "chart/colour/Colorimetry.h"

namespace J4Chart::ToneValue {

/// Murray-Davies: of reflectance factors, or of what else adds up as light does.
/// @pre paper and solid differ
double OfReflectances(double paper, double solid, double tone);

/// The same of densities.
/// @pre paper and solid differ
double OfDensities(double paper, double solid, double tone);

/// SCTV, the tone value of spot colours by ISO 20654, of tristimulus values. Looks even from paper to solid: a tone value
/// that equals the nominal one is its aim.
/// @pre paper and solid differ
double OfTristimulus(const Colorimetry::Triple& paper, const Colorimetry::Triple& solid,
                     const Colorimetry::Triple& tone);

}  // namespace J4Chart::ToneValue
