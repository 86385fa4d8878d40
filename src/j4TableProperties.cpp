#include "src/j4TableProperties.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <variant>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"

namespace Kestrelon::DeviceDriver::J4T {

using Generic::Configuration::Property;

namespace {

struct Default {
    uint16_t id;
    std::variant<int32_t, float> value;
};

constexpr std::array<Default, 12> defaults = {{
    {PropertyId::MoveSpeed, 300},
    {PropertyId::ScanSpeed, 160},
    {PropertyId::ScanDelay, 200},
    {PropertyId::IsVisorCoordinate, 0},
    {PropertyId::UserUnit, 0},
    {PropertyId::PlacementCheck, 1},
    {PropertyId::PlacementFactor, 1.15f},
    {PropertyId::DirtCheck, 1},
    {PropertyId::DirtCheckOffset, -5},
    {PropertyId::DirtCheckLimit, 0.2f},
    {PropertyId::CheckRange, 1},
    {PropertyId::RecognitionAlgorithm, 2},
}};

}  // namespace

j4TableProperties::j4TableProperties()
try {
    InitializeProperties();
}
J4T_TRACE_FRAME

Property j4TableProperties::GetDefaultProperty(uint16_t id) const
try {
    const auto found =
        std::find_if(defaults.begin(), defaults.end(), [id](const Default& entry) { return entry.id == id; });
    if (found == defaults.end()) {
        throw ProperyDataException("Invalid property id " + std::to_string(id));
    }
    return std::visit([](auto value) { return Property(value); }, found->value);
}
J4T_TRACE_FRAME

void j4TableProperties::SetDefaultProperty(uint16_t id)
try {
    SetProperty(id, GetDefaultProperty(id));
}
J4T_TRACE_FRAME

void j4TableProperties::InitializeProperties()
try {
    for (const Default& entry : defaults) {
        SetDefaultProperty(entry.id);
    }
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::J4T
