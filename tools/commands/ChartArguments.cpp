#include "tools/commands/ChartArguments.h"

#include <cmath>
#include <optional>

#include "chart/cgats/CgatsFields.h"
#include "tools/ArmJog.h"
#include "tools/ToolError.h"

namespace J4Tool {

CLI::Option* AddPair(CLI::App& command, const std::string& name, std::vector<double>& target, const std::string& text)
{
    return command.add_option(name, target, text)->delimiter(',')->expected(2)->type_name("X,Y")->check(FiniteNumber());
}

std::optional<Point> PairOf(const Units& units, const std::vector<double>& numbers)
{
    return numbers.size() == 2 ? std::optional(units.ToMillimetres(Point{numbers[0], numbers[1]})) : std::nullopt;
}

CLI::Validator FiniteNumber()
{
    return {[](const std::string& text) {
                double number = 0.0;
                return J4Chart::ParseNumber(text, number) && std::isfinite(number) ? std::string()
                                                                                   : "'" + text + "' is no number";
            },
            ""};
}

void ChartArguments::AddTo(CLI::App& command)
{
    command.add_option("LAYOUT", layout, "the chart's patches: CGATS.17, CxF3 or CSV");
    command.add_option("--page", page, "which page of a chart with several lies on the bed")
        ->check(CLI::Range(1, 99999));
    command.add_option("--rows", rows, "rows of a layout without places");
    command.add_option("--columns", columns, "columns of a layout without places");
    AddPair(command, "--patch", size, "width and height of a patch of such a layout");
    AddPair(command, "--gap", gap, "paper between its patches");
    AddPair(command, "--start", start, "middle of its first patch on the bed");
    CLI::Option* byHand = command.add_flag(
        "--corners-by-hand", cornersByHand,
        "take the chart's place by hand: bring the visor on the crosshairs 1, 2 and 3 of a chart that has them, else "
        "on the "
        "first and the last patch of the first row and on the first of the last row, with the arrow keys or by pushing "
        "the arm");
    command.add_option("--corners", corners, "the same three places as numbers")
        ->delimiter(',')
        ->expected(6)
        ->type_name("X1,Y1,X2,Y2,X3,Y3")
        ->check(FiniteNumber())
        ->excludes(byHand);
    command.add_option("--speed", speed, "speed along a row, mm/s (default: as the patches allow)")
        ->check(CLI::Range(1, 65535));
}

void ChartArguments::ShareWithBench(ToolContext& context)
{
    context.chartPage = page;
    if (context.isVirtual) {
        layout = layout.empty() ? context.chartFile : layout;
        context.chartFile = context.chartFile.empty() ? layout : context.chartFile;
    }
    if (layout.empty()) {
        throw ToolError(ExitCode::Usage, "LAYOUT is required", "See 'j4tavla --help-all'.");
    }
}

ChartLayout ChartArguments::Load(const Units& units) const
{
    J4Chart::Grid grid;
    if (rows > 0) {
        grid.rows = rows;
    }
    if (columns > 0) {
        grid.columns = columns;
    }
    grid.size = PairOf(units, size);
    grid.gap = PairOf(units, gap);
    grid.start = PairOf(units, start);
    ChartLayout read = ChartLayout::Load(layout, grid, PlacedByCorners(), page);
    if (PlacedByCorners()) {
        read.Corners();
    }
    read.RequireMeasurable();
    return read;
}

void ChartArguments::PlaceCorners(ChartLayout& read, Session& session, const Units& units) const
{
    if (!PlacedByCorners()) {
        return;
    }
    std::array<Point, 3> places;
    if (corners.empty()) {
        session.GoHome();
        ArmJog jog(session, units);
        const std::array<ChartLayout::Corner, 3> named = read.Corners();
        for (size_t i = 0; i < places.size(); ++i) {
            places[i] = jog.Take(named[i].name);
        }
    } else {
        for (size_t i = 0; i < places.size(); ++i) {
            places[i] = units.ToMillimetres({corners[2 * i], corners[2 * i + 1]});
        }
    }
    read.PlaceCorners(places);
    read.RequireMeasurable();
}

void RefuseOptionsOfScans(const ToolContext& context, const std::string& command)
{
    for (const std::string& setting : context.settings) {
        const std::string key = setting.substr(0, setting.find('='));
        for (const char* own : {"J4TScanSpeed", "J4TScanDelay", "J4TRecognitionAlgorithm", "Recognition",
                                "MeasurementMode", "J4TIsVisorCoordinate", "5011", "5012", "5020", "5030", "5060"}) {
            if (key == own) {
                throw ToolError(ExitCode::Usage,
                                "--option " + key + " can't be given with " + command + ": it sets that itself",
                                "For the speed along a row there is --speed, for the unit --unit.");
            }
        }
    }
}

}  // namespace J4Tool
