#include <memory>
#include <nlohmann/json.hpp>
#include <set>

#include "chart/cgats/CgatsFile.h"
#include "chart/colour/Average.h"
#include "chart/colour/ColourDifference.h"
#include "chart/colour/DifferenceSummary.h"
#include "tools/Json.h"
#include "tools/OutputFile.h"
#include "tools/Plural.h"
#include "tools/TableText.h"
#include "tools/Terminal.h"
#include "tools/ToolError.h"
#include "tools/commands/Commands.h"
#include "tools/series/AverageTable.h"

namespace J4Tool {

namespace {

namespace Colorimetry = J4Chart::Colorimetry;
using J4Chart::DifferenceSummary;

struct SeriesArguments {
    std::vector<std::string> measured;
    std::string output;
    bool force = false;
};

void RequireSeveral(const SeriesArguments& arguments, const char* command)
{
    if (arguments.measured.size() < 2) {
        throw ToolError(ExitCode::Usage, "there is only one measurement",
                        std::string("See 'j4tavla ") + command + " --help'.");
    }
}

Json SummaryObject(const DifferenceSummary& summary)
{
    return {{"mean", summary.Mean()}, {"percentile95", summary.Percentile95()}, {"maximum", summary.Maximum()}};
}

Json Notices(const MeasurementSeries& series)
{
    const std::string notice = series.Notice();
    return notice.empty() ? Json::array() : Json::array({notice});
}

void PrintNotice(const MeasurementSeries& series)
{
    if (const std::string notice = series.Notice(); !notice.empty()) {
        Print(stdout, "%s\n", notice.c_str());
    }
}

/// The mean differences of all patches from their means, by both formulas.
struct Spreads {
    std::vector<double> ciede2000;
    std::vector<double> cie1976;

    explicit Spreads(const MeasurementSeries& series)
    {
        for (size_t i = 0; i < series.Patches().size(); ++i) {
            const J4Chart::MeanDifference difference(series.Colours(i));
            ciede2000.push_back(difference.ciede2000);
            cie1976.push_back(difference.cie1976);
        }
    }
};

std::string WorstText(const MeasurementSeries& series, const std::vector<double>& differences,
                      const DifferenceSummary& summary)
{
    std::string text;
    for (const size_t patch : summary.Worst()) {
        char figure[32];
        std::snprintf(figure, sizeof figure, " %.3f", differences[patch]);
        text += (text.empty() ? "" : ", ") + series.Patches()[patch].name + figure;
    }
    return text;
}

void Average(const SeriesArguments& arguments, bool json)
{
    RequireSeveral(arguments, "average");
    const OutputFile output(arguments.output, arguments.force, arguments.measured);
    const MeasurementSeries series(arguments.measured, true);
    output.Write(TableText(AverageTable(series), arguments.measured.front(), "Correct its names."));
    if (output.IsStandardOutput()) {
        return;
    }
    const Spreads spreads(series);
    const DifferenceSummary summary(spreads.ciede2000);
    if (json) {
        PrintJson({{"average", arguments.output},
                   {"measurements", series.Measurements().size()},
                   {"patches", series.Patches().size()},
                   {"CIEDE2000", SummaryObject(summary)},
                   {"notices", Notices(series)}});
        return;
    }
    Print(stdout,
          "%s of %s; they differ from their mean by %.3f in the mean, 95th percentile %.3f, maximum %.3f (CIEDE2000)\n"
          "The average is in %s\n",
          Plural(series.Measurements().size(), "measurement").c_str(), Plural(series.Patches().size(), "patch").c_str(),
          summary.Mean(), summary.Percentile95(), summary.Maximum(), arguments.output.c_str());
    PrintNotice(series);
}

/// How far each file lies from the mean of all: one that is apart from the others shows.
std::vector<DifferenceSummary> FromMean(const MeasurementSeries& series)
{
    std::vector<std::vector<double>> differences(series.Measurements().size());
    for (size_t i = 0; i < series.Patches().size(); ++i) {
        const std::vector<Colorimetry::Triple> colours = series.Colours(i);
        const Colorimetry::Triple mean = J4Chart::MeanOf(colours);
        for (size_t k = 0; k < colours.size(); ++k) {
            differences[k].push_back(J4Chart::ColourDifference::Ciede2000(mean, colours[k]));
        }
    }
    return {differences.begin(), differences.end()};
}

/// Each of the instruments that the files tell.
std::set<std::string> Instruments(const MeasurementSeries& series)
{
    std::set<std::string> serials;
    for (const MeasurementSeries::Measurement& measurement : series.Measurements()) {
        if (const std::string serial = measurement.chart.Condition("INSTRUMENT_SERIAL"); !serial.empty()) {
            serials.insert(serial);
        }
    }
    return serials;
}

void Compare(const SeriesArguments& arguments, bool json)
{
    RequireSeveral(arguments, "compare");
    const MeasurementSeries series(arguments.measured, false);
    const Spreads spreads(series);
    const DifferenceSummary ciede2000(spreads.ciede2000);
    const DifferenceSummary cie1976(spreads.cie1976);
    const std::vector<DifferenceSummary> files = FromMean(series);
    const std::set<std::string> instruments = Instruments(series);
    if (json) {
        Json measurements = Json::array();
        for (size_t k = 0; k < files.size(); ++k) {
            Json entry = {{"file", series.Measurements()[k].file}};
            entry.update(SummaryObject(files[k]));
            measurements.push_back(entry);
        }
        Json patches = Json::array();
        for (size_t i = 0; i < series.Patches().size(); ++i) {
            patches.push_back({{"name", series.Patches()[i].name},
                               {"CIEDE2000", spreads.ciede2000[i]},
                               {"CIE 1976", spreads.cie1976[i]}});
        }
        PrintJson({{"measurements", measurements},
                   {"instruments", instruments},
                   {"CIEDE2000", SummaryObject(ciede2000)},
                   {"CIE 1976", SummaryObject(cie1976)},
                   {"patches", patches},
                   {"notices", Notices(series)}});
        return;
    }
    Print(stdout, "%s of %s\nMean colour difference from the mean (MCDM):\n",
          Plural(files.size(), "measurement").c_str(), Plural(series.Patches().size(), "patch").c_str());
    for (const auto& [name, summary] : {std::pair{"CIEDE2000", &ciede2000}, {"CIE 1976", &cie1976}}) {
        Print(stdout, "  %-9s  mean %.3f, 95th percentile %.3f, maximum %.3f\n", name, summary->Mean(),
              summary->Percentile95(), summary->Maximum());
    }
    Print(stdout, "Worst patches (CIEDE2000): %s\nEach measurement from the mean of all (CIEDE2000):\n",
          WorstText(series, spreads.ciede2000, ciede2000).c_str());
    for (size_t k = 0; k < files.size(); ++k) {
        Print(stdout, "  mean %.3f, maximum %.3f  %s\n", files[k].Mean(), files[k].Maximum(),
              series.Measurements()[k].file.c_str());
    }
    if (instruments.size() > 1) {
        Print(stdout, "They are of %zu instruments: this is how those agree, not how one repeats.\n",
              instruments.size());
    }
    PrintNotice(series);
}

}  // namespace

void AddSeriesCommands(CLI::App& app, ToolContext& context)
{
    const auto arguments = std::make_shared<SeriesArguments>();
    CLI::App* average = app.add_subcommand("average",
                                           "make one file of several measurements of a chart, by the names "
                                           "of the patches");
    average
        ->add_option("MEASURED", arguments->measured, "measured files with spectra: CGATS.17, CxF3 or CSV; two or more")
        ->required();
    average
        ->add_option("-o,--output", arguments->output,
                     "file to write, CGATS.17; REPEAT_SPREAD is the mean difference from the mean (CIEDE2000)")
        ->type_name("FILE")
        ->required();
    average->add_flag("--force", arguments->force, "replace FILE if it exists");
    average->callback([&context, arguments] { Average(*arguments, context.json); });

    CLI::App* compare =
        app.add_subcommand("compare",
                           "tell how well several measurements of a chart agree: the mean colour difference "
                           "from the mean (MCDM), CIEDE2000 and CIE 1976");
    compare->add_option("MEASURED", arguments->measured, "measured files: CGATS.17, CxF3 or CSV; two or more")
        ->required();
    compare->callback([&context, arguments] { Compare(*arguments, context.json); });
}

}  // namespace J4Tool
