// Several measurements of one patch: their average, and how far they lie from it.
#pragma once

#include <vector>

#include "chart/colour/Colorimetry.h"
#include "chart/colour/Spectrum.h"

namespace J4Chart {

/// Band by band.
/// @param spectra  one at least
Spectrum MeanOf(const std::vector<Spectrum>& spectra);

/// The mean of CIELab colours.
/// @param colours  one at least
Colorimetry::Triple MeanOf(const std::vector<Colorimetry::Triple>& colours);

/// The mean colour difference from the mean (MCDM): of each measurement from the mean of all, in CIELab.
struct MeanDifference {
    double ciede2000 = 0.0;
    double cie1976 = 0.0;

    /// @param colours  CIELab, one at least
    explicit MeanDifference(const std::vector<Colorimetry::Triple>& colours);
};

}  // namespace J4Chart
