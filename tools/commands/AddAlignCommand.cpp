#include <cmath>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <numbers>
#include <optional>

#include "chart/cgats/CgatsFields.h"
#include "tools/ChartFinder.h"
#include "tools/Json.h"
#include "tools/OutputFile.h"
#include "tools/RowSpeed.h"
#include "tools/ScanPlan.h"
#include "tools/Terminal.h"
#include "tools/ToolError.h"
#include "tools/commands/ChartArguments.h"

namespace J4Tool {

namespace {

struct AlignArguments {
    ChartArguments chart;
    std::string output;
    bool force = false;
};

/// As "--corners" takes them; empty for a chart that has no three corners.
std::vector<double> Corners(const ChartLayout& layout, const Units& units)
{
    std::vector<double> numbers;
    if (layout.HasCorners()) {
        for (const ChartLayout::Corner& corner : layout.Corners()) {
            const Point place = units.FromMillimetres(corner.place);
            numbers.push_back(std::round(place.x * 1000.0) / 1000.0);
            numbers.push_back(std::round(place.y * 1000.0) / 1000.0);
        }
    }
    return numbers;
}

void Show(const ToolContext& context, const ChartFinder& finder, const ChartFinder::Finding& found,
          const std::vector<double>& corners, const std::string& fileName)
{
    const Units units = context.GetUnits();
    if (context.json) {
        const Point shift = units.FromMillimetres(found.placement.shift);
        PrintJson({{"corners", corners},
                   {"shiftX", shift.x},
                   {"shiftY", shift.y},
                   {"rotation", found.placement.rotation * 180.0 / std::numbers::pi},
                   {"residual", units.FromMillimetres(found.residual)},
                   {"edges", found.edges},
                   {"unit", units.Name()},
                   {"file", fileName}});
        return;
    }
    Print(stdout, "The chart lies %s from where the layout has it; %zu edges were seen, within %.2f mm.\n",
          finder.Words(found).c_str(), found.edges, found.residual);
    std::string text;
    for (const double number : corners) {
        text += (text.empty() ? "" : ",") + J4Chart::NumberText(number);
    }
    if (!text.empty()) {
        Print(stdout, "--corners %s\n", text.c_str());
    }
    if (!fileName.empty()) {
        Print(stdout, "The layout as it lies is in %s\n", fileName.c_str());
    }
}

void Run(ToolContext& context, AlignArguments arguments)
{
    RefuseOptionsOfScans(context, "align");
    arguments.chart.ShareWithBench(context);
    std::optional<OutputFile> output;
    if (!arguments.output.empty()) {
        output.emplace(arguments.output, arguments.force,
                       std::vector<std::string>{arguments.chart.layout, context.chartFile});
    }
    const Units units = context.GetUnits();
    ChartLayout layout = arguments.chart.Load(units);
    if (!arguments.chart.KnowsSizes(layout)) {
        throw ToolError(ExitCode::Usage, "the layout does not tell how large its patches are",
                        "Give --patch, and --gap where there is paper between them.");
    }
    if (output) {
        layout.FileText();  // what can't be written is told before the arm moves
    }
    const auto say = [&context](const std::string& what) {
        if (!context.json) {
            Print(stderr, "%s\n", what.c_str());
        }
    };
    say("connecting");
    Session& session = context.Open();
    session.Connect();
    arguments.chart.PlaceCorners(layout, session, units);
    const WorkArea area = WorkArea::Of(session);
    say("calibrating on the white tile");
    session.Calibrate();
    const RowSpeed speed(LineScan(session).IntegrationTime(), arguments.chart.speed);
    ChartFinder finder(session, layout, area, speed, say);
    const ChartFinder::Finding found = finder.Find();
    session.Release();
    if (!found.isSure) {
        throw ToolError(ExitCode::Check, "the chart can't be found: no edges of patches were seen",
                        "Give its corners with --corners or --corners-by-hand.");
    }
    layout.MoveTo(found.placement);
    if (output) {
        output->Write(layout.FileText());
        if (output->IsStandardOutput()) {
            return;
        }
    }
    Show(context, finder, found, Corners(layout, units), arguments.output);
}

}  // namespace

void AddAlignCommand(CLI::App& app, ToolContext& context)
{
    const auto arguments = std::make_shared<AlignArguments>();
    CLI::App* command = app.add_subcommand(
        "align", "let the instrument find a chart that lies up to half a patch and two degrees off, show its corners");
    arguments->chart.AddTo(*command);
    command->add_option("-o,--output", arguments->output, "write the layout with the places that were found")
        ->type_name("PLACED");
    command->add_flag("--force", arguments->force, "replace PLACED if it exists");
    command->callback([&context, arguments] { Run(context, *arguments); });
}

}  // namespace J4Tool
