#include "src/OptionKeys.h"

#include <array>
#include <cstdlib>
#include <sstream>
#include <string_view>
#include <vector>

#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/ClassicStream.h"
#include "Utilities/Tools/LexicalCast.h"
#include "Utilities/Tools/StringTools.h"
#include "src/Flash/j4TableFlashData.h"
#include "src/j4TableProperties.h"

namespace Kestrelon::DeviceDriver::J4T {

using Generic::Configuration::Property;
using Utilities::Tools::lexical_cast;

namespace {

/// Stands for the number of a key that ends in one itself.
constexpr uint16_t NumberInKey = 0xFFFF;

// The order of the columns: key, number, who answers, reading, writing.
constexpr std::array<OptionKey, 38> optionKeys = {{
    {"J4TMoveSpeed", PropertyId::MoveSpeed, Answers::Table, Reading::Number, Writing::Number},
    {"J4TScanSpeed", PropertyId::ScanSpeed, Answers::Table, Reading::Number, Writing::Number},
    {"J4TScanDelay", PropertyId::ScanDelay, Answers::Table, Reading::Number, Writing::Number},
    {"J4TFirmwareVersion", PropertyId::FirmwareVersion, Answers::Table, Reading::Number, Writing::Number},
    {"J4TSerialNumber", PropertyId::SerialNumber, Answers::Table, Reading::Number, Writing::Number},
    {"J4TMetricAbsHomeMovements", PropertyId::FirstMetric, Answers::Table, Reading::Number, Writing::Number},
    {"J4TMetricAbsMovements", PropertyId::FirstMetric + 1, Answers::Table, Reading::Number, Writing::Number},
    {"J4TMetricAbsDistance", PropertyId::FirstMetric + 2, Answers::Table, Reading::Number, Writing::Number},
    {"J4TMetricResets", PropertyId::FirstMetric + 3, Answers::Table, Reading::Number, Writing::Number},
    {"J4TMetricRelHomeMovements", PropertyId::FirstMetric + 4, Answers::Table, Reading::Number, Writing::Number},
    {"J4TMetricRelMovements", PropertyId::FirstMetric + 5, Answers::Table, Reading::Number, Writing::Number},
    {"J4TMetricRelDistance", PropertyId::FirstMetric + 6, Answers::Table, Reading::Number, Writing::Number},
    {"J4THoldPosition", PropertyId::HoldPosition, Answers::Table, Reading::YesNo, Writing::YesNo},
    {"J4TIsVisorCoordinate", PropertyId::IsVisorCoordinate, Answers::Table, Reading::YesNo, Writing::YesNo},
    {"J4TEnableElectrostaticFoil", PropertyId::Foil, Answers::Table, Reading::YesNo, Writing::YesNo},
    {"J4TEnableElectrostaticFoilButton", PropertyId::FoilButton, Answers::Table, Reading::YesNo, Writing::YesNo},
    {"J4TEnableWhitebaseCorrection", 0, Answers::Table, Reading::Instrument, Writing::WhitebaseCorrection},
    {"J4TRecognitionAlgorithm", PropertyId::RecognitionAlgorithm, Answers::Table, Reading::Number,
     Writing::RecognitionAlgorithm},
    {"Recognition", 0, Answers::Table, Reading::Instrument, Writing::Recognition},
    {"J4TConnection", 0, Answers::Table, Reading::Connection, Writing::Instrument},
    {"J4TDeviceType", 0, Answers::Table, Reading::DeviceType, Writing::DeviceType},
    {"J4TJ4SerialNumber", 0, Answers::Table, Reading::PairedSerialNumber, Writing::Instrument},
    {"J4TWriteToSerialLogFile", 0, Answers::Table, Reading::Instrument, Writing::SerialLog},
    {"J4TLastWhiteBaseTransferTime", FlashId::WhiteBaseTime, Answers::Block, Reading::BlockValue, Writing::Instrument},
    {"J4TMaxSpeed", FlashId::MaxSpeed, Answers::Block, Reading::BlockValue, Writing::Instrument},
    {"J4TFlash_", NumberInKey, Answers::Block, Reading::BlockValue, Writing::Instrument},
    {"J4TVersion", VersionPart::All, Answers::Facade, Reading::Version, Writing::Instrument},
    {"J4TMajorVersion", VersionPart::Major, Answers::Facade, Reading::Version, Writing::Instrument},
    {"J4TMinorVersion", VersionPart::Minor, Answers::Facade, Reading::Version, Writing::Instrument},
    {"J4TRevisionVersion", VersionPart::Revision, Answers::Facade, Reading::Version, Writing::Instrument},
    {"J4TBuildVersion", VersionPart::Build, Answers::Facade, Reading::Version, Writing::Instrument},
    {"LastError", 0, Answers::Facade, Reading::LastError, Writing::Instrument},
    {"ExtendedErrorInformation", 0, Answers::Facade, Reading::ExtendedError, Writing::Instrument},
    {"J4TUseableWithoutJ4", 0, Answers::Facade, Reading::UseableWithoutJ4, Writing::UseableWithoutJ4},
    {"J4TSerialPortLogFile", 0, Answers::Facade, Reading::SerialPortLogFile, Writing::SerialPortLogFile},
    {"J4TJ4SDKPath", 0, Answers::Facade, Reading::LibraryPath, Writing::Instrument},
    {"Please throw an exception in the j4tavla SDK", 0, Answers::Facade, Reading::TestFailure, Writing::Instrument},
    {"Reset", 0, Answers::Facade, Reading::Instrument, Writing::Reset},
}};

/// The number behind the letters of a key, its low 16 bits; 0 for a key that does not begin with them or has none.
uint16_t NumberBehind(std::string_view letters, const std::string& key)
{
    // Read like "%u" of the scan functions, but defined for numbers of any length.
    return key.starts_with(letters) ? static_cast<uint16_t>(std::strtoull(key.c_str() + letters.size(), nullptr, 10))
                                    : 0;
}

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

std::optional<OptionKey> FindOption(const std::string& key)
{
    for (OptionKey option : optionKeys) {
        if (option.number == NumberInKey) {
            option.number = NumberBehind(option.key, key);
            if (option.number != 0) {
                return option;
            }
        } else if (option.key == key) {
            return option;
        }
    }
    return std::nullopt;
}

std::string PropertyToString(const Property& property)
try {
    Utilities::Tools::ClassicStream<std::ostringstream> stream;
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
