#include "tools/ChartLayout.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "chart/ChartReader.h"
#include "chart/PlaneMap.h"
#include "tools/ToolError.h"

namespace J4Tool {

ChartLayout::ChartLayout(J4Chart::Chart placed) : chart(std::move(placed))
{
    constexpr double unknownSize = 1.0;  // mm, of a grid that leaves its size to the corners
    hasSizes = !chart.places.empty() && chart.places.front().Width() > unknownSize;
    std::vector<size_t> order(chart.patches.size());
    std::iota(order.begin(), order.end(), size_t{0});
    const auto byPlace = [this](double Point::*coordinate) {
        return [this, coordinate](size_t left, size_t right) {
            return chart.places[left].centre.*coordinate < chart.places[right].centre.*coordinate;
        };
    };
    std::stable_sort(order.begin(), order.end(), byPlace(&Point::y));
    for (const size_t patch : order) {
        const J4Chart::Place* const first = rows.empty() ? nullptr : &chart.places[rows.back().front()];
        if (first == nullptr || chart.places[patch].centre.y - first->centre.y >= first->across.y) {
            rows.emplace_back();
        }
        rows.back().push_back(patch);
    }
    for (Row& row : rows) {
        std::stable_sort(row.begin(), row.end(), byPlace(&Point::x));
    }
}

ChartLayout ChartLayout::Load(const std::string& fileName, const J4Chart::Grid& grid, bool measuredByHand)
{
    try {
        return Read(J4Chart::CgatsFile::Read(fileName), grid, measuredByHand);
    } catch (const J4Chart::CgatsError& error) {
        throw ToolError(ExitCode::File, "layout '" + fileName + "': " + error.what(),
                        "A layout is a CGATS.17 file with SAMPLE_ID or SAMPLE_NAME and either X, Y, WIDTH, HEIGHT in "
                        "millimetres or a grid (--rows, --columns, --patch, --start).");
    }
}

ChartLayout ChartLayout::Read(const J4Chart::CgatsFile& file, const J4Chart::Grid& grid, bool measuredByHand)
{
    J4Chart::ChartReader::Wanted wanted;
    wanted.places = true;
    wanted.grid = grid;
    wanted.fittedLater = measuredByHand;
    J4Chart::Chart chart = J4Chart::ChartReader::Read(file, wanted);
    if (chart.patches.empty()) {
        throw J4Chart::CgatsError(0, "there are no patches");
    }
    return ChartLayout(std::move(chart));
}

std::array<size_t, 3> ChartLayout::CornerPatches() const
{
    const std::array<size_t, 3> corners = {rows.front().front(), rows.front().back(), rows.back().front()};
    if (rows.size() < 2 || rows.front().size() < 2) {
        throw ToolError(ExitCode::Usage, "a chart is placed by three corners only when it has two rows and two columns",
                        "Give the places of its patches in the layout, or a grid with --start.");
    }
    return corners;
}

void ChartLayout::PlaceCorners(const std::array<Point, 3>& corners)
{
    std::array<Point, 3> known;
    const std::array<size_t, 3> patches = CornerPatches();
    std::transform(patches.begin(), patches.end(), known.begin(),
                   [this](size_t patch) { return chart.places[patch].centre; });
    constexpr double smallestArea = 1.0;  // mm²
    if (std::abs(J4Chart::PlaneMap::AreaOf(corners)) < smallestArea || J4Chart::PlaneMap::AreaOf(known) == 0.0) {
        throw ToolError(ExitCode::Usage, "the three corners lie in one line",
                        "Give the first and the last patch of the first row, and the first of the last row.");
    }
    std::transform(chart.places.begin(), chart.places.end(), chart.places.begin(), J4Chart::PlaneMap(known, corners));
}

void ChartLayout::MoveTo(const Placement& placement)
{
    for (J4Chart::Place& place : chart.places) {
        place = {placement.Of(place.centre), placement.Turned(place.along), placement.Turned(place.across)};
    }
}

}  // namespace J4Tool
