// The printed chart that lies on the bed of every table: paper with rectangular patches of known
// reflectance. It tells what an aperture anywhere above it sees.
#pragma once

#include <string>
#include <vector>

#include "chart/Chart.h"
#include "simulator/ground/Point.h"
#include "simulator/ground/Spectrum.h"

namespace J4Bench {

class PrintedChart {
public:
    /// Bare paper of reflectance 0.85.
    PrintedChart();

    /// @param chart  with places and spectra
    explicit PrintedChart(const J4Chart::Chart& chart);

    /// @throws J4Chart::CgatsError for a file that is broken or lacks places or spectra
    static PrintedChart Load(const std::string& fileName);

    /// Mean reflectance under a round aperture, over the sub-points of UnitDisc(). Where patches overlap the
    /// later one of the file lies on top.
    Spectrum ReflectanceAt(Point centre, double apertureDiameter) const;

private:
    struct Patch {
        Point centre;   ///< on the bed, tenths of a millimetre
        double width;   ///< along x, tenths of a millimetre
        double height;  ///< along y, tenths of a millimetre
        Spectrum reflectance;
    };

    std::vector<Patch> patches;
    Spectrum paper{};
};

}  // namespace J4Bench
