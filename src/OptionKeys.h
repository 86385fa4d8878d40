// The option keys that lead to numbered values of the table, and the text forms of values.
#pragma once

#include <cstdint>
#include <string>

#include "Generic/Configuration/Property.h"

namespace Kestrelon::DeviceDriver::J4T {

/// Property id of a key whose value is a number; 0 for any other key.
uint16_t TranslateTableKeyLong(const std::string& key);

/// Property id of a key whose value is yes or no; 0 for any other key.
uint16_t TranslateTableKeyBool(const std::string& key);

/// Id in the configuration block for a key that reads it; 0 for any other key.
uint16_t TranslateFlashKey(const std::string& key);

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
