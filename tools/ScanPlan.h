// What is going to be done with each row of a chart: the ways to read it in the order in which they are tried, and what
// that will take. Made before the arm moves, and refuses a chart that the arm can't reach.
#pragma once

#include <cstddef>
#include <vector>

#include "chart/ScanMotion.h"
#include "tools/ChartLayout.h"
#include "tools/PatchReading.h"
#include "tools/RowSpeed.h"
#include "tools/WorkArea.h"

namespace J4Tool {

class ScanPlan {
public:
    struct Settings {
        double margin = J4Chart::ScanMotion::UsualMargin;  ///< bare paper before and behind a recognised row, mm
        bool marginIsWanted = false;  ///< somebody asked for it: a row without it is refused, not read otherwise
        bool spotsOnly = false;       ///< measure every patch singly
    };

    struct Row {
        std::vector<ReadingWay> ways;  ///< in the order in which they are tried
        int fitSpeed = 0;              ///< mm/s, at which raw samples are taken
        int speed = 0;                 ///< of the first way, mm/s; 0 for spots
        double seconds = 0.0;          ///< that the first way is expected to take, with the way to the row
    };

    /// @throws ToolError when a row can't be measured in any way; it names the row and the limit
    ScanPlan(const ChartLayout& layout, const WorkArea& area, const RowSpeed& speed, const Settings& settings);

    const std::vector<Row>& Rows() const { return rows; }

    /// For all rows, s.
    double Seconds() const;

private:
    Row PlanRow(size_t row, const RowSpeed& speed, const Settings& settings) const;
    std::string PassFault(size_t row, double margin) const;
    std::string SpotsFault(size_t row) const;
    bool HasReferences(size_t row) const;
    bool CanBeRecognised(size_t row) const;
    double Seconds(size_t row, ReadingWay way, int speed, double margin) const;

    const ChartLayout& layout;
    const WorkArea& area;
    std::vector<Row> rows;
};

}  // namespace J4Tool
