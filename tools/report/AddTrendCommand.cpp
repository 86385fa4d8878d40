#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "tools/FixedText.h"
#include "tools/Json.h"
#include "tools/OutputFile.h"
#include "tools/Plural.h"
#include "tools/Terminal.h"
#include "tools/ToolError.h"
#include "tools/commands/Commands.h"
#include "tools/judge/ToleranceFile.h"
#include "tools/report/TrendPage.h"

namespace J4Tool {

namespace {

struct TrendArguments {
    std::vector<std::string> measured;
    std::string reference;
    std::string tolerances;
    std::string output;
    size_t baseline = 20;
    bool force = false;
};

Json Values(const std::vector<std::optional<double>>& values)
{
    Json list = Json::array();
    for (const auto& value : values) {
        list.push_back(value ? Json(*value) : Json(nullptr));
    }
    return list;
}

Json CurveObject(const TrendData::Curve& curve)
{
    Json object = {{"name", curve.name},
                   {"what", curve.what},
                   {"limit", curve.limit ? Json(*curve.limit) : Json(nullptr)},
                   {"values", Values(curve.values)}};
    if (curve.control) {
        object["control"] = {
            {"mean", curve.control->mean}, {"lower", curve.control->lower}, {"upper", curve.control->upper}};
    }
    object["outside"] = curve.outside;
    return object;
}

void PrintTrendObject(const TrendData& data, const std::string& output)
{
    Json measurements = Json::array();
    for (const TrendData::Measurement& measurement : data.Measurements()) {
        Json entry = {{"file", measurement.name}, {"date", measurement.date}};
        if (!measurement.verdict.empty()) {
            entry["verdict"] = measurement.verdict;
        }
        measurements.push_back(entry);
    }
    Json curves = Json::array();
    for (const TrendData::Curve& curve : data.Curves()) {
        curves.push_back(CurveObject(curve));
    }
    Json worst = Json::array();
    for (const TrendData::PatchCurve& patch : data.Worst()) {
        worst.push_back({{"patch", patch.name}, {"CIEDE2000", patch.values}});
    }
    Json ramps = Json::array();
    for (const TrendData::Tones& tones : data.Ramps()) {
        Json increases = Json::array();
        for (const auto& measurement : tones.increases) {
            increases.push_back(Values(measurement));
        }
        ramps.push_back({{"ink", tones.ink}, {"nominal", tones.nominal}, {"increases", increases}});
    }
    PrintJson({{"trend", output},
               {"patches", data.PatchCount()},
               {"baseline", data.Baseline()},
               {"measurements", measurements},
               {"curves", curves},
               {"worst", worst},
               {"toneValueIncrease", ramps},
               {"notices", data.Notices()}});
}

void PrintTrend(const TrendData& data, const std::string& output)
{
    Print(stdout, "%s of %s; control limits of the first %zu\n",
          Plural(data.Measurements().size(), "measurement").c_str(), Plural(data.PatchCount(), "patch").c_str(),
          data.Baseline());
    for (const TrendData::Curve& curve : data.Curves()) {
        std::string text =
            curve.name + ", " + curve.what + ": last " + (curve.values.back() ? curve.lastText : "not judged");
        if (curve.limit) {
            text += ", limit " + curve.limitText;
        }
        if (curve.control) {
            text += ", mean " + FixedText(curve.control->mean, 2) + ", control limits " +
                    FixedText(curve.control->lower, 2) + " to " + FixedText(curve.control->upper, 2);
        }
        for (size_t i = 0; i < curve.outside.size(); ++i) {
            text += (i == 0 ? "; outside: " : ", ") + data.Measurements()[curve.outside[i]].name;
        }
        Print(stdout, "%s\n", text.c_str());
    }
    for (const std::string& notice : data.Notices()) {
        Print(stdout, "%s\n", notice.c_str());
    }
    Print(stdout, "The page is in %s\n", output.c_str());
}

void RunTrend(const TrendArguments& arguments, bool json)
{
    if (arguments.measured.size() < 2) {
        throw ToolError(ExitCode::Usage, "there is only one measurement", "See 'j4tavla trend --help'.");
    }
    std::vector<std::string> inputs = arguments.measured;
    inputs.push_back(arguments.reference);
    inputs.push_back(arguments.tolerances);
    const OutputFile output(arguments.output, arguments.force, inputs);
    std::optional<Tolerances> tolerances;
    if (!arguments.tolerances.empty()) {
        tolerances = ToleranceFile::Load(arguments.tolerances);
    }
    const ColourFile reference = ColourFile::Load(arguments.reference);
    const MeasurementSeries series(arguments.measured, false);
    const TrendData data(series, reference, tolerances ? &*tolerances : nullptr, arguments.baseline);
    output.Write(MakeTrendPage(data));
    if (output.IsStandardOutput()) {
        return;
    }
    if (json) {
        PrintTrendObject(data, arguments.output);
    } else {
        PrintTrend(data, arguments.output);
    }
}

}  // namespace

void AddTrendCommand(CLI::App& app, ToolContext& context)
{
    const auto arguments = std::make_shared<TrendArguments>();
    CLI::App* trend = app.add_subcommand("trend",
                                         "make a page of many measurements of a chart: differences and rules "
                                         "over time, with control limits");
    trend
        ->add_option("MEASURED", arguments->measured,
                     "measured files of the same chart: CGATS.17, CxF3 or CSV; two or more")
        ->required();
    trend
        ->add_option("--reference", arguments->reference,
                     "what the chart should measure, in the same formats; patches go by SAMPLE_NAME or SAMPLE_ID")
        ->type_name("REF")
        ->required();
    trend->add_option("--tolerances", arguments->tolerances, "rules with their limits, TOML, to show over time")
        ->type_name("TOLERANCES");
    trend
        ->add_option("--baseline", arguments->baseline,
                     "of how many measurements, from the first on, the control limits are made: mean and 2.66 times "
                     "the mean moving range")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(2, 10000));
    trend->add_option("-o,--output", arguments->output, "the page, HTML; needs no other file and no network")
        ->type_name("FILE")
        ->required();
    trend->add_flag("--force", arguments->force, "replace FILE if it exists");
    trend->callback([&context, arguments] { RunTrend(*arguments, context.json); });
}

}  // namespace J4Tool
