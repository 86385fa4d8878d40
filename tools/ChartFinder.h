// Finds out with the instrument itself where a chart lies: carries it along and across the rows without patch
// recognition, lays the samples over the layout, and solves for shift, rotation and stretch of the whole chart.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/ChartLayout.h"
#include "tools/LineFit.h"
#include "tools/LineScan.h"
#include "tools/Placement.h"
#include "tools/PlacementSearch.h"
#include "tools/RowSpeed.h"
#include "tools/WorkArea.h"

namespace J4Tool {

class ChartFinder {
public:
    struct Finding {
        Placement placement;
        double latency = 0.0;   ///< s, by which the samples lag behind the motion
        double residual = 0.0;  ///< mm, root mean square of the edges that were seen, about where they are now
        size_t edges = 0;       ///< how many were seen
        bool isSure = false;    ///< false where no edges show across the rows, so that nothing can be told
    };

    /// @param say  hears what is being done
    ChartFinder(Session& session, const ChartLayout& layout, const WorkArea& area, const RowSpeed& speed,
                std::function<void(const std::string&)> say);

    /// Looks whether the chart lies where the layout says, give or take half a patch.
    /// @throws ToolError when what lies there is not this chart
    Finding Look();

    /// Finds a chart that lies up to half a patch and two degrees wrong.
    /// @throws ToolError as above
    Finding Find();

    /// A placement for people: shift and turn.
    std::string Words(const Finding& finding) const;

    /// What is wrong with a placement for scanning where the layout says; empty when every patch is seen whole.
    std::string Fault(const Finding& finding) const;

private:
    /// One travel: where a place of the layout was found in the direction of the travel.
    struct Measured {
        Point at;
        Point direction;
        double place = 0.0;  ///< mm, before the latency is taken into account
        double error = 0.0;  ///< standard deviation, mm
        double speed = 0.0;  ///< mm/s
    };

    /// What is known before the travels, with standard deviations.
    struct Expectation {
        Point shift;            ///< mm
        double rotation = 0.0;  ///< radians
        double latency = 0.0;   ///< s
        double shiftError = 10.0;
        double rotationError = 0.05;
        double latencyError = 0.02;
    };

    /// From rim to rim, in the layout.
    struct Line {
        Point start;
        Point end;
    };

    /// What one travel saw.
    struct Seen {
        LineScan::Samples samples;
        std::vector<LineFit::Stretch> stretches;  ///< of the patches, from the start
        Point start;                              ///< in the layout
        Point along;
        double shortest = 0.0;  ///< way through a patch, mm
        int speed = 0;          ///< mm/s
    };

    /// @param share  of the first row's length, or of the rows, 0 to 1
    Line Column(double share) const;
    Line Row(double share) const;

    /// @return nothing where there is no room
    std::optional<Seen> Take(const Line& line);

    /// @return false where no edge was seen
    bool Travel(const Line& line, bool bothWays);
    bool TravelOnce(const Line& line);

    /// Shortens a way at its beginning to what lies in the work area.
    /// @return by how much, mm; nothing when there is too little left
    std::optional<double> Trimmed(Point start, Point along, double length) const;
    void Solve();

    const ChartLayout& layout;
    const WorkArea& area;
    const RowSpeed& speed;
    std::function<void(const std::string&)> say;
    LineScan scan;
    PlacementSearch search;
    Finding finding;
    Expectation expectation;
    std::vector<Measured> measured;
    size_t edges = 0;
    double squares = 0.0;
    double reach = 0.5;  ///< how far off the chart is looked for, in patches
};

}  // namespace J4Tool
