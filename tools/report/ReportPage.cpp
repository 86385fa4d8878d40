#include "tools/report/ReportPage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

#include "Version.h"
#include "tools/JsonObject.h"
#include "tools/report/ReportFiles.h"

namespace J4Tool {

namespace {

constexpr const char* programName = "j4tavla " J4T_VERSION_TEXT(J4T_VERSION_MAJOR) "." J4T_VERSION_TEXT(
    J4T_VERSION_MINOR) "." J4T_VERSION_TEXT(J4T_VERSION_REVISION);

/// A text with some of its characters replaced.
std::string Replaced(std::string_view text, std::initializer_list<std::pair<char, const char*>> replacements)
{
    std::string replaced;
    replaced.reserve(text.size());
    for (const char character : text) {
        const auto found = std::find_if(replacements.begin(), replacements.end(),
                                        [&](const auto& replacement) { return replacement.first == character; });
        if (found == replacements.end()) {
            replaced += character;
        } else {
            replaced += found->second;
        }
    }
    return replaced;
}

/// Rounded to so many decimals: what is more would only make the page longer.
double Rounded(double value, int decimals)
{
    const double power = std::pow(10.0, decimals);
    return std::round(value * power) / power;
}

template <class Numbers>
std::vector<double> Rounded(const Numbers& numbers, int decimals)
{
    std::vector<double> rounded;
    rounded.reserve(std::size(numbers));
    for (const double number : numbers) {
        rounded.push_back(Rounded(number, decimals));
    }
    return rounded;
}

template <class List, class Make>
std::vector<JsonObject> Objects(const List& list, Make make)
{
    std::vector<JsonObject> objects;
    objects.reserve(std::size(list));
    for (const auto& item : list) {
        objects.push_back(make(item));
    }
    return objects;
}

// The script takes a member that is not there as something that is not known.

JsonObject SideObject(const ReportData::Side& side)
{
    JsonObject object;
    object.AddNumbers("lab", Rounded(side.lab, 3))
        .Add("colour", side.colour.code)
        .Add("inGamut", side.colour.inGamut ? 1 : 0);
    if (side.spectrum) {
        object.AddNumbers("spectrum", Rounded(*side.spectrum, 4));
    }
    return object;
}

JsonObject PatchObject(const ReportData::Patch& patch)
{
    const ColourTable::Place& place = patch.place;
    JsonObject object;
    object.Add("name", patch.name)
        .AddNumbers("place", Rounded(std::array{place.x, place.y, place.width, place.height}, 3))
        .Add("measured", SideObject(patch.measured));
    if (patch.reference) {
        object.Add("reference", SideObject(*patch.reference)).AddNumbers("differences", Rounded(patch.differences, 4));
    }
    return object;
}

JsonObject FormulaObject(const ReportData::Formula& formula)
{
    const DifferenceSummary& summary = formula.summary;
    return JsonObject()
        .Add("name", formula.name)
        .Add("count", summary.Count())
        .Add("mean", Rounded(summary.Mean(), 4))
        .Add("percentile95", Rounded(summary.Percentile95(), 4))
        .Add("maximum", Rounded(summary.Maximum(), 4))
        .Add("binWidth", Rounded(summary.BinWidth(), 6))
        .AddNumbers("bins", Rounded(summary.Bins(), 0))
        .AddNumbers("worst", Rounded(summary.Worst(), 0));
}

JsonObject RowObject(const RowTravel& row)
{
    return JsonObject()
        .Add("name", row.Name())
        .Add("distance", Rounded(row.Distance(), 3))
        .Add("rampEnd", Rounded(row.RampEnd(), 6))
        .Add("duration", Rounded(row.Duration(), 6))
        .Add("step", Rounded(row.Step(), 9))
        .Add("marks", row.HasSamples() ? 1 : 0)
        .AddNumbers("positions", Rounded(row.Positions(), 2))
        .Add("fields", Objects(row.Fields(),
                               [](const RowTravel::Field& field) {
                                   return JsonObject()
                                       .Add("patch", field.patch)
                                       .Add("from", Rounded(field.from, 2))
                                       .Add("to", Rounded(field.to, 2));
                               }))
        .Add("notes", row.Notes());
}

/// The data of the page. It may stand in a script element: no "<" is left in it, which JSON has in texts only.
std::string DataText(const ReportData& data)
{
    const std::string text =
        JsonObject()
            .Add("program", programName)
            .Add("measured", data.MeasuredName())
            .Add("reference", data.ReferenceName())
            .Add("placed", data.IsPlaced() ? 1 : 0)
            .Add("notices", data.Notices())
            .Add("conditions",
                 Objects(data.Conditions(),
                         [](const auto& condition) {
                             return JsonObject().Add("name", condition.first).Add("value", condition.second);
                         }))
            .Add("formulas", Objects(data.Formulas(), FormulaObject))
            .Add("patches", Objects(data.Patches(), PatchObject))
            .Add("rows", Objects(data.Rows(), RowObject))
            .Text();
    return Replaced(text, {{'<', "\\u003c"}});
}

}  // namespace

std::string MakeReportPage(const ReportData& data)
{
    const std::pair<std::string_view, std::string> parts[] = {
        {"{{title}}", Replaced("Colour report: " + data.MeasuredName(), {{'&', "&amp;"}, {'<', "&lt;"}})},
        {"{{plot-style}}", std::string(plotStyle)},
        {"{{style}}", std::string(pageStyle)},
        {"{{data}}", DataText(data)},
        {"{{plot-licence}}", std::string(plotLicence)},
        {"{{plot-script}}", std::string(plotScript)},
        {"{{script}}", std::string(pageScript)},
    };
    // The parts stand in the template in this order, so what was put in is never searched.
    std::string page;
    std::string_view rest = pageTemplate;
    for (const auto& [mark, text] : parts) {
        const size_t at = rest.find(mark);
        page += rest.substr(0, at);
        page += text;
        rest.remove_prefix(at + mark.size());
    }
    page += rest;
    return page;
}

}  // namespace J4Tool
