// The option keys that this library answers itself, and the text forms of values.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Generic/Configuration/Property.h"

namespace Kestrelon::DeviceDriver::J4T {

/// Who has the value of a key: the connected table, its configuration block, or the facade without a table.
enum class Answers { Table, Block, Facade };

/// What reading a key does.
enum class Reading {
    Instrument,  ///< the key goes to the instrument's library
    Number,      ///< a property of the table, in decimal
    YesNo,       ///< a property of the table, 0 or not
    BlockValue,
    Connection,
    DeviceType,
    PairedSerialNumber,
    Version,
    LastError,
    ExtendedError,
    UseableWithoutJ4,
    SerialPortLogFile,
    LibraryPath,
    TestFailure,
};

/// What writing a key does.
enum class Writing {
    Instrument,  ///< key and value go to the instrument's library
    Number,
    YesNo,
    WhitebaseCorrection,
    RecognitionAlgorithm,
    Recognition,
    DeviceType,
    SerialLog,
    UseableWithoutJ4,
    SerialPortLogFile,
    Reset,
};

/// Numbers of the version keys.
namespace VersionPart {
inline constexpr uint16_t All = 0;
inline constexpr uint16_t Major = 1;
inline constexpr uint16_t Minor = 2;
inline constexpr uint16_t Revision = 3;
inline constexpr uint16_t Build = 4;
}  // namespace VersionPart

struct OptionKey {
    std::string_view key;
    uint16_t number;  ///< of a property, of a value in the configuration block, or a VersionPart; 0 for other keys
    Answers answers;
    Reading reading;
    Writing writing;
};

/// The row of a key, with its number; nothing for a key that is the instrument's in both directions, or all digits.
std::optional<OptionKey> FindOption(const std::string& key);

/// A number in decimal; a list as its numbers, each followed by a blank; nothing for an empty property.
std::string PropertyToString(const Generic::Configuration::Property& property);

/// The property that a text stands for: floats where it holds a point, a list where it holds a blank.
/// @throws std::invalid_argument for what is no number
Generic::Configuration::Property PropertyFromString(const std::string& text);

/// "yes" and "1" mean true, everything else false.
bool IsYes(const std::string& value);

/// "no" and "0".
bool IsNo(const std::string& value);

/// "yes" or "no".
std::string YesNo(bool value);

}  // namespace Kestrelon::DeviceDriver::J4T
