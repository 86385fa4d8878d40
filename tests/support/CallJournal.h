// The bench's journal in the short form that tests compare: one line for each call that reached the
// instrument's library and one for each command on the table's wire, in the order in which they came.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

namespace J4Test {

using Lines = std::vector<std::string>;

/// "get KEY", "set KEY VALUE", "private OPERATION ARGUMENT", "J4_Calibrate" and the like, "table m0 03e80320012c"
/// for the wire. A status other than 0 stands behind " = ". The table's replies, what happens on the USB
/// below, and the long data of the flash commands are left out.
Lines ShortLines(const std::string& journal);

/// Those of the lines that begin with one of the beginnings.
Lines LinesThatBegin(const Lines& lines, std::initializer_list<const char*> beginnings);

/// One list out of several.
Lines Joined(std::initializer_list<Lines> parts);

/// What the table's code does with the library before each calibration and scan; the mode is the
/// application's, which it gets back.
Lines Preparation(const std::string& mode, const Lines& flashRead = {});

/// The configuration block is read from the flash.
extern const Lines flashRead;

}  // namespace J4Test
