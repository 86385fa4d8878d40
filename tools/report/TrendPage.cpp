#include "tools/report/TrendPage.h"

#include "tools/report/HtmlPage.h"
#include "tools/report/ReportFiles.h"

namespace J4Tool {

namespace {

constexpr int decimals = 4;

Json MeasurementObject(const TrendData::Measurement& measurement)
{
    Json object = {{"name", measurement.name}, {"date", measurement.date}};
    if (measurement.time) {
        object["time"] = *measurement.time;
    }
    if (!measurement.verdict.empty()) {
        object["verdict"] = measurement.verdict;
    }
    return object;
}

Json Values(const std::vector<std::optional<double>>& values)
{
    return HtmlPage::Objects(values, [](const std::optional<double>& value) {
        return value ? Json(HtmlPage::Rounded(*value, decimals)) : Json(nullptr);
    });
}

Json CurveOfPage(const TrendData::Curve& curve)
{
    Json object = {{"name", curve.name},
                   {"what", curve.what},
                   {"values", Values(curve.values)},
                   {"outside", curve.outside},
                   {"lastText", curve.lastText}};
    if (curve.limit) {
        object["limit"] = *curve.limit;
        object["limitText"] = curve.limitText;
    }
    if (curve.control) {
        object["control"] = {{"mean", HtmlPage::Rounded(curve.control->mean, decimals)},
                             {"lower", HtmlPage::Rounded(curve.control->lower, decimals)},
                             {"upper", HtmlPage::Rounded(curve.control->upper, decimals)}};
    }
    return object;
}

Json TonesObject(const TrendData::Tones& tones)
{
    Json object = {{"ink", tones.ink},
                   {"light", tones.light},
                   {"sameLight", tones.sameLight},
                   {"nominal", HtmlPage::Rounded(tones.nominal, 2)},
                   {"increases", HtmlPage::Objects(tones.increases, Values)}};
    if (!tones.reference.empty()) {
        object["reference"] = Values(tones.reference);
    }
    return object;
}

}  // namespace

std::string MakeTrendPage(const TrendData& data)
{
    const Json object = {{"program", HtmlPage::Program()},
                         {"reference", data.ReferenceName()},
                         {"patches", data.PatchCount()},
                         {"baseline", data.Baseline()},
                         {"dated", data.IsDated()},
                         {"notices", data.Notices()},
                         {"measurements", HtmlPage::Objects(data.Measurements(), MeasurementObject)},
                         {"curves", HtmlPage::Objects(data.Curves(), CurveOfPage)},
                         {"ramps", HtmlPage::Objects(data.Ramps(), TonesObject)},
                         {"worst", HtmlPage::Objects(data.Worst(), [](const TrendData::PatchCurve& patch) -> Json {
                              return {{"name", patch.name},
                                      {"reference", {{"colour", patch.reference.code}}},
                                      {"last", {{"colour", patch.last.code}}},
                                      {"values", HtmlPage::Rounded(patch.values, decimals)}};
                          })}};
    return HtmlPage{"Colour trend: " + data.ReferenceName(), trendBody, trendStyle, JsonText(object), trendScript}
        .Text();
}

}  // namespace J4Tool
