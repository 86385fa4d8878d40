// The tables' lines of the process's bench. Who links the bench calls this; a program that finds the bench at run time
// looks for it by its name.
#pragma once

#include "simulator/ground/BenchApi.h"
#include "src/SerialUSB/UsbLines.h"

namespace J4Bench {

using Kestrelon::DeviceDriver::J4T::LowLevel::UsbLines;

extern "C" J4BENCH_API UsbLines* J4Bench_Lines();

}  // namespace J4Bench
