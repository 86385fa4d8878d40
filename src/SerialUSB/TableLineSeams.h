// Seams for a program that chooses at run time between the system's USB devices and those of a bench, which it finds
// then. They take the place of those that are chosen when a variant of the library is linked.
#pragma once

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

class UsbLines;

/// From here on the tables are those of a bench, and time is the bench's.
/// @param lines  must last
void UseBench(UsbLines& lines);

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
