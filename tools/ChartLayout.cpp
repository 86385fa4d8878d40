#include "tools/ChartLayout.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <numeric>
#include <sstream>
#include <utility>

#include "chart/ChartFile.h"
#include "chart/ChartPages.h"
#include "chart/ChartReader.h"
#include "chart/DeviceValues.h"
#include "chart/PlaneMap.h"
#include "chart/cgats/CgatsFields.h"
#include "tools/TableText.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

constexpr const char* MarksKeyword = "LAYOUT_MARKS";

}  // namespace

ChartLayout::ChartLayout(J4Chart::Chart placed) : chart(std::move(placed))
{
    constexpr double unknownSize = 1.0;  // mm, of a grid that leaves its size to the corners
    hasSizes = !chart.places.empty() && chart.places.front().Width() > unknownSize;
    std::vector<size_t> order(chart.patches.size());
    std::iota(order.begin(), order.end(), size_t{0});
    // The chart may lie askew: its rows run as the first patch does.
    const double turn = chart.places.empty() ? 0.0 : chart.places.front().Rotation();
    const auto alongRow = [&](const Point& p) { return p.x * std::cos(turn) + p.y * std::sin(turn); };
    const auto acrossRows = [&](const Point& p) { return p.y * std::cos(turn) - p.x * std::sin(turn); };
    const auto byPlace = [this](const auto& coordinate) {
        return [this, &coordinate](size_t left, size_t right) {
            return coordinate(chart.places[left].centre) < coordinate(chart.places[right].centre);
        };
    };
    std::stable_sort(order.begin(), order.end(), byPlace(acrossRows));
    for (const size_t patch : order) {
        const J4Chart::Place* const first = rows.empty() ? nullptr : &chart.places[rows.back().front()];
        if (first == nullptr ||
            acrossRows(chart.places[patch].centre) - acrossRows(first->centre) >= acrossRows(first->across)) {
            rows.emplace_back();
        }
        rows.back().push_back(patch);
    }
    for (Row& row : rows) {
        std::stable_sort(row.begin(), row.end(), byPlace(alongRow));
    }
}

ChartLayout ChartLayout::Load(const std::string& fileName, const J4Chart::Grid& grid, bool measuredByHand,
                              std::optional<size_t> page)
{
    try {
        return Read(J4Chart::ChartFile::Read(fileName), grid, measuredByHand, page);
    } catch (const J4Chart::CgatsError& error) {
        throw ToolError(ExitCode::File, "layout '" + fileName + "': " + error.what(),
                        "A layout is a CGATS.17 file with SAMPLE_ID or SAMPLE_NAME and either X, Y, WIDTH, HEIGHT in "
                        "millimetres or a grid (--rows, --columns, --patch, --start).");
    }
}

ChartLayout ChartLayout::Read(const J4Chart::CgatsFile& file, const J4Chart::Grid& grid, bool measuredByHand,
                              std::optional<size_t> page)
{
    const J4Chart::CgatsFile onePage = J4Chart::ChartPages::Select(file, page);
    J4Chart::ChartReader::Wanted wanted;
    wanted.places = true;
    wanted.grid = grid;
    wanted.fittedLater = measuredByHand;
    J4Chart::Chart chart = J4Chart::ChartReader::Read(onePage, wanted);
    if (chart.patches.empty()) {
        throw J4Chart::CgatsError(0, "there are no patches");
    }
    const std::vector<size_t> pages = J4Chart::ChartPages::Of(file.Tables()[chart.table]);
    if (page && pages.empty()) {
        throw J4Chart::CgatsError(0, "the layout has no pages, so there is no page " + std::to_string(*page));
    }
    if (!page && pages.size() > 1) {
        throw ToolError(ExitCode::Usage,
                        "the layout has " + std::to_string(pages.size()) + " pages, and one of them lies on the bed",
                        "Give --page, one of " + J4Chart::ChartPages::Text(pages) + ".");
    }
    ChartLayout layout(std::move(chart));
    layout.source = onePage.Tables()[layout.chart.table];
    layout.ReadMarks();
    return layout;
}

void ChartLayout::ReadMarks()
{
    const J4Chart::CgatsTable::Keyword* const keyword = source.FindKeyword(MarksKeyword);
    if (keyword == nullptr) {
        return;
    }
    std::istringstream words(keyword->value);
    std::vector<double> numbers;
    for (std::string word; words >> word;) {
        constexpr double farthest = 10000.0;  // mm, as for patches
        double number = 0.0;
        if (!J4Chart::ParseNumber(word, number) || std::abs(number) > farthest) {
            throw J4Chart::CgatsError(keyword->line, keyword->name + " '" + word + "' is not a place in mm");
        }
        numbers.push_back(number);
    }
    if (numbers.size() != 6) {
        throw J4Chart::CgatsError(keyword->line,
                                  keyword->name + " has " + std::to_string(numbers.size()) + " values instead of 6");
    }
    marks = {Point{numbers[0], numbers[1]}, Point{numbers[2], numbers[3]}, Point{numbers[4], numbers[5]}};
}

std::string ChartLayout::FileText() const
{
    J4Chart::CgatsTable table = source;
    std::erase_if(table.keywords, [](const J4Chart::CgatsTable::Keyword& keyword) {
        return keyword.name.starts_with("LAYOUT_") || keyword.name == "PATCH_SIZE" || keyword.name == "PATCH_GAP";
    });
    const double turn = chart.places.front().Rotation() * 180.0 / std::numbers::pi;
    if (marks) {
        std::string text;
        for (const Point& mark : *marks) {
            for (const double number : {mark.x, mark.y}) {
                text += (text.empty() ? "" : " ") + J4Chart::NumberText(std::round(number * 1e3) / 1e3);
            }
        }
        table.SetKeyword(MarksKeyword, text);
    }
    table.SetKeyword("LAYOUT_ROTATION", J4Chart::NumberText(std::round(turn * 1e4) / 1e4));
    const auto column = [&table](const char* field) {
        int index = table.FindField(field);
        if (index < 0) {
            index = static_cast<int>(table.fields.size());
            table.fields.emplace_back(field);
        }
        return static_cast<size_t>(index);
    };
    const std::array<size_t, 4> columns = {column("X"), column("Y"), column("WIDTH"), column("HEIGHT")};
    for (size_t i = 0; i < table.rows.size(); ++i) {
        const J4Chart::Place& place = chart.places[i];
        const std::array<double, 4> values = {place.centre.x, place.centre.y, place.Width(), place.Height()};
        table.rows[i].values.resize(table.fields.size());
        for (size_t k = 0; k < values.size(); ++k) {
            table.rows[i].values[columns[k]] = J4Chart::NumberText(std::round(values[k] * 1e3) / 1e3);
        }
    }
    return TableText(std::move(table), "the layout can't be written", "Correct the layout.");
}

std::array<ChartLayout::Corner, 3> ChartLayout::Corners() const
{
    if (marks) {
        return {Corner{"crosshair 1", (*marks)[0]}, Corner{"crosshair 2", (*marks)[1]},
                Corner{"crosshair 3", (*marks)[2]}};
    }
    if (!HasCorners()) {
        throw ToolError(ExitCode::Usage, "a chart is placed by three corners only when it has two rows and two columns",
                        "Give the places of its patches in the layout, or a grid with --start.");
    }
    const auto middleOf = [this](size_t patch) {
        return Corner{"the middle of patch " + chart.patches[patch].name, chart.places[patch].centre};
    };
    return {middleOf(rows.front().front()), middleOf(rows.front().back()), middleOf(rows.back().front())};
}

J4Chart::Chart::Conditions ChartLayout::InkConditions() const
{
    J4Chart::Chart::Conditions inks;
    std::copy_if(chart.conditions.begin(), chart.conditions.end(), std::back_inserter(inks), [](const auto& condition) {
        return condition.first.starts_with("SPOT_") || condition.first == J4Chart::DeviceValues::MaximumKeyword;
    });
    return inks;
}

void ChartLayout::PlaceCorners(const std::array<Point, 3>& corners)
{
    std::array<Point, 3> known;
    const std::array<Corner, 3> named = Corners();
    std::transform(named.begin(), named.end(), known.begin(), [](const Corner& corner) { return corner.place; });
    constexpr double smallestArea = 1.0;  // mm²
    if (std::abs(J4Chart::PlaneMap::AreaOf(corners)) < smallestArea || J4Chart::PlaneMap::AreaOf(known) == 0.0) {
        throw ToolError(
            ExitCode::Usage, "the three corners lie in one line",
            "Give the crosshairs 1, 2 and 3, or where there are none the first and the last patch of the first row, "
            "and the first of the last row.");
    }
    const J4Chart::PlaneMap map(known, corners);
    std::transform(chart.places.begin(), chart.places.end(), chart.places.begin(), map);
    if (marks) {
        marks = corners;
    }
}

void ChartLayout::RequireMeasurable() const
{
    const auto refuse = [this](size_t patch, const std::string& reason) {
        throw ToolError(
            ExitCode::File,
            J4Chart::CgatsError(chart.patches[patch].line, "patch " + chart.patches[patch].name + " " + reason).what(),
            "Correct the layout, or --patch and --gap.");
    };
    std::map<std::string, size_t> names;
    for (size_t i = 0; i < chart.patches.size(); ++i) {
        const std::string& name = chart.patches[i].name;
        if (const auto [other, isNew] = names.emplace(name, i); !isNew) {
            refuse(i, "has the name of the patch of line " + std::to_string(chart.patches[other->second].line));
        }
        if (!hasSizes) {
            continue;
        }
        const J4Chart::Place& place = chart.places[i];
        for (const double side : {place.Width(), place.Height()}) {
            if (!(side >= SmallestPatch)) {
                refuse(i, "is " + J4Chart::NumberText(std::round(side * 100.0) / 100.0) +
                              " mm long or wide; the instrument sees a spot of 4.5 mm and needs 5 mm at least");
            }
        }
    }
    if (const auto pair = Overlapping()) {
        refuse(pair->second, "overlaps patch " + chart.patches[pair->first].name);
    }
}

/// The first two patches of which one lies on the other.
std::optional<std::pair<size_t, size_t>> ChartLayout::Overlapping() const
{
    constexpr double harmless = 0.05;  // mm, of rounding in files
    if (!hasSizes) {
        return std::nullopt;
    }
    // Patches of a chart are turned alike, so they overlap where they do in both of these directions.
    std::vector<size_t> order(chart.places.size());
    std::iota(order.begin(), order.end(), size_t{0});
    const auto top = [this](size_t patch) { return chart.places[patch].centre.y; };
    std::sort(order.begin(), order.end(), [&](size_t left, size_t right) { return top(left) < top(right); });
    for (size_t i = 0; i < order.size(); ++i) {
        const J4Chart::Place& one = chart.places[order[i]];
        const double width = one.Width();
        const double height = one.Height();
        const double reach = std::hypot(width, height);
        for (size_t k = i + 1; k < order.size(); ++k) {
            const J4Chart::Place& other = chart.places[order[k]];
            const double x = other.centre.x - one.centre.x;
            const double y = other.centre.y - one.centre.y;
            if (y > reach + std::hypot(other.Width(), other.Height())) {
                break;
            }
            const double along = std::abs(x * one.along.x + y * one.along.y) / (0.5 * width);
            const double across = std::abs(x * one.across.x + y * one.across.y) / (0.5 * height);
            if (along < 0.5 * (width + other.Width()) - harmless &&
                across < 0.5 * (height + other.Height()) - harmless) {
                return std::minmax(order[i], order[k]);
            }
        }
    }
    return std::nullopt;
}

void ChartLayout::MoveTo(const Placement& placement)
{
    for (J4Chart::Place& place : chart.places) {
        place = {placement.Of(place.centre), placement.Turned(place.along), placement.Turned(place.across)};
    }
    if (marks) {
        std::transform(marks->begin(), marks->end(), marks->begin(), [&](Point mark) { return placement.Of(mark); });
    }
}

}  // namespace J4Tool
