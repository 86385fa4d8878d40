// The commands of the table's protocol, one line each. The classes that issue them give arguments and
// replies their meaning; all numbers on the wire are hexadecimal text, most significant digit first.
#pragma once

#include <cstdint>

namespace Kestrelon::DeviceDriver::J4T::Communication {

inline constexpr uint32_t DefaultTimeout = 2000;  ///< milliseconds

/// Sub-command character of a command that has none; no byte goes on the wire for it.
inline constexpr uint8_t NoSubCommand = ' ';

struct CommandDefinition {
    uint8_t letter;
    uint8_t subCommand;      ///< a flag or selector of the command is added to it
    int32_t expectedLength;  ///< data characters of the reply
    uint32_t answerTimeout = DefaultTimeout;
};

namespace Commands {

inline constexpr CommandDefinition GetStatus{'a', '0', 6};                // reply: 3 status bytes; mode in bits 0 to 2
inline constexpr CommandDefinition GetFirmware{'a', '1', 10};             // reply: 4, 4 and 2 digits
inline constexpr CommandDefinition GetTableMetrics{'a', '2', 56};         // reply: seven counters of 8 digits
inline constexpr CommandDefinition GetRampData{'a', '3', 20};             // reply: ms, ms of 8 digits, speed of 4
inline constexpr CommandDefinition GetControllerDeviation{'a', '4', 24};  // reply: six signed values of 4 digits
inline constexpr CommandDefinition GetControllerInfo{'a', '5', 8};        // reply: two values of 4 digits
inline constexpr CommandDefinition J4CurrentInterrupt{'c', '0', 2};       // flag: arm; reply not used
inline constexpr CommandDefinition WasJ4CurrentMeasured{'c', '2', 2};     // reply: not 0 when current was seen
inline constexpr CommandDefinition SetScanDelay{'d', '1', 4};             // ms in 4 digits; reply not used
inline constexpr CommandDefinition ElectrostaticFoil{'f', '0', 2};        // flag: on; reply not used
inline constexpr CommandDefinition ElectrostaticFoilButton{'f', '2', 2};  // flag: enabled; reply not used
inline constexpr CommandDefinition ElectrostaticFoilState{'f', '4', 2};   // reply: bit 0 foil on, bit 1 button off
inline constexpr CommandDefinition Initialize{'i', '0', 0, 10000};        // drives ready when the second reply comes
inline constexpr CommandDefinition GoHome{'i', '1', 0, 15000};            // at the tile when the second reply comes
inline constexpr CommandDefinition ConfigDataBlockStatus{'k', '0', 14};   // selector; reply: id 2, address 4, number 8
inline constexpr CommandDefinition MoveStart{'m', '0', 0, 15000};         // visor 1 + scan 2; x, y, speed of 4 digits
inline constexpr CommandDefinition GetPosition{'p', '0', 8};              // flag: visor; reply: signed x, y of 4 digits
inline constexpr CommandDefinition Reset{'r', NoSubCommand, 0};           // the controller starts anew
inline constexpr CommandDefinition HoldPosition{'s', '0', 0};             // flag: hold
inline constexpr CommandDefinition PrepareSector{'u', '0', 0};            // first, last sector of 1 digit
inline constexpr CommandDefinition CopyRamToFlash{'u', '1', 0};           // flash 5, RAM 4 digits, size character
inline constexpr CommandDefinition EraseSector{'u', '2', 0};              // first, last sector of 1 digit
inline constexpr CommandDefinition ReadMemory{'u', '8', 0};               // address 8, count 4 digits; reply: the bytes
inline constexpr CommandDefinition WriteToRam{'u', '9', 0};               // RAM 4 digits, size character, the bytes
inline constexpr CommandDefinition Unlock{'u', 'A', 0};                   // six decimal digits
inline constexpr CommandDefinition Lock{'u', 'B', 0};                     // nothing

}  // namespace Commands

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
