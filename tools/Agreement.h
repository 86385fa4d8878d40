// Which of several readings of one patch agree, and what of their differences is only the instrument's noise: a speck or
// a scratch under some of them shows as a difference that noise does not explain.
#pragma once

#include <cstddef>
#include <vector>

#include "chart/colour/Spectrum.h"

namespace J4Tool {

class Agreement {
public:
    using Spectrum = J4Chart::Spectrum;

    /// By how much readings of one colour may differ beside their noise, CIE 1976: paper and print are not quite even.
    static constexpr double Limit = 0.5;

    /// What noise explains, at the most, as a multiple of its usual distance.
    static constexpr double NoiseFactor = 4.0;

    /// Readings that agree.
    struct Group {
        std::vector<size_t> members;  ///< rising
        Spectrum mean{};
        double spread = 0.0;  ///< root mean square distance from the mean, CIE 1976

        /// Whether all others differ in the same direction. A blemish mixes: what sees a part of it lies between the
        /// bare patch and what sees more of it, so readings from which others differ to both sides see a part.
        bool isAtTheEnd = true;
    };

    /// Noise of one reading, as the standard deviation of a band in reflectance, from how the difference of two leaps
    /// from band to band; colours differ smoothly.
    static double Noise(const Spectrum& first, const Spectrum& second);

    /// How far readings of one colour may be apart with this noise between them, CIE 1976.
    static double LimitOf(const Spectrum& colour, double noise);

    /// The largest group that agrees.
    /// @param readings  one at least
    /// @param noise     of one reading, in reflectance
    static Group Largest(const std::vector<Spectrum>& readings, double noise);
};

}  // namespace J4Tool
