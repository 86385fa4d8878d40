// The printed chart that lies on the bed of every table: paper with rectangular patches of known
// reflectance. It tells what an aperture anywhere above it sees.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "chart/Chart.h"
#include "simulator/ground/Point.h"
#include "simulator/ground/Spectrum.h"

namespace J4Bench {

/// How a chart lies on the bed, against where its file says.
struct ChartOffset {
    Point shift;           ///< tenths of a millimetre
    double degrees = 0.0;  ///< from x towards y, about the middle of the patches' centres
};

class PrintedChart {
public:
    /// Bare paper of reflectance 0.85.
    PrintedChart();

    /// @param chart  with places and spectra
    explicit PrintedChart(const J4Chart::Chart& chart);

    /// @throws J4Chart::CgatsError for a file that is broken or lacks places or spectra
    /// @param page  of a chart that has pages; nothing for the first one
    static PrintedChart Load(const std::string& fileName, std::optional<size_t> page = std::nullopt);

    const ChartOffset& Offset() const { return offset; }
    void SetOffset(const ChartOffset& value) { offset = value; }

    /// Mean reflectance under a round aperture at a place of the bed, over the sub-points of UnitDisc(). Where patches overlap the
    /// later one of the file lies on top; blemishes lie on all of them.
    Spectrum ReflectanceAt(Point place, double apertureDiameter) const;

private:
    /// What lies on the paper: a rectangle, and all that is no farther from it than its brim. A patch has no brim, a
    /// speck nothing else. As the file says, tenths of a millimetre.
    struct Area {
        Point centre;
        Point direction;  ///< of the rectangle's length, a unit vector
        double length;
        double width;
        double brim;
        Spectrum reflectance;

        /// Whether a place is no farther from it than so.
        bool IsNear(Point place, double distance) const;
    };

    /// Which place of the chart's file a place of the bed shows.
    Point Uncovered(Point place) const;

    std::vector<Area> areas;  ///< the later ones on top
    Spectrum paper{};
    Point middle;  ///< of the patches' centres
    ChartOffset offset;
};

}  // namespace J4Bench
