// Where the arm may carry the sensor, as the table itself tells: asked before anything moves, so that a chart which
// can't be measured whole is refused at once.
#pragma once

#include <string>

#include "src/Communication/j4TableArmGeometry.h"
#include "tools/Point.h"
#include "tools/Session.h"

namespace J4Tool {

class WorkArea {
public:
    /// As the table's configuration holds it.
    struct Limits {
        int xMin = 0;  ///< mm, both ends allowed
        int xMax = 0;
        int yMin = 0;
        int yMax = 0;
        int armLength = 0;  ///< tenths of a millimetre, as the rest
        int sensorReach = 0;
        int visorBack = 0;
        int visorSide = 0;
    };

    explicit WorkArea(const Limits& limits);

    /// Of a table as it leaves the factory, for who has none at hand.
    static WorkArea Usual();

    /// Reads the limits of the table that is connected.
    /// @throws ToolError
    static WorkArea Of(Session& session);

    /// @param place  of the sensor, mm
    /// @return what keeps the sensor from a place, with the limit; empty where it may go there
    std::string Fault(Point place) const;

    bool Holds(Point place) const { return Fault(place).empty(); }

private:
    Limits limits;
    Kestrelon::DeviceDriver::J4T::Communication::j4TableArmGeometry geometry;
};

}  // namespace J4Tool
