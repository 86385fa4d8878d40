#include "tools/make/PageLayout.h"

#include <algorithm>
#include <cmath>

#include "chart/cgats/CgatsFields.h"
#include "tools/RowSpeed.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

// Outside of the quiet margin there is room for names and marks, and at the paper's edge for what printers leave bare.
constexpr double LeftBand = 15.0;    // mm, names of the rows
constexpr double RightBand = 6.0;    // mm
constexpr double TopBand = 20.0;     // mm, title and numbers of the columns
constexpr double BottomBand = 11.0;  // mm, what has to be known for printing

/// Middles of the crosshairs from the paper's edges, mm.
constexpr double MarkSide = 11.0;
constexpr double MarkTop = 17.0;
constexpr double MarkBottom = 15.0;

/// What the look before a scan travels over: from the start of a travel to the first edge, and as much as the chart may
/// lie off. An integration time of 5 ms is assumed, which instruments of this kind need.
double TravelledMargin(Point patch)
{
    constexpr double integrationTime = 0.005;  // s
    const double side = std::min(patch.x, patch.y);
    return std::ceil(RowSpeed::Margin(RowSpeed(integrationTime, 0).For(side)) + side);
}

}  // namespace

PageLayout::PageLayout(const Settings& wanted, size_t patches, const WorkArea& area)
    : settings(wanted), patches(patches)
{
    for (const double side : {settings.patch.x, settings.patch.y}) {
        if (side < SmallestPatch) {
            throw ToolError(ExitCode::Usage,
                            "patches of " + J4Chart::NumberText(side) +
                                " mm can't be measured: the instrument sees a spot of 4.5 mm, and with what a print "
                                "lies off they need " +
                                J4Chart::NumberText(SmallestPatch) + " mm at least",
                            "Give a larger --patch.");
        }
    }
    for (const double gap : {settings.gap.x, settings.gap.y}) {
        if (gap < 0.0) {
            throw ToolError(ExitCode::Usage, "patches " + J4Chart::NumberText(gap) + " mm apart would overlap",
                            "Give a --gap of 0 or more.");
        }
    }
    settings.quiet = settings.quiet > 0.0 ? settings.quiet : TravelledMargin(settings.patch);
    size_t mostColumns = 0;
    while (Fits(1, mostColumns + 1, area)) {
        ++mostColumns;
    }
    size_t mostRows = 0;
    while (mostColumns > 0 && Fits(mostRows + 1, mostColumns, area)) {
        ++mostRows;
    }
    if (mostRows == 0) {
        const std::string fault = area.Fault(OnBed(Middle(0, 0)));
        throw ToolError(ExitCode::Usage,
                        "no patch fits on the page beside its quiet margin of " + J4Chart::NumberText(settings.quiet) +
                            " mm" + (fault.empty() ? "" : ": " + fault),
                        "Take larger paper, smaller patches (--patch), a smaller --quiet, or another place (--bed).");
    }
    // Rows of one length, and pages of as many rows, as near as it can be; two rows where there may be, since one alone
    // does not tell how the chart lies.
    constexpr size_t worthTwoRows = 4;
    rows = (patches + mostColumns - 1) / mostColumns;
    rows = rows == 1 && patches >= worthTwoRows && mostRows > 1 ? 2 : rows;
    columns = (patches + rows - 1) / rows;
    rows = (patches + columns - 1) / columns;
    pages = (rows + mostRows - 1) / mostRows;
    rowsOfPage = (rows + pages - 1) / pages;
    pages = (rows + rowsOfPage - 1) / rowsOfPage;
}

Point PageLayout::Middle(size_t rowOfPage, size_t column) const
{
    return {LeftBand + settings.quiet + 0.5 * settings.patch.x +
                static_cast<double>(column) * (settings.patch.x + settings.gap.x),
            TopBand + settings.quiet + 0.5 * settings.patch.y +
                static_cast<double>(rowOfPage) * (settings.patch.y + settings.gap.y)};
}

bool PageLayout::Fits(size_t wantedRows, size_t wantedColumns, const WorkArea& area) const
{
    const Point first = Middle(0, 0);
    const Point last = Middle(wantedRows - 1, wantedColumns - 1);
    const Point around = {0.5 * settings.patch.x + settings.quiet, 0.5 * settings.patch.y + settings.quiet};
    if (last.x + around.x + RightBand > settings.paper.x || last.y + around.y + BottomBand > settings.paper.y) {
        return false;
    }
    // Travels go along and across, so these are their farthest places.
    const auto reaches = [&](double x, double y) { return area.Holds(OnBed({x, y})); };
    return reaches(first.x - around.x, first.y) && reaches(first.x, first.y - around.y) &&
           reaches(last.x + around.x, first.y) && reaches(last.x, first.y - around.y) &&
           reaches(first.x - around.x, last.y) && reaches(first.x, last.y + around.y) &&
           reaches(last.x + around.x, last.y) && reaches(last.x, last.y + around.y);
}

std::vector<size_t> PageLayout::Rows() const
{
    std::vector<size_t> lengths(rows, columns);
    lengths.back() = patches - (rows - 1) * columns;
    return lengths;
}

PageLayout::Cell PageLayout::CellOf(size_t place) const
{
    const size_t row = place / columns;
    const size_t column = place % columns;
    return {row / rowsOfPage + 1, row, column, Middle(row % rowsOfPage, column)};
}

std::string PageLayout::RowName(size_t row)
{
    constexpr size_t letters = 26;
    std::string name;
    for (size_t rest = row + 1; rest > 0; rest = (rest - 1) / letters) {
        name.insert(name.begin(), static_cast<char>('A' + (rest - 1) % letters));
    }
    return name;
}

std::array<Point, 3> PageLayout::Marks() const
{
    return {{{MarkSide, MarkTop}, {settings.paper.x - MarkSide, MarkTop}, {MarkSide, settings.paper.y - MarkBottom}}};
}

std::vector<double> PageLayout::ColumnMiddles() const
{
    std::vector<double> middles;
    for (size_t column = 0; column < columns; ++column) {
        middles.push_back(Middle(0, column).x);
    }
    return middles;
}

std::vector<double> PageLayout::RowMiddles(size_t page) const
{
    std::vector<double> middles;
    for (size_t row = 0; row < rowsOfPage && (page - 1) * rowsOfPage + row < rows; ++row) {
        middles.push_back(Middle(row, 0).y);
    }
    return middles;
}

}  // namespace J4Tool
