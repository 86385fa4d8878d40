// Numbers of the table as it leaves the factory, which library, virtual table and tool all know.
#pragma once

#include <cstdint>

namespace Kestrelon::DeviceDriver::J4T {

/// The table counts in tenths of a millimetre, people and parts of its configuration in millimetres.
inline constexpr int32_t TenthsPerMillimetre = 10;

/// As many can be told apart on one computer.
inline constexpr int32_t MostTables = 127;

/// What the configuration holds of arm and work area; each table has its own.
namespace FactoryMeasures {

// Tenths of a millimetre.
inline constexpr int32_t ArmLength = 5000;
inline constexpr int32_t SensorReach = 4000;
inline constexpr int32_t VisorSide = 300;
inline constexpr int32_t VisorBack = 500;

// Permitted places of the sensor on either axis, millimetres.
inline constexpr int32_t LowestPlace = -100;
inline constexpr int32_t HighestPlace = 800;

}  // namespace FactoryMeasures

}  // namespace Kestrelon::DeviceDriver::J4T
