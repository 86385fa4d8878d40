// Where things stand on the pages of a chart: patches in rows, bare paper around them that the instrument is carried over,
// and outside of it names and the marks to align by.
//
// Places on a page are millimetres from its upper left corner, x to the right and y down. The page lies on the bed
// with that corner at the bed's lowest x and y and its rows along x, so that places on the bed are those on the page
// and the place of the corner.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "tools/ChartLayout.h"
#include "tools/Point.h"
#include "tools/WorkArea.h"

namespace J4Tool {

class PageLayout {
public:
    struct Settings {
        Point paper{297.0, 210.0};  ///< width and height of a page, mm
        Point patch{10.0, 10.0};    ///< mm
        Point gap;                  ///< paper between patches, mm
        double quiet = 0.0;         ///< bare paper around the patches, mm; 0: what the scan travels over
        Point bed{150.0, 150.0};    ///< where the page's upper left corner lies on the bed, mm
    };

    /// Side of the smallest patch that is worth printing: beside what can be measured, room for a print that lies a
    /// quarter of a millimetre off, mm.
    static constexpr double SmallestPatch = ChartLayout::SmallestPatch + 0.5;

    /// @param area  what the arm reaches; patches lie where it can be carried over them with their quiet margin
    /// @throws ToolError where no patch fits, for patches that are too small, and for gaps below 0
    PageLayout(const Settings& settings, size_t patches, const WorkArea& area);

    size_t Pages() const { return pages; }

    /// How many patches each row has, over all pages.
    std::vector<size_t> Rows() const;

    struct Cell {
        size_t page = 0;  ///< counted from 1
        size_t row = 0;   ///< counted from 0 over all pages
        size_t column = 0;
        Point centre;  ///< on the page, mm
    };

    /// @param place  counted along the rows, over all pages
    Cell CellOf(size_t place) const;

    /// "A1" for the first patch of the first row.
    static std::string Name(const Cell& cell) { return RowName(cell.row) + std::to_string(cell.column + 1); }

    /// A to Z, then AA, AB and so on.
    static std::string RowName(size_t row);

    /// Crosshairs at the upper left, the upper right and the lower left, on the page, mm.
    std::array<Point, 3> Marks() const;

    Point OnBed(Point onPage) const { return {onPage.x + settings.bed.x, onPage.y + settings.bed.y}; }

    /// Middles of the columns of the fullest row, and of the rows of a page, on the page, mm.
    std::vector<double> ColumnMiddles() const;
    std::vector<double> RowMiddles(size_t page) const;

    const Settings& Chosen() const { return settings; }

    /// Half the length of a crosshair's lines, mm.
    static constexpr double MarkReach = 4.0;

private:
    Point Middle(size_t rowOfPage, size_t column) const;
    bool Fits(size_t rows, size_t columns, const WorkArea& area) const;

    Settings settings;
    size_t patches;
    size_t rows = 0;  ///< over all pages
    size_t rowsOfPage = 0;
    size_t columns = 0;
    size_t pages = 0;
};

}  // namespace J4Tool
