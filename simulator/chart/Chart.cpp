#include "simulator/chart/Chart.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>

#include "chart/cgats/CgatsFields.h"
#include "simulator/chart/Aperture.h"

namespace J4Bench {

using J4Chart::CgatsTable;
using J4Chart::ParseNumber;

namespace {

constexpr float DefaultPaper = 0.85f;
constexpr double HighestReflectance = 2.0;  // leaves room for brighteners; percentages are far above
constexpr double TenthsPerMillimetre = 10.0;
constexpr double LargestLength = 10000.0;  // mm; no bed is larger, and it keeps the arithmetic tame

/// Which column of the file holds what; -1 where the file has no such column.
struct Columns {
    int name = -1;
    int x = -1;
    int y = -1;
    int width = -1;
    int height = -1;
    std::array<int, SpectrumLength> bands{};
};

bool FindColumns(const CgatsTable& table, Columns& columns, CgatsFile::Error& error)
{
    columns.name = table.FindField("SAMPLE_NAME");
    if (columns.name < 0) {
        columns.name = table.FindField("SAMPLE_ID");
    }
    columns.x = table.FindField("X");
    columns.y = table.FindField("Y");
    columns.width = table.FindField("WIDTH");
    columns.height = table.FindField("HEIGHT");
    columns.bands = J4Chart::FindSpectralFields(table);
    const auto require = [&](int column, const std::string& field) {
        if (column < 0) {
            error = {0, "the field " + field + " is missing"};
        }
        return column >= 0;
    };
    if (!require(columns.name, "SAMPLE_NAME or SAMPLE_ID") || !require(columns.x, "X") || !require(columns.y, "Y") ||
        !require(columns.width, "WIDTH") || !require(columns.height, "HEIGHT")) {
        return false;
    }
    for (size_t band = 0; band < columns.bands.size(); ++band) {
        if (!require(columns.bands[band], J4Chart::SpectralField(band))) {
            return false;
        }
    }
    return true;
}

/// One value, or 36 in order of wavelength.
bool ParsePaper(const CgatsTable::Keyword& keyword, Spectrum& paper, CgatsFile::Error& error)
{
    std::vector<double> values;
    for (size_t at = 0; at < keyword.value.size();) {
        const size_t begin = std::min(keyword.value.find_first_not_of(" \t", at), keyword.value.size());
        at = std::min(keyword.value.find_first_of(" \t", begin), keyword.value.size());
        double value = -1.0;
        if (begin < at && (!ParseNumber(keyword.value.substr(begin, at - begin), value) || value < 0.0 ||
                           value > HighestReflectance)) {
            error = {keyword.line, "PAPER_REFLECTANCE '" + keyword.value.substr(begin, at - begin) +
                                       "' is not a reflectance factor from 0 to 2"};
            return false;
        }
        if (begin < at) {
            values.push_back(value);
        }
    }
    if (values.size() != 1 && values.size() != paper.size()) {
        error = {keyword.line, "PAPER_REFLECTANCE has " + std::to_string(values.size()) + " values instead of 1 or 36"};
        return false;
    }
    for (size_t band = 0; band < paper.size(); ++band) {
        paper[band] = static_cast<float>(values[values.size() == 1 ? 0 : band]);
    }
    return true;
}

bool ParsePatch(const CgatsTable& table, const CgatsTable::Row& row, const Columns& columns, bool atCorner,
                Patch& patch, CgatsFile::Error& error)
{
    const auto number = [&](int column, double low, double high, const char* range, double& value) {
        const std::string& text = row.values[static_cast<size_t>(column)];
        if (ParseNumber(text, value) && value >= low && value <= high) {
            return true;
        }
        error = {row.line, table.fields[static_cast<size_t>(column)] + " '" + text + "' is not " + range};
        return false;
    };
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;
    constexpr const char* lengthRange = "a length in millimetres above 0";
    constexpr const char* placeRange = "a place in millimetres";
    if (!number(columns.x, -LargestLength, LargestLength, placeRange, x) ||
        !number(columns.y, -LargestLength, LargestLength, placeRange, y) ||
        !number(columns.width, 0.1, LargestLength, lengthRange, width) ||
        !number(columns.height, 0.1, LargestLength, lengthRange, height)) {
        return false;
    }
    patch.name = row.values[static_cast<size_t>(columns.name)];
    patch.width = width * TenthsPerMillimetre;
    patch.height = height * TenthsPerMillimetre;
    patch.centre = {x * TenthsPerMillimetre + (atCorner ? patch.width / 2 : 0.0),
                    y * TenthsPerMillimetre + (atCorner ? patch.height / 2 : 0.0)};
    for (size_t band = 0; band < patch.reflectance.size(); ++band) {
        double value = 0.0;
        if (!number(columns.bands[band], 0.0, HighestReflectance, "a reflectance factor from 0 to 2", value)) {
            return false;
        }
        patch.reflectance[band] = static_cast<float>(value);
    }
    return true;
}

}  // namespace

Chart::Chart() { paper.fill(DefaultPaper); }

bool Chart::Load(const std::string& fileName, CgatsFile::Error& error)
{
    std::ifstream input(fileName, std::ios::binary);
    if (!input) {
        error = {0, "the file can't be opened"};
        return false;
    }
    return Load(input, error);
}

bool Chart::Load(std::istream& input, CgatsFile::Error& error)
{
    CgatsFile file;
    Columns columns;
    if (!file.Read(input, error) || !FindColumns(file.Tables().front(), columns, error)) {
        return false;
    }
    const CgatsTable& table = file.Tables().front();
    Chart read;
    if (const CgatsTable::Keyword* keyword = table.FindKeyword("PAPER_REFLECTANCE")) {
        if (!ParsePaper(*keyword, read.paper, error)) {
            return false;
        }
    }
    bool atCorner = false;
    if (const CgatsTable::Keyword* keyword = table.FindKeyword("LAYOUT_ORIGIN")) {
        atCorner = keyword->value == "CORNER";
        if (!atCorner && keyword->value != "CENTRE") {
            error = {keyword->line, "LAYOUT_ORIGIN '" + keyword->value + "' is neither CENTRE nor CORNER"};
            return false;
        }
    }
    for (const CgatsTable::Row& row : table.rows) {
        Patch patch;
        if (!ParsePatch(table, row, columns, atCorner, patch, error)) {
            return false;
        }
        read.patches.push_back(std::move(patch));
    }
    *this = std::move(read);
    return true;
}

Spectrum Chart::ReflectanceAt(Point centre, double apertureDiameter) const
{
    // Only the few patches near the aperture take part in the test of each sub-point.
    std::vector<const Patch*> around;
    for (const Patch& patch : patches) {
        if (std::abs(patch.centre.x - centre.x) <= (patch.width + apertureDiameter) / 2 &&
            std::abs(patch.centre.y - centre.y) <= (patch.height + apertureDiameter) / 2) {
            around.push_back(&patch);
        }
    }
    std::vector<size_t> hits(around.size(), 0);
    size_t onPaper = 0;
    for (const Point& point : UnitDisc()) {
        const double x = centre.x + point.x * apertureDiameter;
        const double y = centre.y + point.y * apertureDiameter;
        size_t top = around.size();
        while (top > 0 && (std::abs(x - around[top - 1]->centre.x) > around[top - 1]->width / 2 ||
                           std::abs(y - around[top - 1]->centre.y) > around[top - 1]->height / 2)) {
            --top;
        }
        ++(top == 0 ? onPaper : hits[top - 1]);
    }
    const double all = static_cast<double>(UnitDisc().size());
    Spectrum mean{};
    for (size_t band = 0; band < mean.size(); ++band) {
        double sum = static_cast<double>(onPaper) * static_cast<double>(paper[band]);
        for (size_t i = 0; i < around.size(); ++i) {
            sum += static_cast<double>(hits[i]) * static_cast<double>(around[i]->reflectance[band]);
        }
        mean[band] = static_cast<float>(sum / all);
    }
    return mean;
}

}  // namespace J4Bench
