#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "chart/colour/Colorimetry.h"
#include "tools/Json.h"
#include "tools/Terminal.h"
#include "tools/commands/ChartArguments.h"

namespace J4Tool {

namespace {

namespace Colorimetry = J4Chart::Colorimetry;

void Run(ToolContext& context, Point place)
{
    Session& session = context.Open();
    session.Calibrate();
    session.Move(context.GetUnits().ToMillimetres(place));
    const Session::Spectrum spectrum = session.Measure();
    const Colorimetry::Triple xyz = Colorimetry::TristimulusValues(spectrum);
    const Colorimetry::Triple lab = Colorimetry::LabOfTristimulus(xyz);
    if (context.json) {
        PrintJson({{"x", place.x},
                   {"y", place.y},
                   {"unit", context.GetUnits().Name()},
                   {"xyz", xyz},
                   {"lab", lab},
                   {"spectrum", JsonNumbers(spectrum)}});
        return;
    }
    Print(stdout, "Lab  %8.3f %8.3f %8.3f   (D50, 2 degrees)\nXYZ  %8.3f %8.3f %8.3f\n", lab[0], lab[1], lab[2], xyz[0],
          xyz[1], xyz[2]);
    using J4Chart::FirstWavelength;
    using J4Chart::WavelengthStep;
    for (size_t band = 0; band < spectrum.size(); ++band) {
        Print(stdout, "%d nm  %.5f\n", FirstWavelength + WavelengthStep * static_cast<int>(band),
              static_cast<double>(spectrum[band]));
    }
}

}  // namespace

void AddSpotCommand(CLI::App& app, ToolContext& context)
{
    const auto place = std::make_shared<Point>();
    CLI::App* command = app.add_subcommand("spot", "calibrate, then measure one place: Lab, XYZ and spectrum");
    command->add_option("X", place->x, "place in the unit of --unit")->required()->check(FiniteNumber());
    command->add_option("Y", place->y, "place in the unit of --unit")->required()->check(FiniteNumber());
    command->callback([&context, place] { Run(context, *place); });
}

}  // namespace J4Tool
