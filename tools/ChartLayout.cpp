#include "tools/ChartLayout.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <sstream>

#include "chart/cgats/CgatsFields.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace Colorimetry = J4Chart::Colorimetry;
using J4Chart::CgatsTable;
using J4Chart::Spectrum;

namespace {

constexpr double LargestLength = 10000.0;  // mm

[[noreturn]] void Refuse(int line, const std::string& reason)
{
    throw ToolError(ExitCode::File, J4Chart::CgatsFile::Error{line, reason}.Text(),
                    "A layout is a CGATS.17 file with SAMPLE_ID or SAMPLE_NAME and either X, Y, WIDTH, HEIGHT in "
                    "millimetres or a grid (--rows, --columns, --patch, --start).");
}

double Number(const CgatsTable& table, const CgatsTable::Row& row, int column, double low, double high)
{
    const std::string& text = row.values[static_cast<size_t>(column)];
    double value = 0.0;
    if (!J4Chart::ParseNumber(text, value) || value < low || value > high) {
        std::ostringstream reason;
        reason.imbue(std::locale::classic());
        reason << table.fields[static_cast<size_t>(column)] << " '" << text << "' is not a number from " << low
               << " to " << high;
        Refuse(row.line, reason.str());
    }
    return value;
}

/// The numbers of a keyword, which must be so many; nothing where the file has no such keyword.
std::optional<std::vector<double>> KeywordNumbers(const CgatsTable& table, const std::string& name, size_t count)
{
    const CgatsTable::Keyword* keyword = table.FindKeyword(name);
    if (keyword == nullptr) {
        return std::nullopt;
    }
    std::vector<double> numbers;
    std::istringstream words(keyword->value);
    for (std::string word; words >> word;) {
        double number = 0.0;
        if (!J4Chart::ParseNumber(word, number) || std::abs(number) > LargestLength) {
            Refuse(keyword->line, name + " '" + word + "' is not a number");
        }
        numbers.push_back(number);
    }
    if (numbers.size() != count) {
        Refuse(keyword->line,
               name + " has " + std::to_string(numbers.size()) + " values instead of " + std::to_string(count));
    }
    return numbers;
}

void FillPoint(const CgatsTable& table, const std::string& name, std::optional<Point>& point)
{
    const auto numbers = KeywordNumbers(table, name, 2);
    if (!point && numbers) {
        point = Point{(*numbers)[0], (*numbers)[1]};
    }
}

void FillCount(const CgatsTable& table, const std::string& name, std::optional<size_t>& count)
{
    const auto numbers = KeywordNumbers(table, name, 1);
    if (!count && numbers) {
        count = static_cast<size_t>(std::max(0.0, numbers->front()));
    }
}

bool IsDeviceField(const std::string& field)
{
    const auto starts = [&field](const char* prefix) { return field.starts_with(prefix); };
    const bool manyInks = field.size() > 5 && std::isxdigit(static_cast<unsigned char>(field[0])) != 0 &&
                          field.compare(1, 4, "CLR_") == 0;
    return starts("RGB_") || starts("CMY_") || starts("CMYK_") || starts("GRAY") || manyInks;
}

/// The fields of a triple; all or nothing.
std::optional<std::array<int, 3>> FindTriple(const CgatsTable& table, const std::array<const char*, 3>& names)
{
    std::array<int, 3> columns{};
    for (size_t i = 0; i < columns.size(); ++i) {
        columns[i] = table.FindField(names[i]);
        if (columns[i] < 0) {
            return std::nullopt;
        }
    }
    return columns;
}

}  // namespace

ChartLayout ChartLayout::Load(const std::string& fileName, const GridOptions& grid, bool measuredByHand)
{
    J4Chart::CgatsFile file;
    J4Chart::CgatsFile::Error error;
    try {
        if (!file.Read(fileName, error)) {
            Refuse(error.line, error.reason);
        }
        return FromTable(file.Tables().front(), grid, measuredByHand);
    } catch (const ToolError& failure) {
        throw ToolError(failure.code, "layout '" + fileName + "': " + failure.what(), failure.advice);
    }
}

ChartLayout ChartLayout::FromTable(const CgatsTable& table, const GridOptions& grid, bool measuredByHand)
{
    const int nameField = table.FindField("SAMPLE_NAME");
    const int name = nameField >= 0 ? nameField : table.FindField("SAMPLE_ID");
    if (name < 0) {
        Refuse(0, "the field SAMPLE_NAME or SAMPLE_ID is missing");
    }
    if (table.rows.empty()) {
        Refuse(0, "there are no patches");
    }
    ChartLayout layout;
    for (const CgatsTable::Row& row : table.rows) {
        layout.patches.emplace_back().name = row.values[static_cast<size_t>(name)];
    }
    const bool givenAsGrid = grid.rows || grid.columns;
    if (!givenAsGrid && table.FindField("X") >= 0) {
        layout.TakePlaces(table);
    } else {
        layout.TakeGrid(table, grid, measuredByHand);
    }
    layout.TakeColours(table);
    return layout;
}

void ChartLayout::TakePlaces(const CgatsTable& table)
{
    std::array<int, 4> columns{};
    constexpr std::array<const char*, 4> names = {"X", "Y", "WIDTH", "HEIGHT"};
    for (size_t i = 0; i < names.size(); ++i) {
        columns[i] = table.FindField(names[i]);
        if (columns[i] < 0) {
            Refuse(0, std::string("the field ") + names[i] + " is missing");
        }
    }
    const CgatsTable::Keyword* origin = table.FindKeyword("LAYOUT_ORIGIN");
    const bool atCorner = origin != nullptr && origin->value == "CORNER";
    if (origin != nullptr && !atCorner && origin->value != "CENTRE") {
        Refuse(origin->line, "LAYOUT_ORIGIN '" + origin->value + "' is neither CENTRE nor CORNER");
    }
    for (size_t i = 0; i < patches.size(); ++i) {
        constexpr double smallest = 0.1;
        const CgatsTable::Row& row = table.rows[i];
        Patch& patch = patches[i];
        patch.centre = {Number(table, row, columns[0], -LargestLength, LargestLength),
                        Number(table, row, columns[1], -LargestLength, LargestLength)};
        patch.half = {Number(table, row, columns[2], smallest, LargestLength) / 2.0, 0.0};
        patch.halfAcross = {0.0, Number(table, row, columns[3], smallest, LargestLength) / 2.0};
        if (atCorner) {
            patch.centre.x += patch.half.x;
            patch.centre.y += patch.halfAcross.y;
        }
    }
    SortIntoRows();
}

void ChartLayout::TakeGrid(const CgatsTable& table, GridOptions grid, bool measuredByHand)
{
    FillCount(table, "LAYOUT_ROWS", grid.rows);
    FillCount(table, "LAYOUT_COLUMNS", grid.columns);
    FillPoint(table, "PATCH_SIZE", grid.size);
    FillPoint(table, "PATCH_GAP", grid.gap);
    FillPoint(table, "LAYOUT_START", grid.start);
    if (!grid.columns && grid.rows && *grid.rows > 0) {
        grid.columns = (patches.size() + *grid.rows - 1) / *grid.rows;
    }
    if (!grid.columns || *grid.columns == 0) {
        Refuse(0, "there are neither places (X, Y, WIDTH, HEIGHT) nor a number of columns (--columns, LAYOUT_COLUMNS)");
    }
    if (grid.rows && (patches.size() + *grid.columns - 1) / *grid.columns != *grid.rows) {
        Refuse(0, std::to_string(patches.size()) + " patches do not fill " + std::to_string(*grid.rows) + " rows of " +
                      std::to_string(*grid.columns));
    }
    if (measuredByHand) {
        // The corners give place and scale, so any size will do.
        grid.size = grid.size.value_or(Point{1.0, 1.0});
        grid.start = grid.start.value_or(Point{});
    }
    if (!grid.size || !grid.start || grid.size->x <= 0.0 || grid.size->y <= 0.0) {
        Refuse(0,
               "the size of the patches (--patch, PATCH_SIZE) and the place of the first one (--start, "
               "LAYOUT_START) are missing");
    }
    const Point gap = grid.gap.value_or(Point{});
    for (size_t i = 0; i < patches.size(); ++i) {
        const double column = static_cast<double>(i % *grid.columns);
        const double row = static_cast<double>(i / *grid.columns);
        patches[i].centre = {grid.start->x + column * (grid.size->x + gap.x),
                             grid.start->y + row * (grid.size->y + gap.y)};
        patches[i].half = {grid.size->x / 2.0, 0.0};
        patches[i].halfAcross = {0.0, grid.size->y / 2.0};
    }
    SortIntoRows();
}

void ChartLayout::TakeColours(const CgatsTable& table)
{
    std::vector<size_t> device;
    for (size_t i = 0; i < table.fields.size(); ++i) {
        if (IsDeviceField(table.fields[i])) {
            device.push_back(i);
            deviceFields.push_back(table.fields[i]);
        }
    }
    const auto bands = J4Chart::FindSpectralFields(table);
    const bool hasSpectra = std::all_of(bands.begin(), bands.end(), [](int column) { return column >= 0; });
    const auto lab = FindTriple(table, {"LAB_L", "LAB_A", "LAB_B"});
    const auto xyz = FindTriple(table, {"XYZ_X", "XYZ_Y", "XYZ_Z"});
    constexpr double largest = 1000.0;
    for (size_t i = 0; i < patches.size(); ++i) {
        const CgatsTable::Row& row = table.rows[i];
        for (const size_t column : device) {
            patches[i].device.push_back(row.values[column]);
        }
        const auto triple = [&](const std::array<int, 3>& columns) {
            return Triple{Number(table, row, columns[0], -largest, largest),
                          Number(table, row, columns[1], -largest, largest),
                          Number(table, row, columns[2], -largest, largest)};
        };
        if (hasSpectra) {
            constexpr double highestReflectance = 2.0;
            Spectrum spectrum{};
            for (size_t band = 0; band < spectrum.size(); ++band) {
                spectrum[band] = static_cast<float>(Number(table, row, bands[band], 0.0, highestReflectance));
            }
            patches[i].reference = Colorimetry::Lab(spectrum);
        } else if (lab) {
            patches[i].reference = triple(*lab);
        } else if (xyz) {
            patches[i].reference = Colorimetry::LabOfTristimulus(triple(*xyz));
        }
    }
}

void ChartLayout::SortIntoRows()
{
    std::vector<size_t> order(patches.size());
    std::iota(order.begin(), order.end(), size_t{0});
    const auto byPlace = [this](double Point::*coordinate) {
        return [this, coordinate](size_t left, size_t right) {
            return patches[left].centre.*coordinate < patches[right].centre.*coordinate;
        };
    };
    std::stable_sort(order.begin(), order.end(), byPlace(&Point::y));
    for (const size_t patch : order) {
        const bool sameRow = !rows.empty() && patches[patch].centre.y - patches[rows.back().front()].centre.y <
                                                  patches[rows.back().front()].halfAcross.y;
        if (!sameRow) {
            rows.emplace_back();
        }
        rows.back().push_back(patch);
    }
    for (Row& row : rows) {
        std::stable_sort(row.begin(), row.end(), byPlace(&Point::x));
    }
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
    const std::array<size_t, 3> known = CornerPatches();
    const Point origin = patches[known[0]].centre;
    const auto minus = [](Point left, Point right) { return Point{left.x - right.x, left.y - right.y}; };
    const Point along = minus(patches[known[1]].centre, origin);
    const Point down = minus(patches[known[2]].centre, origin);
    const Point newAlong = minus(corners[1], corners[0]);
    const Point newDown = minus(corners[2], corners[0]);
    const double area = along.x * down.y - along.y * down.x;
    const double newArea = newAlong.x * newDown.y - newAlong.y * newDown.x;
    constexpr double smallestArea = 1.0;  // mm²
    if (std::abs(newArea) < smallestArea || area == 0.0) {
        throw ToolError(ExitCode::Usage, "the three corners lie in one line",
                        "Give the first and the last patch of the first row, and the first of the last row.");
    }
    // A vector of the chart is so much of the way along and so much of the way down, here as there.
    const auto turned = [&](Point vector) {
        const double a = (vector.x * down.y - vector.y * down.x) / area;
        const double d = (along.x * vector.y - along.y * vector.x) / area;
        return Point{a * newAlong.x + d * newDown.x, a * newAlong.y + d * newDown.y};
    };
    for (Patch& patch : patches) {
        const Point moved = turned(minus(patch.centre, origin));
        patch.centre = {corners[0].x + moved.x, corners[0].y + moved.y};
        patch.half = turned(patch.half);
        patch.halfAcross = turned(patch.halfAcross);
    }
}

}  // namespace J4Tool
