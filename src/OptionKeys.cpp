#include "src/OptionKeys.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <locale>
#include <sstream>
#include <string_view>
#include <vector>

#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/LexicalCast.h"
#include "Utilities/Tools/StringTools.h"
#include "src/Flash/j4TableFlashData.h"
#include "src/j4TableProperties.h"

namespace Kestrelon::DeviceDriver::J4T {

using Generic::Configuration::Property;
using Utilities::Tools::lexical_cast;

namespace {

struct KeyId {
    std::string_view key;
    uint16_t id;
};

constexpr std::array<KeyId, 5> longKeys = {{
    {"J4TMoveSpeed", PropertyId::MoveSpeed},
    {"J4TScanSpeed", PropertyId::ScanSpeed},
    {"J4TScanDelay", PropertyId::ScanDelay},
    {"J4TFirmwareVersion", PropertyId::FirmwareVersion},
    {"J4TSerialNumber", PropertyId::SerialNumber},
}};

constexpr std::array<KeyId, 7> metricKeys = {{
    {"J4TMetricAbsHomeMovements", PropertyId::FirstMetric},
    {"J4TMetricAbsMovements", PropertyId::FirstMetric + 1},
    {"J4TMetricAbsDistance", PropertyId::FirstMetric + 2},
    {"J4TMetricResets", PropertyId::FirstMetric + 3},
    {"J4TMetricRelHomeMovements", PropertyId::FirstMetric + 4},
    {"J4TMetricRelMovements", PropertyId::FirstMetric + 5},
    {"J4TMetricRelDistance", PropertyId::FirstMetric + 6},
}};

constexpr std::array<KeyId, 4> boolKeys = {{
    {"J4THoldPosition", PropertyId::HoldPosition},
    {"J4TIsVisorCoordinate", PropertyId::IsVisorCoordinate},
    {"J4TEnableElectrostaticFoil", PropertyId::Foil},
    {"J4TEnableElectrostaticFoilButton", PropertyId::FoilButton},
}};

constexpr std::array<KeyId, 2> flashKeys = {{
    {"J4TLastWhiteBaseTransferTime", FlashId::WhiteBaseTime},
    {"J4TMaxSpeed", FlashId::MaxSpeed},
}};

constexpr std::string_view flashPrefix = "J4TFlash_";

template <class Keys>
uint16_t Find(const Keys& keys, const std::string& key)
{
    const auto found = std::find_if(keys.begin(), keys.end(), [&key](const KeyId& entry) { return entry.key == key; });
    return found == keys.end() ? 0 : found->id;
}

bool IsTableKey(const std::string& key) { return key.starts_with("J4T"); }

template <class T>
std::vector<T> Numbers(const std::string& text)
{
    std::vector<T> numbers;
    for (const std::string& word : Utilities::Tools::SplitAtBlanks(text)) {
        numbers.push_back(lexical_cast<T>(word));
    }
    return numbers;
}

}  // namespace

uint16_t TranslateTableKeyLong(const std::string& key)
{
    if (!IsTableKey(key)) {
        return 0;
    }
    return key.starts_with("J4TMetric") ? Find(metricKeys, key) : Find(longKeys, key);
}

uint16_t TranslateTableKeyBool(const std::string& key) { return IsTableKey(key) ? Find(boolKeys, key) : 0; }

uint16_t TranslateFlashKey(const std::string& key)
{
    if (!IsTableKey(key)) {
        return 0;
    }
    if (const uint16_t id = Find(flashKeys, key)) {
        return id;
    }
    // Read like "%u" of the scan functions, but defined for numbers of any length.
    return key.starts_with(flashPrefix)
               ? static_cast<uint16_t>(std::strtoull(key.c_str() + flashPrefix.size(), nullptr, 10))
               : 0;
}

std::string PropertyToString(const Property& property)
try {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    switch (property.GetType()) {
    case Property::TypeLong:
        stream << property.AsLong();
        break;
    case Property::TypeFloat:
        stream << property.AsFloat();
        break;
    case Property::TypeLongVector:
        for (const int32_t value : property.AsLongVector()) {
            stream << value << ' ';
        }
        break;
    case Property::TypeFloatVector:
        for (const float value : property.AsFloatVector()) {
            stream << value << ' ';
        }
        break;
    default:
        break;
    }
    return stream.str();
}
J4T_TRACE_FRAME

Property PropertyFromString(const std::string& text)
{
    const bool isList = text.find(' ') != std::string::npos;
    const bool isFloat = text.find('.') != std::string::npos;
    if (isList) {
        return isFloat ? Property(Numbers<float>(text)) : Property(Numbers<int32_t>(text));
    }
    return isFloat ? Property(lexical_cast<float>(text)) : Property(lexical_cast<int32_t>(text));
}

bool IsYes(const std::string& value) { return value == "yes" || value == "1"; }

bool IsNo(const std::string& value) { return value == "no" || value == "0"; }

std::string YesNo(bool value) { return value ? "yes" : "no"; }

}  // namespace Kestrelon::DeviceDriver::J4T
