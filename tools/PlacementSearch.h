// Searches for the placement of a whole chart that explains best what several travels over it have seen, taken together:
// one travel alone can be mistaken by a patch or by a row, all of them can't.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "tools/ChartLayout.h"
#include "tools/LineFit.h"
#include "tools/LineScan.h"
#include "tools/Placement.h"
#include "tools/Point.h"

namespace J4Tool {

class PlacementSearch {
public:
    struct Result {
        Placement placement;
        double latency = 0.0;      ///< s, by which the samples lag behind the motion
        bool isAmbiguous = false;  ///< another placement, with the patches elsewhere, explains the samples as well
        bool isFar = false;        ///< farther from where it was searched for than the search is good for
    };

    explicit PlacementSearch(const ChartLayout& layout);
    ~PlacementSearch();

    /// @param start  of the travel on the bed, mm
    /// @param along  its direction there, of length 1
    /// @param speed  mm/s
    void Add(const LineScan::Samples& samples, Point start, Point along, double speed);

    /// Searches as far as a patch along and across the rows, and somewhat more than two degrees.
    /// @param expected  where to search around
    /// @return nothing where too little was seen
    std::optional<Result> Best(const Placement& expected) const;

    /// How far two placements differ at the worst corner of the chart, as a share of a patch.
    double Apart(const Placement& one, const Placement& other) const;

private:
    struct Travel {
        Point start;
        Point along;
        double speed = 0.0;
        std::vector<double> places;
        std::vector<LineFit::Light> light;
    };
    struct Candidate {
        Placement placement;
        double latency = 0.0;
        double squares = 0.0;
    };
    struct Sample {
        Point at;      ///< on the bed, latency left out
        Point motion;  ///< mm/s
        LineFit::Light light;
    };
    class Map;

    /// The larger one of the shifts along and across the rows, as a share of a patch.
    double Shift(const Placement& placement, const Placement& expected) const;

    double Latency() const;
    std::vector<Sample> Samples() const;
    double Rough(const std::vector<Sample>& samples, const Candidate& candidate) const;
    double Fine(const std::vector<Sample>& samples, const Candidate& candidate) const;
    template <typename Cost>
    void Refine(Candidate& candidate, double step, double last, bool withLatency, const Cost& cost) const;

    const ChartLayout& layout;
    std::vector<Travel> travels;
    std::vector<Point> corners;  ///< of the chart
    Point unitAlong;
    Point unitAcross;
    double pitchAlong = 0.0;  ///< of the smallest patch, mm
    double pitchAcross = 0.0;
    double lever = 0.0;  ///< from the middle to the farthest corner, mm
    std::unique_ptr<Map> map;
};

}  // namespace J4Tool
