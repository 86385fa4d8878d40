// In which order and direction the rows of a chart are scanned, so that the arm travels least.
#pragma once

#include <cstddef>
#include <vector>

#include "tools/ChartLayout.h"
#include "tools/Point.h"

namespace J4Tool {

class RowPlan {
public:
    /// One travel along a row.
    struct Pass {
        size_t row = 0;
        bool reversed = false;
        Point start;
        Point end;
    };

    /// @param margin   how far before the first and behind the last patch a travel begins and ends, mm
    /// @param home     where the arm comes from
    /// @param bothWays rows may be scanned backwards
    /// @param wanted   the rows to scan
    RowPlan(const ChartLayout& layout, double margin, Point home, bool bothWays, const std::vector<size_t>& wanted);

    /// One row by itself.
    static Pass Along(const ChartLayout& layout, size_t row, double margin, bool reversed);

    const std::vector<Pass>& Passes() const { return passes; }

    /// The way from home through all passes, mm.
    double Travel() const { return travel; }

private:
    std::vector<Pass> passes;
    double travel = 0.0;
};

}  // namespace J4Tool
