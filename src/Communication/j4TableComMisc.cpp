#include "src/Communication/j4TableComMisc.h"

#include <cstdint>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/Clock.h"
#include "Utilities/Tools/HexStringHelper.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

using Utilities::Tools::HexStringHelper;

namespace {

constexpr uint8_t FoilOn = 0x01;
constexpr uint8_t ButtonOff = 0x02;  ///< set when the button does not work

constexpr uint32_t StartUpTime = 1000;  ///< ms that the controller needs after a reset

}  // namespace

void j4TableComMisc::J4CurrentInterrupt(bool on)
try {
    Ask(Commands::J4CurrentInterrupt, on);
}
J4T_TRACE_FRAME

bool j4TableComMisc::WasJ4CurrentMeasured()
try {
    return HexStringHelper::ShortFromHexString(Ask(Commands::WasJ4CurrentMeasured)) != 0;
}
J4T_TRACE_FRAME

void j4TableComMisc::ElectrostaticFoil(bool on)
try {
    Ask(Commands::ElectrostaticFoil, on);
}
J4T_TRACE_FRAME

void j4TableComMisc::ElectrostaticFoilButton(bool on)
try {
    Ask(Commands::ElectrostaticFoilButton, on);
}
J4T_TRACE_FRAME

uint8_t j4TableComMisc::FoilState()
{
    return HexStringHelper::CharFromHexString(Ask(Commands::ElectrostaticFoilState));
}

bool j4TableComMisc::IsElectrostaticFoilEnabled()
try {
    return (FoilState() & FoilOn) != 0;
}
J4T_TRACE_FRAME

bool j4TableComMisc::IsElectrostaticFoilButtonEnabled()
try {
    return (FoilState() & ButtonOff) == 0;
}
J4T_TRACE_FRAME

void j4TableComMisc::Reset(bool wait)
try {
    j4TableComCommand command(Commands::Reset);
    SendAndReceive2(command);
    if (command.errorByte != 0) {
        throw TableException("Can't reset table (" + command.GetErrorText() + ").");
    }
    if (wait) {
        Utilities::Tools::Clock::Sleep(StartUpTime);
    }
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
