// The chart as it lies on the bed: its patches, where each of them is, and in which rows they are scanned.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "chart/Chart.h"
#include "chart/Grid.h"
#include "chart/cgats/CgatsFile.h"
#include "tools/Placement.h"
#include "tools/Point.h"

namespace J4Tool {

class ChartLayout {
public:
    /// Patches of one row in the order of the travel along x.
    using Row = std::vector<size_t>;

    /// @param chart  with places
    explicit ChartLayout(J4Chart::Chart chart);

    /// Reads a layout with the fields X, Y, WIDTH, HEIGHT (mm), or without them as a grid.
    /// @param measuredByHand  the places will come from three corners: a grid then needs no sizes
    /// @throws ToolError
    static ChartLayout Load(const std::string& fileName, const J4Chart::Grid& grid, bool measuredByHand);

    /// @throws J4Chart::CgatsError
    static ChartLayout Read(const J4Chart::CgatsFile& file, const J4Chart::Grid& grid, bool measuredByHand);

    const std::vector<J4Chart::Patch>& Patches() const { return chart.patches; }

    /// Where the patches lie on the bed.
    const std::vector<J4Chart::Place>& Places() const { return chart.places; }

    const std::vector<Row>& Rows() const { return rows; }
    const std::vector<std::string>& DeviceFields() const { return chart.deviceFields; }

    /// Where the names of the fields stand in its file.
    int FieldsLine() const { return source.fieldsLine; }

    /// Side of the smallest patch that can be measured: the spot that the instrument sees, and what it may lie off, mm.
    static constexpr double SmallestPatch = 5.0;

    /// @throws ToolError for a chart that can't be measured rightly, or whose measurement no file could hold: patches
    ///         that are too small, overlap, or have the same name
    void RequireMeasurable() const;

    /// False for a grid that is going to be placed by its corners and tells no size: its patches then touch, whatever
    /// paper is between them.
    bool HasSizes() const { return hasSizes; }

    /// The patches by which the chart is found on the bed: the first of the first row, the last of the first row,
    /// the first of the last row.
    /// @throws ToolError for a chart with fewer than two rows or columns
    std::array<size_t, 3> CornerPatches() const;

    /// Moves the chart so that the middles of its corner patches come to these places.
    void PlaceCorners(const std::array<Point, 3>& corners);

    /// The file that it was read from, with the places as they are now.
    /// @pre it was made by Load()
    std::string FileText() const;

    /// Moves the chart to where it was found.
    void MoveTo(const Placement& placement);

private:
    std::optional<std::pair<size_t, size_t>> Overlapping() const;

    J4Chart::Chart chart;
    J4Chart::CgatsTable source;  ///< as it was read
    std::vector<Row> rows;
    bool hasSizes = true;
};

}  // namespace J4Tool
