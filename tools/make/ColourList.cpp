#include "tools/make/ColourList.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <utility>

#include "chart/ChartFile.h"
#include "chart/ChartReader.h"
#include "chart/DeviceValues.h"
#include "chart/cgats/CgatsFields.h"
#include "tools/ToolError.h"

namespace J4Tool {

using J4Chart::CgatsError;
using J4Chart::CgatsTable;
using J4Chart::NumberText;

namespace {

constexpr double FullRgb = 255.0;
constexpr double Percent = 100.0;

double Scaled(const std::string& what, const std::string& text, int line, double maximum)
{
    double value = 0.0;
    if (!J4Chart::ParseNumber(text, value) || value < 0.0 || value > maximum) {
        throw CgatsError(line, what + " '" + text + "' is not a number from 0 to " + NumberText(maximum));
    }
    return value / maximum;
}

/// Where the fields of a group stand; nothing where the table has none of them.
/// @throws CgatsError where it has only some
std::vector<size_t> Group(const CgatsTable& table, const std::vector<std::string>& names)
{
    std::vector<size_t> found;
    std::string missing;
    for (const std::string& name : names) {
        if (const int field = table.FindField(name); field >= 0) {
            found.push_back(static_cast<size_t>(field));
        } else if (missing.empty()) {
            missing = name;
        }
    }
    if (!found.empty() && !missing.empty()) {
        throw CgatsError(table.fieldsLine, "the field " + missing + " is missing");
    }
    return found;
}

SpotInk ReadSpot(const CgatsTable& table, const std::string& field)
{
    const auto keyword = [&](const std::string& name, const char* meaning) -> const CgatsTable::Keyword& {
        const CgatsTable::Keyword* const found = table.FindKeyword(name);
        if (found == nullptr || found->value.empty()) {
            throw CgatsError(table.fieldsLine, "the keyword " + name + " is missing, " + meaning);
        }
        return *found;
    };
    const CgatsTable::Keyword& name = keyword(field + "_NAME", "the ink's name as the print system knows it");
    const CgatsTable::Keyword& cmyk =
        keyword(field + "_CMYK", "which stands for the ink where there is none, for instance \"0 60 100 0\"");
    for (const char* taken : {"Cyan", "Magenta", "Yellow", "Black", "All", "None"}) {
        if (name.value == taken) {
            throw CgatsError(name.line, "no spot ink can be called '" + name.value + "'");
        }
    }
    SpotInk spot{name.value, {}};
    std::istringstream words(cmyk.value);
    size_t count = 0;
    for (std::string word; words >> word; ++count) {
        if (count < spot.cmyk.size()) {
            spot.cmyk[count] = Scaled(cmyk.name, word, cmyk.line, Percent);
        }
    }
    if (count != spot.cmyk.size()) {
        throw CgatsError(cmyk.line, cmyk.name + " has " + std::to_string(count) + " values instead of 4");
    }
    return spot;
}

}  // namespace

ColourList ColourList::Load(const std::string& fileName, const Scales& scales)
{
    try {
        return Read(J4Chart::ChartFile::Read(fileName), scales);
    } catch (const CgatsError& error) {
        throw ToolError(
            ExitCode::File, "colours '" + fileName + "': " + error.what(),
            "A list of colours is a CGATS.17 file with RGB_R, RGB_G, RGB_B (0 to 255, or --rgb-maximum), or "
            "with CMYK_C, CMYK_M, CMYK_Y, CMYK_K and SPOT_1, SPOT_2 ... (0 to 100, or --cmyk-maximum).");
    }
}

ColourList ColourList::Read(const J4Chart::CgatsFile& file, const Scales& scales)
{
    J4Chart::ChartReader::Wanted wanted;
    wanted.names = false;
    const J4Chart::Chart chart = J4Chart::ChartReader::Read(file, wanted);
    if (chart.patches.empty()) {
        throw CgatsError(0, "there are no colours");
    }
    ColourList list;
    list.table = file.Tables()[chart.table];
    list.FindInks();
    list.ReadSpots();
    list.RequireAllPrinted();
    const std::optional<double> told = list.ToldMaximum(scales);
    list.maximum = told.value_or(list.isRgb ? FullRgb : Percent);
    std::map<std::string, int> lines;
    for (size_t i = 0; i < chart.patches.size(); ++i) {
        const J4Chart::Patch& patch = chart.patches[i];
        Colour colour{
            patch.name.empty() ? std::to_string(i + 1) : patch.name, patch.id, patch.line, {}, patch.Colour()};
        for (const size_t field : list.fields) {
            colour.values.push_back(
                Scaled(list.table.fields[field], list.table.rows[i].values[field], patch.line, list.maximum));
        }
        if (const auto [other, isNew] = lines.emplace(colour.name, patch.line); !isNew) {
            throw CgatsError(patch.line, "the colour of line " + std::to_string(other->second) + " is called " +
                                             colour.name + " too");
        }
        list.colours.push_back(std::move(colour));
    }
    if (!told) {
        list.RequireScale();
    }
    return list;
}

void ColourList::FindInks()
{
    const std::vector<size_t> rgb = Group(table, {"RGB_R", "RGB_G", "RGB_B"});
    const std::vector<size_t> cmyk = Group(table, {"CMYK_C", "CMYK_M", "CMYK_Y", "CMYK_K"});
    if (rgb.empty() == cmyk.empty()) {
        throw CgatsError(table.fieldsLine, rgb.empty()
                                               ? "there are no device values: neither RGB nor CMYK"
                                               : "there are RGB and CMYK values; a chart is printed of one kind");
    }
    isRgb = cmyk.empty();
    fields = isRgb ? rgb : cmyk;
}

/// What a person tells, else the file.
std::optional<double> ColourList::ToldMaximum(const Scales& scales) const
{
    const std::optional<double> told = isRgb ? scales.rgb : scales.cmyk;
    const CgatsTable::Keyword* const keyword = table.FindKeyword(J4Chart::DeviceValues::MaximumKeyword);
    if (told || keyword == nullptr) {
        return told;
    }
    double number = 0.0;
    if (!J4Chart::ParseNumber(keyword->value, number) || number <= 0.0) {
        throw CgatsError(keyword->line, keyword->name + " '" + keyword->value + "' is not a number above 0");
    }
    return number;
}

void ColourList::ReadSpots()
{
    for (size_t number = 1; !isRgb; ++number) {
        const std::string name = "SPOT_" + std::to_string(number);
        const int field = table.FindField(name);
        if (field < 0) {
            break;
        }
        fields.push_back(static_cast<size_t>(field));
        spots.push_back(ReadSpot(table, name));
        if (std::any_of(spots.begin(), spots.end() - 1,
                        [this](const SpotInk& other) { return other.name == spots.back().name; })) {
            throw CgatsError(table.fieldsLine, "two spot inks are called " + spots.back().name);
        }
    }
}

/// What stands in a list as an ink and was left out would be bare paper, and nobody would see why.
void ColourList::RequireAllPrinted() const
{
    for (size_t field = 0; field < table.fields.size(); ++field) {
        const std::string& name = table.fields[field];
        if (!J4Chart::IsDeviceField(name) || std::find(fields.begin(), fields.end(), field) != fields.end()) {
            continue;
        }
        const bool isSpot = name.starts_with("SPOT_");
        throw CgatsError(table.fieldsLine,
                         isSpot && isRgb ? "spot inks go with CMYK, not with RGB"
                         : isSpot        ? "the field SPOT_" + std::to_string(spots.size() + 1) +
                                        " is missing; spot inks are numbered from 1 on, and there is " + name
                                  : name + " is none of the values that a chart is printed of, " +
                                        (isRgb ? "R, G and B" : "C, M, Y, K and spot inks"));
    }
}

/// A list on another scale would be printed all too dark or nearly blank, and nobody would see why.
void ColourList::RequireScale() const
{
    double highest = 0.0;
    for (const Colour& colour : colours) {
        highest = std::max(highest, *std::max_element(colour.values.begin(), colour.values.end()));
    }
    constexpr double rounding = 1e-9;  // 1 of a scale of 255 may have become a little more
    const double full = isRgb ? FullRgb : Percent;
    highest *= full;
    if (highest == 0.0 || highest > (isRgb ? Percent : 1.0) + rounding) {
        return;
    }
    const std::string option = isRgb ? "--rgb-maximum " : "--cmyk-maximum ";
    const std::string other = highest > 1.0 + rounding ? NumberText(Percent) : "1";
    throw CgatsError(0, std::string("the highest value of ") + (isRgb ? "R, G and B" : "the inks") + " is " +
                            NumberText(std::round(highest * 1e6) / 1e6) + ", and it can't be told whether " +
                            (isRgb ? "full light" : "a solid") + " is " + other + " (" + option + other + ") or " +
                            NumberText(full) + " (" + option + NumberText(full) + ")");
}

std::vector<std::array<double, 4>> ColourList::SpotSolids() const
{
    std::vector<std::array<double, 4>> solids;
    std::transform(spots.begin(), spots.end(), std::back_inserter(solids),
                   [](const SpotInk& spot) { return spot.cmyk; });
    return solids;
}

}  // namespace J4Tool
