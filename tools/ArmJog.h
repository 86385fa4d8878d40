// Lets a person bring the visor on a place: with the arrow keys, which move the arm, or by pushing it; the screen shows
// where it is, and Enter takes the place.
#pragma once

#include <string>

#include "tools/KeyInput.h"
#include "tools/Session.h"
#include "tools/Units.h"

namespace J4Tool {

class ArmJog {
public:
    static constexpr double Step = 5.0;      ///< of an arrow key, mm
    static constexpr double FineStep = 0.2;  ///< with Shift, mm

    /// Switches the table to places of the visor, and lets the arm go between moves; the sensor's places come back at the
    /// end.
    /// @throws ToolError where nobody is at the terminal
    ArmJog(Session& session, const Units& units);
    ~ArmJog();
    ArmJog(const ArmJog&) = delete;
    ArmJog& operator=(const ArmJog&) = delete;

    /// @param what  the name of what the visor is to be brought on
    /// @return the place, mm
    /// @throws ToolError when the person gives up
    Point Take(const std::string& what);

private:
    void Move(Point from, KeyInput::Press press);

    Session& session;
    Units units;
    KeyInput keys;
};

}  // namespace J4Tool
