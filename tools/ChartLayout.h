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
    /// @param page  of a layout that has several; one must be given then
    /// @throws ToolError
    static ChartLayout Load(const std::string& fileName, const J4Chart::Grid& grid, bool measuredByHand,
                            std::optional<size_t> page = std::nullopt);

    /// @throws J4Chart::CgatsError, ToolError for several pages of which none was chosen
    static ChartLayout Read(const J4Chart::CgatsFile& file, const J4Chart::Grid& grid, bool measuredByHand,
                            std::optional<size_t> page = std::nullopt);

    /// With whatever its file tells.
    const J4Chart::Chart& AsChart() const { return chart; }

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

    /// A place by which a person finds the chart on the bed.
    struct Corner {
        std::string name;  ///< for the person
        Point place;       ///< where the layout has it, mm
    };

    /// The crosshairs 1, 2 and 3 of a layout that has them (LAYOUT_MARKS); of any other the middles of three patches: the
    /// first of the first row, the last of the first row, the first of the last row.
    /// @throws ToolError for a chart without crosshairs and with fewer than two rows or columns
    std::array<Corner, 3> Corners() const;

    /// Whether Corners() has what it needs.
    bool HasCorners() const { return marks || (rows.size() > 1 && rows.front().size() > 1); }

    /// What the file tells of the device fields: the names of spot inks and what stands for them.
    J4Chart::Chart::Conditions InkConditions() const;

    /// Moves the chart so that its corners come to these places.
    void PlaceCorners(const std::array<Point, 3>& corners);

    /// The file that it was read from, with the places as they are now.
    /// @pre it was made by Load()
    std::string FileText() const;

    /// Moves the chart to where it was found.
    void MoveTo(const Placement& placement);

private:
    std::optional<std::pair<size_t, size_t>> Overlapping() const;
    void ReadMarks();

    J4Chart::Chart chart;
    J4Chart::CgatsTable source;  ///< as it was read
    std::vector<Row> rows;
    std::optional<std::array<Point, 3>> marks;  ///< crosshairs to align by
    bool hasSizes = true;
};

}  // namespace J4Tool
