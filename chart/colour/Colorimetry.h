// From a reflectance spectrum to colour values.
#pragma once

#include <array>

#include "chart/colour/Spectrum.h"

namespace J4Chart::Colorimetry {

using Triple = std::array<double, 3>;

/// X, Y, Z for the CIE 1931 2 degree observer and D50: sums over the 36 bands (CIE 15), scaled so that the
/// perfect diffuser has Y = 100.
Triple TristimulusValues(const Spectrum& reflectance);

/// X, Y, Z of the perfect diffuser, by the same sums.
const Triple& White();

/// L*, a*, b* (CIE 15) of tristimulus values, relative to a white.
Triple LabOfTristimulus(const Triple& values, const Triple& white = White());

/// Of X, Y and Z each what L* is of Y, relative to White().
Triple LightnessOfEach(const Triple& values);

/// The inverse of LabOfTristimulus(), relative to a white (CIE 15).
Triple TristimulusOfLab(const Triple& lab, const Triple& white);

/// L*, a*, b* (CIE 15) relative to the perfect diffuser under D50.
Triple Lab(const Spectrum& reflectance);

/// L*, C*ab, h (degrees, 0 up to 360; 0 for a grey) of L*, a*, b*.
Triple LChOfLab(const Triple& lab);

/// L*, C*ab, h as LChOfLab().
Triple LCh(const Spectrum& reflectance);

/// x, y, Y; the chromaticity of black is that of D50.
Triple Chromaticity(const Spectrum& reflectance);

/// Euclidean distance of two triples; for CIELab values the CIE 1976 colour difference.
double Distance(const Triple& first, const Triple& second);

}  // namespace J4Chart::Colorimetry
