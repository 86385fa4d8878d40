// In which order colours come on a chart: mixed, so that what drifts over a page falls on no range of colours alone, and so
// that the edges between the patches of a row can be seen. The same colours and seed give the same order everywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "chart/colour/Colorimetry.h"

namespace J4Tool {

class PatchOrder {
public:
    /// CIE 1976; neighbours nearer than that are parted where it can be.
    static constexpr double WantedDifference = 20.0;

    /// What lies at the end of a row differs so much from the paper where it can be, CIE 1976.
    static constexpr double WantedFromPaper = 20.0;

    /// @param colours  CIELab, of the patches in the order of the list
    /// @param rows     how many patches each row has, in their order; the sum is that of the colours
    PatchOrder(const std::vector<J4Chart::Colorimetry::Triple>& colours, const J4Chart::Colorimetry::Triple& paper,
               const std::vector<size_t>& rows);

    /// Mixes. Without it the order is that of the list.
    void Mix(uint64_t seed);

    /// For each place the index of its colour.
    const std::vector<size_t>& Order() const { return order; }

    /// The smallest difference of two neighbours of a row, CIE 1976; 0 where no patch has a neighbour.
    double LeastDifference() const;

    /// The smallest difference of a row's end from the paper, CIE 1976.
    double LeastFromPaper() const;

private:
    /// CIELab in hundredths: whole numbers compare alike on all platforms.
    struct Colour {
        int64_t l, a, b;
    };

    static Colour Whole(const J4Chart::Colorimetry::Triple& lab);
    static int64_t Square(const Colour& first, const Colour& second);

    /// What is wrong with the colour of a place, beside its neighbours and as an end; 0 for nothing.
    int64_t Fault(size_t place) const;
    int64_t FaultAround(size_t place) const;

    /// Exchanges the colours of two places where that makes less fault.
    bool Improve(size_t place, size_t other);

    uint64_t Random(uint64_t below);

    std::vector<Colour> colours;
    Colour paper;
    std::vector<bool> begins;  ///< a row, for each place
    std::vector<size_t> order;
    std::mt19937_64 random;
};

}  // namespace J4Tool
