#include "tools/ArmJog.h"

#include <cstdio>

#include "tools/Interrupt.h"
#include "tools/Platform.h"
#include "tools/Terminal.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

/// Before the terminal is asked for single keys.
Session& RequireTerminal(Session& session)
{
    if (!Platform::IsTerminal(stdin)) {
        throw ToolError(ExitCode::NotConfirmed, "the corners can't be taken: nobody is at the terminal",
                        "Give them as --corners X1,Y1,X2,Y2,X3,Y3.");
    }
    return session;
}

}  // namespace

ArmJog::ArmJog(Session& session, const Units& units) : session(RequireTerminal(session)), units(units)
{
    session.SetOption("J4TIsVisorCoordinate", "yes");
    session.SetOption("J4THoldPosition", "no");
    Print(stderr, "Arrow keys move the visor by %s, with Shift by %s; the arm may be pushed too.\n",
          units.Text(Step).c_str(), units.Text(FineStep).c_str());
}

ArmJog::~ArmJog()
{
    try {
        session.SetOption("J4TIsVisorCoordinate", "no");
    } catch (const ToolError&) {
        // The table is gone, and what comes next fails with its reason.
    }
}

Point ArmJog::Take(const std::string& what)
{
    constexpr int glance = 500;  // ms, for an arm that is pushed
    for (;;) {
        Interrupt::Check();
        const Point here = session.Position();
        std::fputs("\r", stderr);
        Print(stderr, "visor on %s, then Enter: %s / %s   ", what.c_str(), units.Text(here.x).c_str(),
              units.Text(here.y).c_str());
        std::fflush(stderr);
        const KeyInput::Press press = keys.Wait(glance);
        switch (press.key) {
        case KeyInput::Key::Enter:
            Print(stderr, "\n");
            return session.Position();
        case KeyInput::Key::End:
            Print(stderr, "\n");
            throw ToolError(ExitCode::NotConfirmed, "the corners were not taken", "Press Enter for each of them.");
        case KeyInput::Key::None:
        case KeyInput::Key::Other:
            break;
        default:
            Move(here, press);
        }
    }
}

void ArmJog::Move(Point from, KeyInput::Press press)
{
    const double step = press.shift ? FineStep : Step;
    const bool sideways = press.key == KeyInput::Key::Left || press.key == KeyInput::Key::Right;
    const double by = press.key == KeyInput::Key::Left || press.key == KeyInput::Key::Up ? -step : step;
    try {
        session.Move({from.x + (sideways ? by : 0.0), from.y + (sideways ? 0.0 : by)});
    } catch (const ToolError& error) {
        if (error.code != ExitCode::Position) {
            throw;
        }
        Print(stderr, "\n%s\n", error.what());
    }
}

}  // namespace J4Tool
