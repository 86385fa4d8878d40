// The tool's own way to the tables' lines, below the library: to those of the system, or to those of a bench.
#pragma once

#include "simulator/ground/UsbLines.h"

namespace J4Tool::TableLineSeams {

/// From here on the tables are those of a bench, and time is the bench's.
/// @param lines  must last
void UseBench(J4Bench::UsbLines& lines);

}  // namespace J4Tool::TableLineSeams
