#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <memory>
#include <optional>

#include "chart/cgats/CgatsFields.h"
#include "tools/AtomicFile.h"
#include "tools/ChartFinder.h"
#include "tools/ChartLayout.h"
#include "tools/ChartScan.h"
#include "tools/DateText.h"
#include "tools/Interrupt.h"
#include "tools/Platform.h"
#include "tools/Progress.h"
#include "tools/Question.h"
#include "tools/RowReader.h"
#include "tools/RowSpeed.h"
#include "tools/ToolError.h"
#include "tools/commands/Commands.h"

namespace J4Tool {

namespace {

struct Arguments {
    std::string layout;
    std::string output;
    size_t rows = 0;
    size_t columns = 0;
    std::vector<double> size;
    std::vector<double> gap;
    std::vector<double> start;
    std::vector<double> corners;
    bool cornersByHand = false;
    std::optional<double> margin;
    int retries = 2;
    bool oneWay = false;
    bool align = false;
    bool trustPlace = false;
    bool spots = false;
    int speed = 0;
    bool resume = false;
    bool restart = false;
    MeasurementFile::Form form = MeasurementFile::Form::Cgats;
};

/// One scan command from its arguments to the scan.
class ScanRun {
public:
    ScanRun(ToolContext& context, const Arguments& arguments)
        : context(context),
          arguments(arguments),
          units(context.GetUnits()),
          files(arguments.output, arguments.form),
          layout(ChartLayout::Load(arguments.layout, Grid(), PlacedByCorners()))
    {}

    void Run()
    {
        CheckPartialFile();
        RequireWritable(arguments.output);
        if (PlacedByCorners()) {
            layout.CornerPatches();
        }
        session = &context.Open();
        session->Connect();
        if (PlacedByCorners()) {
            layout.PlaceCorners(Corners());
        }
        const Interrupt interrupt;  // from here on the motors hold the arm, which has to be let go
        session->Calibrate();
        session->SetOption("MeasurementMode", "ScanningReflectance");
        const RowSpeed speed(LineScan(*session).IntegrationTime(), arguments.speed);
        const std::optional<ChartFinder::Finding> found = PlaceChart(speed);
        Progress progress(stdout, context.json || !Platform::IsTerminal(stdout));
        ChartScan scan(*session, layout, Settings(), Conditions(), files, progress);
        scan.interrupted = [&interrupt] { return interrupt.Requested(); };
        if (arguments.resume) {
            scan.TakeUp();
        }
        RowReader reader(*session, layout, speed);
        if (found) {
            reader.Expect(*found);
            scan.UseReader(reader);
        }
        scan.Run();
    }

private:
    bool PlacedByCorners() const { return arguments.cornersByHand || !arguments.corners.empty(); }

    /// Finds out where the chart lies, and takes it from there or refuses it.
    /// @return nothing where the layout does not tell how large patches are, so that only recognition can find them
    std::optional<ChartFinder::Finding> PlaceChart(const RowSpeed& speed)
    {
        if (arguments.trustPlace) {
            return ChartFinder::Finding{};
        }
        if (PlacedByCorners() && !arguments.align && arguments.size.empty() && !layout.HasSizes()) {
            return std::nullopt;
        }
        ChartFinder finder(*session, layout, speed, [this](const std::string& what) {
            if (!context.json) {
                std::fprintf(stderr, "%s\n", what.c_str());
            }
        });
        ChartFinder::Finding found = arguments.align ? finder.Find() : finder.Look();
        if (!arguments.align) {
            const std::string fault = finder.Fault(found);
            if (!fault.empty()) {
                throw ToolError(ExitCode::Check, fault,
                                "Lay it where the layout says, or let the instrument find it: --align.");
            }
            return found;
        }
        if (!found.isSure) {
            throw ToolError(ExitCode::Check, "the chart can't be found: no edges of patches were seen",
                            "Lay it where the layout says, or give its corners with --corners.");
        }
        layout.MoveTo(found.placement);
        if (!context.json) {
            std::fprintf(stderr, "found: %s (edges within %.2f mm)\n", finder.Words(found).c_str(), found.residual);
        }
        found.placement = Placement{found.placement.middle, {}, 0.0, 1.0, 1.0};
        return found;
    }

    std::optional<Point> Pair(const std::vector<double>& numbers) const
    {
        return numbers.size() == 2 ? std::optional(units.ToMillimetres(Point{numbers[0], numbers[1]})) : std::nullopt;
    }

    J4Chart::Grid Grid() const
    {
        J4Chart::Grid grid;
        if (arguments.rows > 0) {
            grid.rows = arguments.rows;
        }
        if (arguments.columns > 0) {
            grid.columns = arguments.columns;
        }
        grid.size = Pair(arguments.size);
        grid.gap = Pair(arguments.gap);
        grid.start = Pair(arguments.start);
        return grid;
    }

    void CheckPartialFile() const
    {
        std::error_code error;
        const bool exists = std::filesystem::exists(files.partial, error);
        if (arguments.resume && !exists) {
            throw ToolError(ExitCode::File, "there is no file '" + files.partial + "' to go on from",
                            "Scan without --resume.");
        }
        if (exists && !arguments.resume && !arguments.restart) {
            throw ToolError(ExitCode::File, "'" + files.partial + "' holds the rows of an earlier scan",
                            "Go on from it with --resume, or throw it away with --restart.");
        }
    }

    std::array<Point, 3> Corners()
    {
        if (!arguments.corners.empty()) {
            const std::vector<double>& c = arguments.corners;
            return {units.ToMillimetres({c[0], c[1]}), units.ToMillimetres({c[2], c[3]}),
                    units.ToMillimetres({c[4], c[5]})};
        }
        session->GoHome();
        // The person moves the arm by hand and looks through the visor.
        session->SetOption("J4TIsVisorCoordinate", "yes");
        session->SetOption("J4THoldPosition", "no");
        std::array<Point, 3> corners;
        const std::array<size_t, 3> patches = layout.CornerPatches();
        for (size_t i = 0; i < corners.size(); ++i) {
            const std::string& name = layout.Patches()[patches[i]].name;
            if (!WaitForEnter("Bring the visor on the middle of patch " + name + " and press Enter. ")) {
                throw ToolError(ExitCode::NotConfirmed, "the corners can't be taken: nobody is at the terminal",
                                "Give them as --corners X1,Y1,X2,Y2,X3,Y3.");
            }
            corners[i] = session->Position();
            std::fprintf(stderr, "  %s at %s / %s\n", name.c_str(), units.Text(corners[i].x).c_str(),
                         units.Text(corners[i].y).c_str());
        }
        session->SetOption("J4TIsVisorCoordinate", "no");
        return corners;
    }

    /// Without what can't stand in a keyword's value.
    std::string LayoutName() const
    {
        std::string name = std::filesystem::path(arguments.layout).filename().string();
        std::replace_if(
            name.begin(), name.end(),
            [](char character) { return character == '"' || static_cast<unsigned char>(character) < 0x20; }, '_');
        return name;
    }

    MeasurementFile::Conditions Conditions()
    {
        const auto option = [this](const char* key) { return session->GetOption(key); };
        return {
            {"ORIGINATOR", "j4tavla, " + option("J4TVersion")},
            {"DESCRIPTOR", "Measured chart " + LayoutName()},
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
    }

    Scanner::Settings Settings() const
    {
        Scanner::Settings settings;
        settings.margin = arguments.margin ? units.ToMillimetres(*arguments.margin) : settings.margin;
        settings.retries = arguments.retries;
        settings.bothWays = !arguments.oneWay;
        settings.spotsOnly = arguments.spots;
        return settings;
    }

    ToolContext& context;
    const Arguments& arguments;
    Units units;
    ChartScan::Files files;
    ChartLayout layout;
    Session* session = nullptr;
};

/// Options of the library that a scan sets itself, or that would make its coordinates mean something else.
void RefuseOptionsOfTheScan(const ToolContext& context)
{
    for (const std::string& setting : context.settings) {
        const std::string key = setting.substr(0, setting.find('='));
        for (const char* own : {"J4TScanSpeed", "J4TRecognitionAlgorithm", "Recognition", "MeasurementMode",
                                "J4TIsVisorCoordinate", "5011", "5020", "5030", "5060"}) {
            if (key == own) {
                throw ToolError(ExitCode::Usage, "--option " + key + " can't be given with scan: it sets that itself",
                                "For the speed along a row there is --speed, for the unit --unit.");
            }
        }
    }
}

void Run(ToolContext& context, Arguments arguments)
{
    RefuseOptionsOfTheScan(context);
    if (context.isVirtual) {
        // One file may be both: what is printed on the chart and where it lies.
        arguments.layout = arguments.layout.empty() ? context.chartFile : arguments.layout;
        context.chartFile = context.chartFile.empty() ? arguments.layout : context.chartFile;
    }
    if (arguments.layout.empty()) {
        throw ToolError(ExitCode::Usage, "LAYOUT is required", "See 'j4tavla scan --help'.");
    }
    ScanRun(context, arguments).Run();
}

CLI::Option* AddPair(CLI::App* command, const std::string& name, std::vector<double>& target, const std::string& text)
{
    return command->add_option(name, target, text)->delimiter(',')->expected(2)->type_name("X,Y");
}

}  // namespace

void AddScanCommand(CLI::App& app, ToolContext& context)
{
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand("scan",
                                           "measure a chart: go home, calibrate, scan and check every row, "
                                           "write a CGATS.17 file with spectra, XYZ and Lab");
    command->add_option("LAYOUT", arguments->layout, "the chart's patches, CGATS.17");
    command->add_option("-o,--output", arguments->output, "file to write, whole or not at all")
        ->type_name("MEASURED")
        ->required();
    command->add_option("--rows", arguments->rows, "rows of a layout without places");
    command->add_option("--columns", arguments->columns, "columns of a layout without places");
    AddPair(command, "--patch", arguments->size, "width and height of a patch of such a layout");
    AddPair(command, "--gap", arguments->gap, "paper between its patches");
    AddPair(command, "--start", arguments->start, "middle of its first patch on the bed");
    CLI::Option* byHand = command->add_flag(
        "--corners-by-hand", arguments->cornersByHand,
        "take the chart's place by hand: bring the visor on the first and the last patch of the first row and on the "
        "first of the last row");
    command->add_option("--corners", arguments->corners, "the same three places as numbers")
        ->delimiter(',')
        ->expected(6)
        ->type_name("X1,Y1,X2,Y2,X3,Y3")
        ->excludes(byHand);
    command->add_option("--margin", arguments->margin, "bare paper before and behind a row (default 8 mm)")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--retries", arguments->retries, "how often a row that failed is scanned again")
        ->capture_default_str()
        ->check(CLI::Range(0, 100));
    command->add_flag("--one-way", arguments->oneWay, "scan all rows in the same direction");
    CLI::Option* align = command->add_flag("--align", arguments->align,
                                           "let the instrument find the chart: up to half a patch and two degrees off");
    command->add_flag("--trust-place", arguments->trustPlace, "scan without looking first whether the chart lies right")
        ->excludes(align);
    command->add_flag("--spots", arguments->spots, "measure every patch singly instead of scanning rows");
    command->add_option("--speed", arguments->speed, "speed along a row, mm/s (default: as the patches allow)")
        ->check(CLI::Range(1, 65535));
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
