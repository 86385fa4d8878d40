#include <memory>
#include <nlohmann/json.hpp>

#include "tools/ColourFile.h"
#include "tools/commands/Commands.h"
#include "tools/judge/JudgementText.h"
#include "tools/judge/ToleranceFile.h"

namespace J4Tool {

namespace {

struct JudgeArguments {
    std::string measured;
    std::string reference;
    std::string tolerances;
};

void Run(const JudgeArguments& arguments, bool json)
{
    const Tolerances tolerances = ToleranceFile::Load(arguments.tolerances);
    const ColourFile measured = ColourFile::Load(arguments.measured);
    const ColourFile reference = ColourFile::Load(arguments.reference);
    const Judgement judgement(tolerances, measured.chart, reference.chart);
    if (json) {
        PrintJson(JudgementJson(judgement));
    } else {
        PrintJudgement(judgement, stdout);
    }
    RequirePass(judgement);
}

}  // namespace

void AddJudgeCommand(CLI::App& app, ToolContext& context)
{
    const auto arguments = std::make_shared<JudgeArguments>();
    CLI::App* judge = app.add_subcommand(
        "judge", "pass or fail: hold a measured chart against a reference, by the limits of a file of tolerances");
    judge->add_option("MEASURED", arguments->measured, "measured file: CGATS.17, CxF3 or CSV")->required();
    judge
        ->add_option("--reference", arguments->reference,
                     "what the chart should measure, in the same formats; patches go by SAMPLE_NAME or SAMPLE_ID")
        ->type_name("REF")
        ->required();
    judge
        ->add_option("--tolerances", arguments->tolerances,
                     "rules with their limits, TOML; limits are colour differences (CIELab units)")
        ->type_name("FILE")
        ->required();
    judge->callback([&context, arguments] { Run(*arguments, context.json); });
}

}  // namespace J4Tool
