// The tool's own way to the tables' lines, below the library: to those of the system, or to those of a bench, which
// defines it.
#pragma once

namespace J4Bench {
class UsbLines;
}

namespace J4Tool::TableLineSeams {

/// From here on the tables are those of a bench, and time is the bench's.
/// @param lines  must last
void UseBench(J4Bench::UsbLines& lines);

}  // namespace J4Tool::TableLineSeams
