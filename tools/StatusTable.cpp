#include "tools/StatusTable.h"

#include <algorithm>
#include <iterator>

#include "c_sdk/include/j4tavla.h"

namespace J4Tool {

namespace {

constexpr StatusEntry Entries[] = {
    {J4_ResultDeviceFault, "J4_ResultDeviceFault",
     "Switch the table off and on, look that nothing blocks the arm, and try again.", ExitCode::Device, true},
    {J4_ResultDeviceNotConnected, "J4_ResultDeviceNotConnected",
     "Check the table's power and USB cable, and that no other program uses it.", ExitCode::NotConnected, false},
    {J4_ResultNotCalibrated, "J4_ResultNotCalibrated",
     "Seat the instrument firmly, clean the white tile, and calibrate again.", ExitCode::Calibration, false},
    {J4_ResultException, "J4_ResultException", "Read the text of the failure; try again with the table homed.",
     ExitCode::Device, true},
    {J4_ResultResourceFault, "J4_ResultResourceFault",
     "Check key, value and speed; docs/options.md lists what each option takes.", ExitCode::Refused, false},
    {J4_ResultSpectrophotometerNotConnected, "J4_ResultSpectrophotometerNotConnected",
     "Seat the instrument in the table and connect its USB cable.", ExitCode::NotConnected, false},
    {J4_ResultPositionNotReached, "J4_ResultPositionNotReached",
     "Look whether something blocks the arm, then run 'j4tavla home'.", ExitCode::Position, true},
    {J4_ResultIllegalPosition, "J4_ResultIllegalPosition",
     "Choose a place inside the work area that 'j4tavla info' shows; for a chart, move it or take a smaller --margin.",
     ExitCode::Position, false},
    {J4_ResultWhiteBase, "J4_ResultWhiteBase",
     "Look at the stored white base with 'j4tavla whitebase' and write a good one.", ExitCode::Calibration, false},
    {J4_ResultFrameFailure, "J4_ResultFrameFailure",
     "Install the instrument's library (sorvane64) where the system finds it, or work on the virtual table with "
     "--virtual.",
     ExitCode::Library, false},
};

constexpr StatusEntry OfTheInstrument = {0, "status of the instrument's library",
                                         "See the documents of the instrument's library for this status.",
                                         ExitCode::Device, true};

}  // namespace

const StatusEntry& FindStatus(int32_t status)
{
    const auto found = std::find_if(std::begin(Entries), std::end(Entries),
                                    [status](const StatusEntry& entry) { return entry.status == status; });
    return found == std::end(Entries) ? OfTheInstrument : *found;
}

std::string StatusText(int32_t status)
{
    return "status " + std::to_string(status) + " (" + FindStatus(status).name + ")";
}

}  // namespace J4Tool
