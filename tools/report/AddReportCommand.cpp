#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "tools/ColourFile.h"
#include "tools/Json.h"
#include "tools/OutputFile.h"
#include "tools/Terminal.h"
#include "tools/ToolError.h"
#include "tools/commands/Commands.h"
#include "tools/judge/JudgementText.h"
#include "tools/judge/ToleranceFile.h"
#include "tools/report/ReportPage.h"

namespace J4Tool {

namespace {

struct ReportArguments {
    std::string measured;
    std::string reference;
    std::string tolerances;
    std::string output;
    bool force = false;
};

void PrintSummary(const ReportData& data, const ReportArguments& arguments, bool json)
{
    if (json) {
        Json line = {{"report", arguments.output}, {"patches", data.Patches().size()}};
        for (const ReportData::Formula& formula : data.Formulas()) {
            line[formula.name] = {{"patches", formula.summary.Count()},
                                  {"mean", formula.summary.Mean()},
                                  {"percentile95", formula.summary.Percentile95()},
                                  {"maximum", formula.summary.Maximum()}};
        }
        if (data.Verdict()) {
            line["judgement"] = JudgementJson(*data.Verdict());
        }
        PrintJson(line);
        return;
    }
    if (data.Verdict()) {
        PrintJudgement(*data.Verdict(), stdout);
    }
    for (const ReportData::Formula& formula : data.Formulas()) {
        Print(stdout, "%s: mean %.2f, 95th percentile %.2f, maximum %.2f over %zu patches\n", formula.name.c_str(),
              formula.summary.Mean(), formula.summary.Percentile95(), formula.summary.Maximum(),
              formula.summary.Count());
    }
    for (const std::string& notice : data.Notices()) {
        Print(stdout, "%s\n", notice.c_str());
    }
    Print(stdout, "The report is in %s\n", arguments.output.c_str());
}

void Run(const ReportArguments& arguments, bool json)
{
    const OutputFile output(arguments.output, arguments.force,
                            {arguments.measured, arguments.reference, arguments.tolerances});
    std::optional<Tolerances> tolerances;
    if (!arguments.tolerances.empty()) {
        tolerances = ToleranceFile::Load(arguments.tolerances);
    }
    const ColourFile measured = ColourFile::Load(arguments.measured);
    std::optional<ColourFile> reference;
    if (!arguments.reference.empty()) {
        reference = ColourFile::Load(arguments.reference);
    }
    const ReportData data(measured, reference ? &*reference : nullptr, tolerances ? &*tolerances : nullptr);
    output.Write(MakeReportPage(data));
    if (!output.IsStandardOutput()) {
        PrintSummary(data, arguments, json);
    }
    if (data.Verdict()) {
        RequirePass(*data.Verdict());
    }
}

}  // namespace

void AddReportCommand(CLI::App& app, ToolContext& context)
{
    const auto arguments = std::make_shared<ReportArguments>();
    CLI::App* report = app.add_subcommand(
        "report",
        "make a page of measured colours: verdict, chart, differences to a reference, spectra, travel of the rows");
    report->add_option("MEASURED", arguments->measured, "measured file: CGATS.17, CxF3 or CSV")->required();
    CLI::Option* reference =
        report
            ->add_option("--reference", arguments->reference,
                         "what the chart should measure, in the same formats; patches go by SAMPLE_NAME or SAMPLE_ID")
            ->type_name("REF");
    report
        ->add_option("--tolerances", arguments->tolerances,
                     "rules with their limits, TOML: the page begins with the verdict, and the exit code tells it")
        ->type_name("TOLERANCES")
        ->needs(reference);
    report->add_option("-o,--output", arguments->output, "the page, HTML; needs no other file and no network")
        ->type_name("FILE")
        ->required();
    report->add_flag("--force", arguments->force, "replace FILE if it exists");
    report->callback([&context, arguments] { Run(*arguments, context.json); });
}

}  // namespace J4Tool
