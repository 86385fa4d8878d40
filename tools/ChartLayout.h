// The chart as it lies on the bed: which patches there are, where, in which rows they are scanned, and what they
// should measure where the file tells.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "chart/cgats/CgatsFile.h"
#include "chart/colour/Colorimetry.h"
#include "tools/Point.h"

namespace J4Tool {

/// How patches without places of their own lie: row by row, in the order of the file. What is missing is taken
/// from the file's keywords LAYOUT_ROWS, LAYOUT_COLUMNS, PATCH_SIZE, PATCH_GAP and LAYOUT_START.
struct GridOptions {
    std::optional<size_t> rows;
    std::optional<size_t> columns;
    std::optional<Point> size;   ///< of a patch, mm
    std::optional<Point> gap;    ///< between neighbours, mm
    std::optional<Point> start;  ///< middle of the first patch, mm on the bed
};

class ChartLayout {
public:
    using Triple = J4Chart::Colorimetry::Triple;

    struct Patch {
        std::string name;
        Point centre;                     ///< on the bed
        Point half;                       ///< from the centre to the middle of the edge that a row passes last
        Point halfAcross;                 ///< the same across the row
        std::vector<std::string> device;  ///< one for each of DeviceFields()
        std::optional<Triple> reference;  ///< CIELab, D50
    };

    /// Patches of one row in the order of the travel along x.
    using Row = std::vector<size_t>;

    /// Reads a layout with the fields X, Y, WIDTH, HEIGHT (mm), or without them as a grid.
    /// @param measuredByHand  the places will come from three corners: a grid then needs no sizes
    /// @throws ToolError
    static ChartLayout Load(const std::string& fileName, const GridOptions& grid, bool measuredByHand);
    static ChartLayout FromTable(const J4Chart::CgatsTable& table, const GridOptions& grid, bool measuredByHand);

    const std::vector<Patch>& Patches() const { return patches; }
    const std::vector<Row>& Rows() const { return rows; }
    const std::vector<std::string>& DeviceFields() const { return deviceFields; }

    /// The patches by which the chart is found on the bed: the first of the first row, the last of the first row,
    /// the first of the last row.
    /// @throws ToolError for a chart with fewer than two rows or columns
    std::array<size_t, 3> CornerPatches() const;

    /// Moves the chart so that the middles of its corner patches come to these places.
    void PlaceCorners(const std::array<Point, 3>& corners);

private:
    void TakePlaces(const J4Chart::CgatsTable& table);
    void TakeGrid(const J4Chart::CgatsTable& table, GridOptions grid, bool measuredByHand);
    void TakeColours(const J4Chart::CgatsTable& table);
    void SortIntoRows();

    std::vector<Patch> patches;
    std::vector<Row> rows;
    std::vector<std::string> deviceFields;
};

}  // namespace J4Tool
