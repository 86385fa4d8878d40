#include "tools/report/ReportPage.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "tools/Json.h"
#include "tools/PatchReading.h"
#include "tools/judge/JudgementText.h"
#include "tools/report/HtmlPage.h"
#include "tools/report/ReportFiles.h"

namespace J4Tool {

namespace {

// The script takes a member that is not there as something that is not known.

Json SideObject(const ReportData::Side& side)
{
    Json object = {
        {"lab", HtmlPage::Rounded(side.lab, 3)}, {"colour", side.colour.code}, {"inGamut", side.colour.inGamut}};
    if (side.spectrum) {
        object["spectrum"] = HtmlPage::Rounded(*side.spectrum, 4);
    }
    return object;
}

Json PatchObject(const ReportData::Patch& patch)
{
    const ReportData::Rectangle& place = patch.place;
    Json object = {{"name", patch.name},
                   {"place", HtmlPage::Rounded(std::array{place.x, place.y, place.width, place.height}, 3)},
                   {"measured", SideObject(patch.measured)}};
    if (patch.reading) {
        object["reading"] = {{"way", WordsOfWay(patch.reading->way)},
                             {"samples", patch.reading->samples},
                             {"spread", HtmlPage::Rounded(patch.reading->spread, 3)},
                             {"residual", HtmlPage::Rounded(patch.reading->residual, 3)}};
    }
    if (patch.densities) {
        object["densities"] = HtmlPage::Rounded(*patch.densities, 4);
    }
    if (patch.repeatSpread) {
        object["repeatSpread"] = HtmlPage::Rounded(*patch.repeatSpread, 4);
    }
    if (patch.reference) {
        object["reference"] = SideObject(*patch.reference);
        object["differences"] = HtmlPage::Rounded(patch.differences, 4);
        object["parts"] = HtmlPage::Rounded(std::array{patch.parts.lightness, patch.parts.chroma, patch.parts.hue}, 3);
    }
    return object;
}

Json FormulaObject(const ReportData::Formula& formula)
{
    const J4Chart::DifferenceSummary& summary = formula.summary;
    return {{"name", formula.name},
            {"count", summary.Count()},
            {"mean", HtmlPage::Rounded(summary.Mean(), 4)},
            {"percentile95", HtmlPage::Rounded(summary.Percentile95(), 4)},
            {"maximum", HtmlPage::Rounded(summary.Maximum(), 4)},
            {"binWidth", HtmlPage::Rounded(summary.BinWidth(), 6)},
            {"bins", summary.Bins()},
            {"worst", summary.Worst()}};
}

Json RowObject(const RowTravel& row)
{
    return {{"name", row.Name()},
            {"distance", HtmlPage::Rounded(row.Distance(), 3)},
            {"rampEnd", HtmlPage::Rounded(row.RampEnd(), 6)},
            {"duration", HtmlPage::Rounded(row.Duration(), 6)},
            {"step", HtmlPage::Rounded(row.Step(), 9)},
            {"marks", row.HasSamples()},
            {"positions", HtmlPage::Rounded(row.Positions(), 2)},
            {"fields", HtmlPage::Objects(row.Fields(),
                                         [](const RowTravel::Field& field) -> Json {
                                             return {{"patch", field.patch},
                                                     {"from", HtmlPage::Rounded(field.from, 2)},
                                                     {"to", HtmlPage::Rounded(field.to, 2)}};
                                         })},
            {"notes", row.Notes()}};
}

Json CurveObject(const J4Chart::ToneCurve& curve)
{
    return {{"light", curve.light},
            {"filter", curve.filter},
            {"points", HtmlPage::Objects(curve.points, [](const J4Chart::ToneCurve::Point& point) -> Json {
                 Json object = {{"nominal", HtmlPage::Rounded(point.nominal, 2)},
                                {"toneValue", HtmlPage::Rounded(point.toneValue, 2)},
                                {"sctv", HtmlPage::Rounded(point.sctv, 2)}};
                 if (point.ofDensities) {
                     object["ofDensities"] = HtmlPage::Rounded(*point.ofDensities, 2);
                 }
                 return object;
             })}};
}

Json RampObject(const InkRamp& ramp)
{
    Json object = {{"ink", ramp.measured.ink},
                   {"colour", J4Chart::ScreenColourOf(ramp.measured.solid).code},
                   {"measured", CurveObject(ramp.measured)}};
    if (ramp.reference) {
        object["reference"] = CurveObject(*ramp.reference);
    }
    return object;
}

Json ReadingObject(const ReportData::RowReading& reading)
{
    return {{"row", reading.row},
            {"patches", reading.patches},
            {"way", reading.way},
            {"samples", reading.fewestSamples},
            {"spread", HtmlPage::Rounded(reading.spread, 3)},
            {"residual", HtmlPage::Rounded(reading.residual, 3)},
            {"repeatSpread", HtmlPage::Rounded(reading.repeatSpread, 4)}};
}

Json LineObject(const Judgement::Line& line)
{
    Json behind = Json::array();
    for (const Judgement::PatchValue& patch : line.behind) {
        behind.push_back({{"patch", patch.patch}, {"value", HtmlPage::Rounded(patch.value, 4)}});
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
            {"coverage", judgement.CoverageWords()},
            {"title", judgement.Title()},
            {"source", judgement.Source()},
            {"lines", HtmlPage::Objects(judgement.Lines(), LineObject)}};
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
    Json object = {{"program", HtmlPage::Program()},
                   {"measured", data.MeasuredName()},
                   {"reference", data.ReferenceName()},
                   {"placed", data.IsPlaced()},
                   {"notices", data.Notices()},
                   {"conditions", HtmlPage::Objects(data.Conditions(),
                                                    [](const auto& condition) -> Json {
                                                        return {{"name", condition.first}, {"value", condition.second}};
                                                    })},
                   {"formulas", HtmlPage::Objects(data.Formulas(), FormulaObject)},
                   {"ramps", HtmlPage::Objects(data.Ramps(), RampObject)},
                   {"readings", HtmlPage::Objects(data.Readings(), ReadingObject)}};
    if (data.Verdict()) {
        object["verdict"] = VerdictObject(*data.Verdict());
    }
    std::string text = JsonText(object);
    AddList(text, "patches", data.Patches(), PatchObject);
    AddList(text, "rows", data.Rows(), RowObject);
    return text;
}

}  // namespace

std::string MakeReportPage(const ReportData& data)
{
    return HtmlPage{"Colour report: " + data.MeasuredName(), reportBody, {}, DataText(data), reportScript}.Text();
}

}  // namespace J4Tool
