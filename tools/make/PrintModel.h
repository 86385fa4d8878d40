// What a print might measure, where there is none yet: spectra by a simple model of inks on paper. It tells colours apart
// for the order of patches, and gives the virtual table a print to scan; it says nothing of any real press.
//
// Each ink lets a share of the light through, T(wavelength), made of a few smooth steps of density. Of coverages a that
// lie over each other by chance, and light that spreads in the paper (factor N after Yule and Nielsen, over Neugebauer's
// primaries), comes back: paper * product over the inks of (1 - a + a * T^(1/N))^N.
#pragma once

#include <vector>

#include "chart/colour/Spectrum.h"
#include "tools/make/ColourList.h"

namespace J4Tool {

class PrintModel {
public:
    /// A spot ink lets through what its alternate of process inks does.
    explicit PrintModel(const std::vector<SpotInk>& spots);

    /// Reflectance factors of the paper.
    static const J4Chart::Spectrum& Paper();

    /// Reflectance factors of a print. R, G and B are printed as their complements, without black.
    /// @param values  3: R, G, B; 4 and more: C, M, Y, K and the spot inks; 0 to 1
    J4Chart::Spectrum Print(const std::vector<double>& values) const;

private:
    std::vector<J4Chart::Spectrum> inks;  ///< transmittances, C, M, Y, K first
};

}  // namespace J4Tool
