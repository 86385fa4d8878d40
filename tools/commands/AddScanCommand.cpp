#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "Utilities/Tools/FilePath.h"
#include "chart/cgats/CgatsFields.h"
#include "tools/AtomicFile.h"
#include "tools/ChartFinder.h"
#include "tools/ChartScan.h"
#include "tools/DateText.h"
#include "tools/Formatted.h"
#include "tools/Interrupt.h"
#include "tools/Json.h"
#include "tools/OutputFile.h"
#include "tools/Platform.h"
#include "tools/Plural.h"
#include "tools/Progress.h"
#include "tools/RowReader.h"
#include "tools/RowSpeed.h"
#include "tools/ScanPlan.h"
#include "tools/Terminal.h"
#include "tools/ToolError.h"
#include "tools/commands/ChartArguments.h"
#include "tools/judge/JudgementText.h"
#include "tools/judge/ScanVerdict.h"

namespace J4Tool {

using Kestrelon::Utilities::Tools::NameOf;
using Kestrelon::Utilities::Tools::PathOf;

namespace {

struct ScanArguments {
    ChartArguments chart;
    std::string output;
    std::string tolerances;
    std::string reference;
    std::optional<double> margin;
    int retries = 2;
    int repeats = 1;
    bool oneWay = false;
    bool align = false;
    bool trustPlace = false;
    bool spots = false;
    bool densities = false;
    bool resume = false;
    bool restart = false;
    bool force = false;
    bool dryRun = false;
    MeasurementFile::Form form = MeasurementFile::Form::Cgats;
};

/// Where rows are kept until the scan is done.
std::string PartialName(const ScanArguments& arguments)
{
    return arguments.output == "-" ? NameOf(PathOf(arguments.chart.layout).filename()) + ".partial"
                                   : arguments.output + ".partial";
}

/// One scan command from its arguments to the scan.
class ScanRun {
public:
    ScanRun(ToolContext& context, const ScanArguments& arguments)
        : context(context),
          arguments(arguments),
          units(context.GetUnits()),
          partialName(PartialName(arguments)),
          layout(arguments.chart.Load(units)),
          progress(arguments.output == "-" ? stderr : stdout, ProgressForm())
    {
        MeasurementFile::RequireHolds(layout);
        if (!arguments.tolerances.empty()) {
            verdict.emplace(arguments.tolerances, arguments.reference, layout);
        }
    }

    void Run()
    {
        if (arguments.dryRun) {
            ShowPlan();
            return;
        }
        const ChartScan::Files files{
            OutputFile(arguments.output, arguments.force,
                       {arguments.chart.layout, context.chartFile, arguments.tolerances, arguments.reference}),
            arguments.form, partialName};
        std::optional<FileLock> lock;
        if (files.whole.IsStandardOutput()) {
            lock.emplace(partialName);
        }
        CheckPartialFile();
        RequireWritable(partialName);
        progress.Step("connecting");
        session = &context.Open();
        session->Connect();
        arguments.chart.PlaceCorners(layout, *session, units);
        const WorkArea area = WorkArea::Of(*session);
        Plan(area, UsualIntegrationTime);  // what can't be reached is refused before the arm moves
        progress.Step("to the white tile");
        session->GoHome();
        progress.Step(session->TryOption("IntegrationTime") == "0" ? "the instrument is not calibrated yet: calibrating"
                                                                   : "calibrating");
        session->Calibrate();
        session->SetOption("MeasurementMode", "ScanningReflectance");
        const RowSpeed speed(LineScan(*session).IntegrationTime(), arguments.chart.speed);
        const std::optional<ChartFinder::Finding> found = PlaceChart(area, speed);
        const ScanPlan plan = Plan(area, speed.IntegrationTime());
        ChartScan scan(*session, layout, Settings(), Conditions(), files, progress);
        scan.interrupted = Interrupt::Requested;
        RowReader reader(*session, layout);
        if (found) {
            reader.Expect(*found);
        }
        if (arguments.resume) {
            scan.TakeUp(reader);
        }
        scan.UseReader(reader, plan);
        if (arguments.densities) {
            session->WantDensities();
        }
        Interrupt::SetNotice(context.json ? nullptr : "\nthe row is being ended; then the table is let go\n");
        scan.Run();
        if (verdict) {
            Tell(verdict->On(scan.Measured()));
        }
    }

private:
    /// Of an instrument of this kind, s; for a plan before it is calibrated and tells its own.
    static constexpr double UsualIntegrationTime = 0.01;

    void Tell(const Judgement& judgement) const
    {
        std::FILE* const stream = arguments.output == "-" ? stderr : stdout;
        if (context.json) {
            Json event = {{"event", "verdict"}};
            event.update(JudgementJson(judgement));
            PrintJson(event, stream);
        } else {
            PrintJudgement(judgement, stream);
        }
        RequirePass(judgement);
    }

    Progress::Form ProgressForm() const
    {
        return context.json                                                      ? Progress::Form::Json
               : Platform::IsTerminal(arguments.output == "-" ? stderr : stdout) ? Progress::Form::Bar
                                                                                 : Progress::Form::Lines;
    }

    ScanPlan Plan(const WorkArea& area, double integrationTime) const
    {
        ScanPlan::Settings settings;
        settings.margin = Settings().margin;
        settings.marginIsWanted = arguments.margin.has_value();
        settings.spotsOnly = arguments.spots;
        return {layout, area, RowSpeed(integrationTime, arguments.chart.speed), settings};
    }

    void ShowPlan()
    {
        session = &context.Open();
        session->Connect();
        arguments.chart.PlaceCorners(layout, *session, units);
        const WorkArea area = WorkArea::Of(*session);
        const ScanPlan plan = Plan(area, UsualIntegrationTime);
        const double repeats = arguments.repeats;
        Json rows = Json::array();
        for (size_t row = 0; row < plan.Rows().size(); ++row) {
            const ScanPlan::Row& entry = plan.Rows()[row];
            const size_t way = static_cast<size_t>(entry.ways.front());
            const size_t patches = layout.Rows()[row].size();
            if (context.json) {
                rows.push_back({{"row", row + 1},
                                {"patches", patches},
                                {"way", WayNames[way]},
                                {"speed", entry.speed > 0 ? Json(entry.speed) : Json(nullptr)},
                                {"seconds", std::round(repeats * entry.seconds * 10.0) / 10.0}});
            } else {
                Print(stdout, "row %zu, %s: %s%s, %.1f s\n", row + 1, Plural(patches, "patch").c_str(), WayWords[way],
                      entry.speed > 0 ? (" at " + std::to_string(entry.speed) + " mm/s").c_str() : "",
                      repeats * entry.seconds);
            }
        }
        if (context.json) {
            PrintJson({{"rows", rows},
                       {"patches", layout.Patches().size()},
                       {"seconds", std::round(repeats * plan.Seconds() * 10.0) / 10.0}});
        } else {
            Print(stdout,
                  "%s in %s, about %.0f s when every row is read at the first try, and some 20 s for the tile and "
                  "the chart's place\n",
                  Plural(layout.Patches().size(), "patch").c_str(), Plural(layout.Rows().size(), "row").c_str(),
                  repeats * plan.Seconds());
        }
    }

    /// Finds out where the chart lies, and takes it from there or refuses it.
    /// @return nothing where the layout does not tell how large patches are, so that only recognition can find them
    std::optional<ChartFinder::Finding> PlaceChart(const WorkArea& area, const RowSpeed& speed)
    {
        if (arguments.trustPlace) {
            return ChartFinder::Finding{};
        }
        if (!arguments.chart.KnowsSizes(layout)) {
            return std::nullopt;
        }
        ChartFinder finder(*session, layout, area, speed, [this](const std::string& what) { progress.Step(what); });
        ChartFinder::Finding found = arguments.align ? finder.Find() : finder.Look();
        if (!found.isSure) {
            throw ToolError(
                ExitCode::Check, "it can't be seen where the chart lies: no edges of patches show across its rows",
                "Give more room around the chart; or, where its place is certain, scan with --trust-place.");
        }
        if (!arguments.align) {
            const std::string fault = finder.Fault(found);
            if (!fault.empty()) {
                throw ToolError(ExitCode::Check, fault,
                                "Lay it where the layout says, or let the instrument find it: --align.");
            }
            return found;
        }
        layout.MoveTo(found.placement);
        progress.Step("found: " + finder.Words(found) + " from where the layout has it; edges within " +
                      Formatted("%.2f mm", found.residual));
        found.placement = Placement{found.placement.middle, {}, 0.0, 1.0, 1.0};
        return found;
    }

    void CheckPartialFile() const
    {
        OutputFile::RequireRegular(partialName);
        std::error_code error;
        const bool exists = std::filesystem::exists(PathOf(partialName), error);
        if (arguments.resume && !exists) {
            throw ToolError(ExitCode::File, "there is no file '" + partialName + "' to go on from",
                            "Scan without --resume.");
        }
        if (exists && !arguments.resume && !arguments.restart) {
            throw ToolError(ExitCode::File, "'" + partialName + "' holds the rows of an earlier scan",
                            "Go on from it with --resume, or throw it away with --restart.");
        }
    }

    /// Without what can't stand in a keyword's value.
    static std::string ValueText(std::string text)
    {
        std::replace_if(
            text.begin(), text.end(),
            [](char character) { return character == '"' || static_cast<unsigned char>(character) < 0x20; }, '_');
        return text;
    }

    MeasurementFile::Conditions Conditions()
    {
        const auto option = [this](const char* key) { return ValueText(session->GetOption(key)); };
        MeasurementFile::Conditions conditions = {
            {"ORIGINATOR", "j4tavla, " + option("J4TVersion")},
            {"DESCRIPTOR", "Measured chart " + ValueText(NameOf(PathOf(arguments.chart.layout).filename()))},
            {"CREATED", DateText(std::time(nullptr))},
            {"INSTRUMENTATION", "J4 Tavla scanning table with its spectrophotometer"},
            {"WEIGHTING_FUNCTION", "ILLUMINANT,D50;OBSERVER,2 degree"},
            {"TABLE_SERIAL", option("J4TSerialNumber")},
            {"TABLE_FIRMWARE", option("J4TFirmwareVersion")},
            {"INSTRUMENT_SERIAL", option("J4TJ4SerialNumber")},
            {"MEASUREMENT_MODE", option("MeasurementMode")},
            {"INTEGRATION_TIME", option("IntegrationTime")},
            {"WHITE_BASE_DATE", DateText(option("J4TLastWhiteBaseTransferTime"))},
            {"SCAN_SPEED", option("J4TScanSpeed")},
            {"SCAN_DELAY", option("J4TScanDelay")},
            {"SCAN_MARGIN", J4Chart::NumberText(Settings().margin)},
        };
        if (arguments.repeats > 1) {
            conditions.emplace_back("REPEATS", std::to_string(arguments.repeats));
        }
        if (arguments.densities) {
            conditions.emplace_back("DENSITIES", "as the instrument tells them");
        }
        const MeasurementFile::Conditions inks = layout.InkConditions();
        conditions.insert(conditions.end(), inks.begin(), inks.end());
        if (arguments.chart.page) {
            conditions.emplace_back("LAYOUT_PAGE", std::to_string(*arguments.chart.page));
        }
        return conditions;
    }

    Scanner::Settings Settings() const
    {
        Scanner::Settings settings;
        settings.margin = arguments.margin ? units.ToMillimetres(*arguments.margin) : settings.margin;
        settings.retries = arguments.retries;
        settings.repeats = static_cast<size_t>(arguments.repeats);
        settings.bothWays = !arguments.oneWay;
        return settings;
    }

    ToolContext& context;
    const ScanArguments& arguments;
    Units units;
    std::string partialName;
    ChartLayout layout;
    std::optional<ScanVerdict> verdict;
    Progress progress;
    Session* session = nullptr;
};

void Run(ToolContext& context, ScanArguments arguments)
{
    RefuseOptionsOfScans(context, "scan");
    const bool bareBed = arguments.dryRun && context.chartFile.empty();
    arguments.chart.ShareWithBench(context);
    if (bareBed) {
        context.chartFile.clear();  // a plan needs no colours
    }
    if (arguments.output.empty() && !arguments.dryRun) {
        throw ToolError(ExitCode::Usage, "--output is required", "See 'j4tavla scan --help'.");
    }
    ScanRun(context, arguments).Run();
}

}  // namespace

void AddScanCommand(CLI::App& app, ToolContext& context)
{
    const auto arguments = std::make_shared<ScanArguments>();
    CLI::App* command = app.add_subcommand("scan",
                                           "measure a chart: go home, calibrate, scan and check every row, "
                                           "write a CGATS.17 file with spectra, XYZ and Lab");
    arguments->chart.AddTo(*command);
    command->add_option("-o,--output", arguments->output, "file to write, whole or not at all; - for standard output")
        ->type_name("MEASURED");
    command->add_flag("--force", arguments->force, "replace MEASURED if it exists");
    CLI::Option* tolerances =
        command
            ->add_option("--tolerances", arguments->tolerances,
                         "give a verdict behind the scan, by these rules with their limits (TOML)")
            ->type_name("TOLERANCES");
    command
        ->add_option("--reference", arguments->reference,
                     "what the chart should measure: CGATS.17, CxF3 or CSV; else the colours of the layout")
        ->type_name("REF")
        ->needs(tolerances);
    command->add_flag("--dry-run", arguments->dryRun, "only show how each row would be read, and how long that takes");
    command->add_option("--margin", arguments->margin, "bare paper before and behind a row (default 8 mm)")
        ->check(FiniteNumber())
        ->check(CLI::NonNegativeNumber);
    command->add_option("--retries", arguments->retries, "how often a row that failed is scanned again")
        ->capture_default_str()
        ->check(CLI::Range(0, 100));
    command
        ->add_option("--repeat", arguments->repeats,
                     "scan each row so often and average; REPEAT_SPREAD is how far the scans lie from their mean "
                     "(mean difference, CIEDE2000)")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(1, 100));
    command->add_flag("--one-way", arguments->oneWay, "scan all rows in the same direction");
    CLI::Option* align = command->add_flag("--align", arguments->align,
                                           "let the instrument find the chart: up to half a patch and two degrees off");
    command->add_flag("--trust-place", arguments->trustPlace, "scan without looking first whether the chart lies right")
        ->excludes(align);
    command->add_flag("--spots", arguments->spots, "measure every patch singly instead of scanning rows");
    command->add_flag("--densities", arguments->densities,
                      "also write the densities that the instrument tells: D_RED, D_GREEN, D_BLUE, D_VIS");
    CLI::Option* resume = command->add_flag("--resume", arguments->resume, "go on from MEASURED.partial");
    command->add_flag("--restart", arguments->restart, "throw MEASURED.partial away")->excludes(resume);
    command
        ->add_option_function<std::string>(
            "--format",
            [arguments](const std::string& name) {
                arguments->form = name == "spectra" ? MeasurementFile::Form::Spectra : MeasurementFile::Form::Cgats;
            },
            "cgats: everything (default); spectra: a plain sheet of spectra (SPECT)")
        ->type_name("FORM")
        ->check(CLI::IsMember({"cgats", "spectra"}));
    command->callback([&context, arguments] { Run(context, *arguments); });
}

}  // namespace J4Tool
