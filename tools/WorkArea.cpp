#include "tools/WorkArea.h"

#include <cmath>
#include <limits>

#include "Utilities/Exceptions/TableExceptions.h"
#include "chart/cgats/CgatsFields.h"
#include "src/Flash/j4TableFlashData.h"
#include "src/TableFacts.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

namespace FlashId = Kestrelon::DeviceDriver::J4T::FlashId;
using Kestrelon::DeviceDriver::J4T::TenthsPerMillimetre;
using Kestrelon::DeviceDriver::J4T::Communication::j4TableArmGeometry;

int FlashValue(Session& session, int id)
{
    const std::string text = session.GetOption("J4TFlash_" + std::to_string(id));
    double value = 0.0;
    // The largest that still fits when it is multiplied.
    constexpr double largest = std::numeric_limits<int>::max() / TenthsPerMillimetre;
    if (!J4Chart::ParseNumber(text, value) || std::abs(value) > largest || value != std::floor(value)) {
        throw ToolError(ExitCode::Device,
                        "the table does not tell its work area: value " + std::to_string(id) + " is '" + text + "'",
                        "See docs/errors.md, under the table's configuration.");
    }
    return static_cast<int>(value);
}

std::string LimitFault(const char* axis, double value, int low, int high)
{
    if (value < low) {
        return std::string(axis) + " " + J4Chart::NumberText(value) +
               " mm lies before the work area, which begins at " + std::to_string(low) + " mm";
    }
    if (value > high) {
        return std::string(axis) + " " + J4Chart::NumberText(value) + " mm lies beyond the work area, which ends at " +
               std::to_string(high) + " mm";
    }
    return {};
}

double Rounded(double millimetres) { return std::round(millimetres * TenthsPerMillimetre) / TenthsPerMillimetre; }

}  // namespace

WorkArea::WorkArea(const Limits& limits)
    : limits(limits),
      geometry(limits.xMin * TenthsPerMillimetre, limits.xMax * TenthsPerMillimetre, limits.yMin * TenthsPerMillimetre,
               limits.yMax * TenthsPerMillimetre, limits.armLength, limits.sensorReach, limits.visorBack,
               limits.visorSide)
{}

WorkArea WorkArea::Usual()
{
    using namespace Kestrelon::DeviceDriver::J4T::FactoryMeasures;
    return WorkArea(
        {LowestPlace, HighestPlace, LowestPlace, HighestPlace, ArmLength, SensorReach, VisorBack, VisorSide});
}

WorkArea WorkArea::Of(Session& session)
{
    const auto value = [&session](int id) { return FlashValue(session, id); };
    return WorkArea({value(FlashId::XMin), value(FlashId::XMax), value(FlashId::YMin), value(FlashId::YMax),
                     value(FlashId::ArmLength), value(FlashId::SensorReach), value(FlashId::VisorBack),
                     value(FlashId::VisorSide)});
}

std::string WorkArea::Fault(Point place) const
{
    std::string fault = LimitFault("x", Rounded(place.x), limits.xMin, limits.xMax);
    if (fault.empty()) {
        fault = LimitFault("y", Rounded(place.y), limits.yMin, limits.yMax);
    }
    if (!fault.empty()) {
        return fault;
    }
    // Whole tenths towards zero, as the table is told them.
    const auto x = static_cast<int32_t>(place.x * TenthsPerMillimetre);
    const auto y = static_cast<int32_t>(place.y * TenthsPerMillimetre);
    try {
        auto visorX = static_cast<float>(x);
        auto visorY = static_cast<float>(y);
        geometry.SensorToVisor(visorX, visorY);
        geometry.CheckSensorPosition(x, y, static_cast<int32_t>(visorY));
    } catch (const std::exception&) {
        return "the arm can't bring the sensor to x " + J4Chart::NumberText(Rounded(place.x)) + " mm, y " +
               J4Chart::NumberText(Rounded(place.y)) + " mm";
    }
    return {};
}

}  // namespace J4Tool
