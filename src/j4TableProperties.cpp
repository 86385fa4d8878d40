#include "src/j4TableProperties.h"

#include <algorithm>
#include <array>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"

namespace Kestrelon::DeviceDriver::J4T {

using Generic::Configuration::Property;

namespace {

struct Default {
    uint16_t id;
    Property value;
};

const std::array<Default, 12>& Defaults()
{
    static const std::array<Default, 12> defaults = {{
        {PropertyId::MoveSpeed, Property(300)},
        {PropertyId::ScanSpeed, Property(160)},
        {PropertyId::ScanDelay, Property(200)},
        {PropertyId::IsVisorCoordinate, Property(0)},
        {PropertyId::UserUnit, Property(0)},
        {PropertyId::PlacementCheck, Property(1)},
        {PropertyId::PlacementFactor, Property(1.15f)},
        {PropertyId::DirtCheck, Property(1)},
        {PropertyId::DirtCheckOffset, Property(-5)},
        {PropertyId::DirtCheckLimit, Property(0.2f)},
        {PropertyId::CheckRange, Property(1)},
        {PropertyId::RecognitionAlgorithm, Property(2)},
    }};
    return defaults;
}

}  // namespace

j4TableProperties::j4TableProperties()
try {
    InitializeProperties();
}
J4T_TRACE_FRAME

Property j4TableProperties::GetDefaultProperty(uint16_t id) const
try {
    const auto found =
        std::find_if(Defaults().begin(), Defaults().end(), [id](const Default& entry) { return entry.id == id; });
    if (found == Defaults().end()) {
        throw ProperyDataException("Invalid property id " + std::to_string(id));
    }
    return found->value;
}
J4T_TRACE_FRAME

void j4TableProperties::SetDefaultProperty(uint16_t id)
try {
    SetProperty(id, GetDefaultProperty(id));
}
J4T_TRACE_FRAME

void j4TableProperties::InitializeProperties()
try {
    for (const Default& entry : Defaults()) {
        SetDefaultProperty(entry.id);
    }
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::J4T
