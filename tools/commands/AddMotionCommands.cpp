#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/Json.h"
#include "tools/Terminal.h"
#include "tools/commands/ChartArguments.h"

namespace J4Tool {

namespace {

void PrintPosition(ToolContext& context, Point place)
{
    const Units units = context.GetUnits();
    const Point shown = units.FromMillimetres(place);
    if (context.json) {
        PrintJson({{"x", shown.x}, {"y", shown.y}, {"unit", units.Name()}});
    } else {
        Print(stdout, "x %s, y %s\n", units.Text(place.x).c_str(), units.Text(place.y).c_str());
    }
}

void UseVisor(Session& session, bool visor) { session.SetOption("J4TIsVisorCoordinate", visor ? "yes" : "no"); }

}  // namespace

void AddMotionCommands(CLI::App& app, ToolContext& context)
{
    struct Arguments {
        Point target;
        bool visor = false;
    };
    const auto arguments = std::make_shared<Arguments>();

    CLI::App* move = app.add_subcommand("move", "move the arm to a place");
    move->add_option("X", arguments->target.x, "place in the unit of --unit")->required()->check(FiniteNumber());
    move->add_option("Y", arguments->target.y, "place in the unit of --unit")->required()->check(FiniteNumber());
    move->add_flag("--visor", arguments->visor, "bring the visor there instead of the sensor");
    move->callback([&context, arguments] {
        Session& session = context.Open();
        session.Connect();
        UseVisor(session, arguments->visor);
        session.Move(context.GetUnits().ToMillimetres(arguments->target));
        PrintPosition(context, session.Position());
    });

    CLI::App* home = app.add_subcommand("home", "move the arm to the white tile by the motors' reference run");
    home->callback([&context] {
        Session& session = context.Open();
        session.GoHome();
        PrintPosition(context, session.Position());
    });

    CLI::App* position = app.add_subcommand("position", "show where the arm is");
    position->add_flag("--visor", arguments->visor, "the place of the visor instead of the sensor");
    position->callback([&context, arguments] {
        Session& session = context.Open();
        session.Connect();
        UseVisor(session, arguments->visor);
        PrintPosition(context, session.Position());
    });

    CLI::App* calibrate = app.add_subcommand("calibrate",
                                             "go to the white tile, calibrate, and check the seat of the "
                                             "instrument and the tile");
    calibrate->callback([&context] {
        Session& session = context.Open();
        session.Calibrate();
        const std::string serial = session.GetOption("J4TJ4SerialNumber");
        const std::string difference = session.TryOption("5045");
        if (context.json) {
            PrintJson({{"instrumentSerial", serial}, {"tileDifference", JsonValue(difference)}});
        } else {
            Print(stdout, "Instrument %s is calibrated. Colour difference on the tile: %s\n", serial.c_str(),
                  difference.empty() ? "not checked" : difference.c_str());
        }
    });
}

}  // namespace J4Tool
