// What a print might measure, where there is none yet: spectra by a simple model of inks on paper. It tells colours apart
// for the order of patches, tells a chart from another one or from itself turned round, and gives the virtual table a print
// to scan; it says nothing of any real press.
//
// Each ink lets a share of the light through, T(wavelength), made of a few smooth steps of density. Of coverages a that
// lie over each other by chance, and light that spreads in the paper (factor N after Yule and Nielsen, over Neugebauer's
// primaries), comes back: paper * product over the inks of (1 - a + a * T^(1/N))^N.
#pragma once

#include <array>
#include <vector>

#include "chart/colour/Spectrum.h"

namespace J4Chart {

class PrintModel {
public:
    /// C, M, Y and K, 0 to 1.
    using ProcessInks = std::array<double, 4>;

    /// @param spots  what stands for the solid of each spot ink, which lets through what that does
    explicit PrintModel(const std::vector<ProcessInks>& spots);

    /// Reflectance factors of the paper.
    static const Spectrum& Paper();

    /// Reflectance factors of a print. R, G and B are printed as their complements, without black.
    /// @param values  3: R, G, B; 4 and more: C, M, Y, K and the spot inks; 0 to 1
    Spectrum Print(const std::vector<double>& values) const;

private:
    std::vector<Spectrum> inks;  ///< transmittances, C, M, Y, K first
};

}  // namespace J4Chart
