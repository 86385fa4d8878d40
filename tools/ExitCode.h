// How the tool ends: one code for each kind of failure. Help and documents are made of this table.
#pragma once

namespace J4Tool {

enum class ExitCode {
    Done = 0,
    Unexpected = 1,
    Usage = 2,
    File = 3,
    Library = 4,
    NotConnected = 5,
    Calibration = 6,
    Position = 7,
    Device = 8,
    Check = 9,
    NotConfirmed = 10,
    Refused = 11,
    Tolerance = 12,
    Interrupted = 130,
};

struct ExitCodeText {
    ExitCode code;
    const char* meaning;
};

inline constexpr ExitCodeText ExitCodes[] = {
    {ExitCode::Done, "done"},
    {ExitCode::Unexpected, "an unexpected failure of the tool itself"},
    {ExitCode::Usage, "wrong arguments"},
    {ExitCode::File, "a file can't be read or written, or its content is wrong"},
    {ExitCode::Library, "the table's library or the instrument's library can't be loaded"},
    {ExitCode::NotConnected, "no table, or no instrument in it"},
    {ExitCode::Calibration, "the calibration or the white base is not usable"},
    {ExitCode::Position, "a target lies outside the work area or was not reached"},
    {ExitCode::Device, "any other failure of table or instrument"},
    {ExitCode::Check, "rows of the chart did not pass their check; what was measured is in the partial file"},
    {ExitCode::NotConfirmed, "a question was answered with no, or could not be asked"},
    {ExitCode::Refused, "table or instrument refused an option or a speed"},
    {ExitCode::Tolerance, "a tolerance is not held, or a rule could not be judged; what was to be written is written"},
    {ExitCode::Interrupted, "ended by Ctrl-C, a closed terminal or a signal; what was measured is in the partial file"},
};

}  // namespace J4Tool
