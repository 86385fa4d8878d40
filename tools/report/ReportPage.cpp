#include "tools/report/ReportPage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <numeric>
#include <string_view>
#include <utility>
#include <vector>

#include "Version.h"
#include "tools/Json.h"
#include "tools/PatchReading.h"
#include "tools/judge/JudgementText.h"
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
Json Objects(const List& list, Make make)
{
    Json objects = Json::array();
    for (const auto& item : list) {
        objects.push_back(make(item));
    }
    return objects;
}

// The script takes a member that is not there as something that is not known.

Json SideObject(const ReportData::Side& side)
{
    Json object = {{"lab", Rounded(side.lab, 3)}, {"colour", side.colour.code}, {"inGamut", side.colour.inGamut}};
    if (side.spectrum) {
        object["spectrum"] = Rounded(*side.spectrum, 4);
    }
    return object;
}

Json PatchObject(const ReportData::Patch& patch)
{
    const ReportData::Rectangle& place = patch.place;
    Json object = {{"name", patch.name},
                   {"place", Rounded(std::array{place.x, place.y, place.width, place.height}, 3)},
                   {"measured", SideObject(patch.measured)}};
    if (patch.reading) {
        object["reading"] = {{"way", WordsOfWay(patch.reading->way)},
                             {"samples", patch.reading->samples},
                             {"spread", Rounded(patch.reading->spread, 3)},
                             {"residual", Rounded(patch.reading->residual, 3)}};
    }
    if (patch.densities) {
        object["densities"] = Rounded(*patch.densities, 4);
    }
    if (patch.repeatSpread) {
        object["repeatSpread"] = Rounded(*patch.repeatSpread, 4);
    }
    if (patch.reference) {
        object["reference"] = SideObject(*patch.reference);
        object["differences"] = Rounded(patch.differences, 4);
        object["parts"] = Rounded(std::array{patch.parts.lightness, patch.parts.chroma, patch.parts.hue}, 3);
    }
    return object;
}

Json FormulaObject(const ReportData::Formula& formula)
{
    const J4Chart::DifferenceSummary& summary = formula.summary;
    return {{"name", formula.name},
            {"count", summary.Count()},
            {"mean", Rounded(summary.Mean(), 4)},
            {"percentile95", Rounded(summary.Percentile95(), 4)},
            {"maximum", Rounded(summary.Maximum(), 4)},
            {"binWidth", Rounded(summary.BinWidth(), 6)},
            {"bins", summary.Bins()},
            {"worst", summary.Worst()}};
}

Json RowObject(const RowTravel& row)
{
    return {
        {"name", row.Name()},
        {"distance", Rounded(row.Distance(), 3)},
        {"rampEnd", Rounded(row.RampEnd(), 6)},
        {"duration", Rounded(row.Duration(), 6)},
        {"step", Rounded(row.Step(), 9)},
        {"marks", row.HasSamples()},
        {"positions", Rounded(row.Positions(), 2)},
        {"fields",
         Objects(row.Fields(),
                 [](const RowTravel::Field& field) -> Json {
                     return {{"patch", field.patch}, {"from", Rounded(field.from, 2)}, {"to", Rounded(field.to, 2)}};
                 })},
        {"notes", row.Notes()}};
}

Json ReadingObject(const ReportData::RowReading& reading)
{
    return {{"row", reading.row},
            {"patches", reading.patches},
            {"way", reading.way},
            {"samples", reading.fewestSamples},
            {"spread", Rounded(reading.spread, 3)},
            {"residual", Rounded(reading.residual, 3)},
            {"repeatSpread", Rounded(reading.repeatSpread, 4)}};
}

Json LineObject(const Judgement::Line& line)
{
    Json behind = Json::array();
    for (const Judgement::PatchValue& patch : line.behind) {
        behind.push_back({{"patch", patch.patch}, {"value", Rounded(patch.value, 4)}});
    }
    return {{"rule", line.rule.name},
            {"source", line.rule.source},
            {"what", line.What()},
            {"patches", line.patches},
            {"limit", line.LimitText()},
            {"value", line.ValueText()},
            {"verdict", VerdictText(line.verdict)},
            {"reason", line.reason},
            {"behind", behind}};
}

Json VerdictObject(const Judgement& judgement)
{
    return {{"verdict", VerdictText(judgement.Overall())},
            {"words", judgement.Words()},
            {"title", judgement.Title()},
            {"source", judgement.Source()},
            {"lines", Objects(judgement.Lines(), LineObject)}};
}

/// Adds a member to the object in a text. One by one, as the objects of thousands of patches take many times the memory of
/// their text.
template <class List, class Make>
void AddList(std::string& text, const char* name, const List& list, Make make)
{
    text.back() = ',';
    text += std::string("\"") + name + "\":";
    char before = '[';
    for (const auto& item : list) {
        text += before + JsonText(make(item));
        before = ',';
    }
    text += list.empty() ? "[]}" : "]}";
}

std::string DataText(const ReportData& data)
{
    Json object = {{"program", programName},
                   {"measured", data.MeasuredName()},
                   {"reference", data.ReferenceName()},
                   {"placed", data.IsPlaced()},
                   {"notices", data.Notices()},
                   {"conditions", Objects(data.Conditions(),
                                          [](const auto& condition) -> Json {
                                              return {{"name", condition.first}, {"value", condition.second}};
                                          })},
                   {"formulas", Objects(data.Formulas(), FormulaObject)},
                   {"readings", Objects(data.Readings(), ReadingObject)}};
    if (data.Verdict()) {
        object["verdict"] = VerdictObject(*data.Verdict());
    }
    std::string text = JsonText(object);
    AddList(text, "patches", data.Patches(), PatchObject);
    AddList(text, "rows", data.Rows(), RowObject);
    return text;
}

/// The data of the page as it may stand in a script element: no "<" is left in it, which JSON has in texts only.
std::string ScriptText(const ReportData& data) { return Replaced(DataText(data), {{'<', "\\u003c"}}); }

}  // namespace

std::string MakeReportPage(const ReportData& data)
{
    const std::pair<std::string_view, std::string> parts[] = {
        {"{{title}}", Replaced("Colour report: " + data.MeasuredName(), {{'&', "&amp;"}, {'<', "&lt;"}})},
        {"{{plot-style}}", std::string(plotStyle)},
        {"{{style}}", std::string(pageStyle)},
        {"{{data}}", ScriptText(data)},
        {"{{plot-licence}}", std::string(plotLicence)},
        {"{{plot-script}}", std::string(plotScript)},
        {"{{script}}", std::string(pageScript)},
    };
    // The parts stand in the template in this order, so what was put in is never searched.
    std::string page;
    page.reserve(std::accumulate(std::begin(parts), std::end(parts), pageTemplate.size(),
                                 [](size_t size, const auto& part) { return size + part.second.size(); }));
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
