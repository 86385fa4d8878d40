#include "src/j4TableSDK.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <exception>
#include <new>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/LexicalCast.h"
#include "Utilities/Tools/StaticObject.h"
#include "Utilities/Tools/StringTools.h"
#include "Utilities/Tools/WrappingArithmetic.h"
#include "Version.h"
#include "src/OptionKeys.h"
#include "src/TableFacts.h"
#include "src/TableOperation.h"
#include "src/j4Bridge.h"

namespace Kestrelon::DeviceDriver::J4T {

using Generic::Configuration::Property;
using Utilities::Exceptions::ResourceException;
using Utilities::Exceptions::ResourceNotAvailableException;
using Utilities::Tools::lexical_cast;
using Utilities::Tools::SmartPointer;
using Utilities::Tools::StaticObject;
using Utilities::Tools::Text;
using Utilities::Tools::TruncationFitsInt32;

namespace {

/// By VersionPart.
constexpr std::array<const char*, 5> versionTexts = {
    "Version " J4T_VERSION_TEXT(J4T_VERSION_MAJOR) "." J4T_VERSION_TEXT(J4T_VERSION_MINOR) "." J4T_VERSION_TEXT(
        J4T_VERSION_REVISION) "  Build " J4T_VERSION_TEXT(J4T_VERSION_BUILD),
    J4T_VERSION_TEXT(J4T_VERSION_MAJOR),
    J4T_VERSION_TEXT(J4T_VERSION_MINOR),
    J4T_VERSION_TEXT(J4T_VERSION_REVISION),
    J4T_VERSION_TEXT(J4T_VERSION_BUILD),
};

const std::string_view deviceTypePrefix = "J4TSorvaneTable";

constexpr uint32_t LongestRawTimeout = 60000;  ///< ms

constexpr uint16_t FirstBackdoorKey = 5000;
constexpr uint16_t LastBackdoorKey = 5999;

/// A target nearer to the origin than this on both axes, in table units, means the home position.
constexpr double HomeRadius = 0.5;

static_assert(sizeof(void*) != 8 ||
              (offsetof(J4PrivateTableRequest, length) == 8 && offsetof(J4PrivateTableRequest, timeout) == 12 &&
               offsetof(J4PrivateTableRequest, failed) == 20 && offsetof(J4PrivateTableRequest, errorText) == 24));

/// A value 0 to 2 that the application can choose as its unit.
bool IsUserUnit(int32_t value) { return value >= PositionUnitMillimetre && value <= PositionUnitInch; }

/// Value of the option of this name; survives a reset.
std::string& SerialPortLogFile()
{
    return StaticObject<[] { return std::string(); }>::Get();
}

}  // namespace

std::list<j4TableSDK*>* j4TableSDK::liveObjects = nullptr;
unsigned j4TableSDK::liveObjectUsers = 0;
J4_DeviceMessageHandler j4TableSDK::deviceMessageHandler = nullptr;

j4TableSDK::j4TableSDK()
try {
    if (liveObjects == nullptr) {
        liveObjects = new std::list<j4TableSDK*>();
    }
    liveObjects->push_back(this);
    ++liveObjectUsers;
    Initialize();
}
J4T_TRACE_FRAME

j4TableSDK::~j4TableSDK()
{
    UnInitialize();
    liveObjects->remove(this);
    if (--liveObjectUsers == 0) {
        delete liveObjects;
        liveObjects = nullptr;
    }
}

void j4TableSDK::Initialize() {}

void j4TableSDK::UnInitialize()
{
    table = 0;
    // The mark was that of the table which has gone.
    tableInvalid = false;
}

J4_ErrorHandler j4TableSDK::SetErrorHandler(J4_ErrorHandler handler) { return std::exchange(errorHandler, handler); }

J4_ErrorHandler j4TableSDK::SetLibraryErrorHandler(J4_ErrorHandler handler)
try {
    const J4_ErrorHandler previous = std::exchange(libraryHandler, handler);
    Library()->J4_RegisterErrorHandler(libraryHandler);
    return previous;
}
J4T_TRACE_FRAME

void j4TableSDK::SetDeviceMessageHandler()
try {
    Library()->J4_RegisterDeviceMessageHandler(ProcessDeviceMessage);
}
J4T_TRACE_FRAME

J4_DeviceMessageHandler j4TableSDK::J4_RegisterDeviceMessageHandler(J4_DeviceMessageHandler handler)
try {
    const J4_DeviceMessageHandler previous = std::exchange(deviceMessageHandler, handler);
    SetDeviceMessageHandler();
    return previous;
}
J4T_TRACE_FRAME

void ProcessDeviceMessage(int32_t message, const char* text)
try {
    if (j4TableSDK::liveObjects != nullptr) {
        for (j4TableSDK* object : *j4TableSDK::liveObjects) {
            object->MessageFromDevice(message, text != nullptr ? text : "");
        }
    }
    if (j4TableSDK::deviceMessageHandler != nullptr) {
        j4TableSDK::deviceMessageHandler(message, text);
    }
}
J4T_TRACE_FRAME

void j4TableSDK::MessageFromDevice(int32_t message, const char* text)
{
    if (message == 1 && !table.IsNull() && table->GetPairedSerialNumber() == text) {
        tableInvalid = true;
    }
}

void j4TableSDK::ReportError(const char* name, const SDKError* error)
try {
    if (error != nullptr) {
        try {
            lastError = *error;
        } catch (const std::bad_alloc&) {
            error = nullptr;
        }
    }
    if (error == nullptr) {
        lastError.SetOutOfMemory();
    }
    if (errorHandler != nullptr) {
        errorHandler(name, error != nullptr ? error->code : SDKError::OutOfMemoryCode,
                     error != nullptr ? error->what() : SDKError::outOfMemoryText);
    }
} catch (const J4SDK::Exception&) {
    // The application's own error with a status: its business, unchanged.
    throw;
} catch (...) {
    try {
        Utilities::Exceptions::RethrowTraced(J4T_TRACE_HERE);
    } catch (const std::bad_alloc&) {
        // Without memory for a trace it leaves as it is.
    }
    throw;
}

void j4TableSDK::ThrowOnStatus(int32_t status)
try {
    if (status != 0) {
        const std::string extended = Library()->J4_GetOption("ExtendedErrorInformation");
        const std::string message = Library()->J4_GetOption("LastError");
        throw SDKError(status, message, extended);
    }
}
J4T_TRACE_FRAME

void j4TableSDK::J4_IsConnected()
try {
    ThrowOnStatus(Library()->J4_IsConnected());
}
J4T_TRACE_FRAME

int32_t j4TableSDK::J4_KeyPressed()
try {
    return Library()->J4_KeyPressed();
}
J4T_TRACE_FRAME

int32_t j4TableSDK::J4_GetNumberOfAvailableSamples()
try {
    return Library()->J4_GetNumberOfAvailableSamples();
}
J4T_TRACE_FRAME

void j4TableSDK::J4_TriggerMeasurement()
try {
    ThrowOnStatus(Library()->J4_TriggerMeasurement());
}
J4T_TRACE_FRAME

void j4TableSDK::J4_TriggerCountedScan(uint32_t count)
try {
    ThrowOnStatus(Library()->J4_TriggerCountedScan(count));
}
J4T_TRACE_FRAME

void j4TableSDK::J4_GetSpectrum(float* spectrum, uint32_t index)
try {
    ThrowOnStatus(Library()->J4_GetSpectrum(spectrum, index));
}
J4T_TRACE_FRAME

void j4TableSDK::J4_GetTriStimulus(float* tristimulus, uint32_t index)
try {
    ThrowOnStatus(Library()->J4_GetTriStimulus(tristimulus, index));
}
J4T_TRACE_FRAME

void j4TableSDK::J4_GetDensities(float* densities, int32_t* densityIndex, uint32_t index)
try {
    ThrowOnStatus(Library()->J4_GetDensities(densities, densityIndex, index));
}
J4T_TRACE_FRAME

void j4TableSDK::J4_GetDensity(float* density, uint32_t index)
try {
    ThrowOnStatus(Library()->J4_GetDensity(density, index));
}
J4T_TRACE_FRAME

void j4TableSDK::J4_SetSubstrate(float* substrate)
try {
    ThrowOnStatus(Library()->J4_SetSubstrate(substrate));
}
J4T_TRACE_FRAME

intptr_t j4TableSDK::J4_Private(int32_t operation, void* record)
try {
    if (operation < TableOperation::First || operation > TableOperation::Last) {
        return Library()->J4_Private(static_cast<uint32_t>(operation), record);
    }
    if (operation == TableOperation::Write || operation == TableOperation::Read) {
        if (record == nullptr) {
            throw SDKError(J4_ResultResourceFault, "parameter must not be null", std::string());
        }
        PrivateTableRequest(operation, *static_cast<J4PrivateTableRequest*>(record));
    }
    return 0;
}
J4T_TRACE_FRAME

/// Reports its failures in the record alone, so that a service program sees raw traffic and nothing else.
void j4TableSDK::PrivateTableRequest(int32_t operation, J4PrivateTableRequest& request)
{
    static std::array<char, 512> errorText;
    std::string& answer = StaticObject<[] { return std::string(); }>::Get();
    const auto fail = [&](const char* text) {
        request.failed = 1;
        std::strncpy(errorText.data(), text, errorText.size() - 1);
        errorText.back() = '\0';
    };
    request.errorText = errorText.data();
    try {
        if (operation == TableOperation::Write) {
            if (request.length < 0) {
                throw ResourceException("Invalid number of bytes: " + std::to_string(request.length));
            }
            const std::string data(request.data, static_cast<std::size_t>(request.length));
            Table()->GetComManager()->WriteSerialData(data);
        } else {
            answer.clear();
            request.data = answer.data();
            const int32_t count = std::exchange(request.length, 0);
            request.timeout = std::min(request.timeout, LongestRawTimeout);
            answer = Table()->GetComManager()->ReadSerialData(count, static_cast<int32_t>(request.timeout));
            request.data = answer.data();
            request.length = static_cast<int32_t>(answer.size());
        }
        request.failed = 0;
        errorText.front() = '\0';
    } catch (const std::exception& exception) {
        fail(exception.what());
    } catch (...) {
        fail("unknown error occured");
    }
}

SmartPointer<j4Table> j4TableSDK::Table()
try {
    if (tableInvalid) {
        UnInitialize();
    }
    if (table.IsNull()) {
        table = SmartPointer<j4Table>(new j4Table(nullptr, 0));
        // The table's start can have replaced the library.
        SetDeviceMessageHandler();
    }
    return table;
}
J4T_TRACE_FRAME

void j4TableSDK::J4_Calibrate()
try {
    bool withTable = false;
    try {
        withTable = Table()->IsActiveJ4ConnectedToTable();
    } catch (...) {
        Utilities::Exceptions::RethrowOutOfMemory();
        // A missing table never stops a plain calibration.
    }
    if (withTable) {
        Table()->Calibrate();
    } else {
        ThrowOnStatus(Library()->J4_Calibrate());
    }
}
J4T_TRACE_FRAME

bool j4TableSDK::J4_IsTableConnected()
try {
    return Table()->IsTableConnected();
}
J4T_TRACE_FRAME

void j4TableSDK::J4_GoToHomePosition()
try {
    Table()->GoToHomePosition();
}
J4T_TRACE_FRAME

void j4TableSDK::J4_SynchronizeWhitebases(const float* whiteBase)
try {
    const SmartPointer<j4Table> current = Table();
    try {
        current->SynchronizeWhitebases(std::vector<float>(whiteBase, whiteBase + SpectrumLength));
    } catch (...) {
        // A table that did not come up again after the transfer is made anew by the next call.
        tableInvalid = tableInvalid || !current->IsReady();
        throw;
    }
}
J4T_TRACE_FRAME

Position j4TableSDK::J4_GetPosition()
try {
    return ConvertToUserPositionUnit(Table()->GetPosition());
}
J4T_TRACE_FRAME

void j4TableSDK::J4_SetPosition(const Position& position)
try {
    const Position target = ConvertToTablePositionUnit(position);
    if (std::fabs(target.x) < HomeRadius && std::fabs(target.y) < HomeRadius) {
        Table()->GoToHomePosition();
    } else {
        Table()->SetPosition(target);
    }
}
J4T_TRACE_FRAME

void j4TableSDK::J4_Scan(const Position& start, const Position& end)
try {
    const Position tableStart = ConvertToTablePositionUnit(start);
    const Position tableEnd = ConvertToTablePositionUnit(end);
    Table()->Scan(tableStart, tableEnd);
}
J4T_TRACE_FRAME

int32_t j4TableSDK::UserUnit() { return Table()->GetProperty(PropertyId::UserUnit).AsLong(); }

Position j4TableSDK::ConvertToTablePositionUnit(const Position& position)
try {
    Position copy = position;
    const int32_t unit = UserUnit();
    if (!IsUserUnit(unit)) {
        throw ResourceException("Invalid unit");
    }
    copy.SetUnit(static_cast<PositionUnit>(unit), 0.0);
    copy.ConvertTo(PositionUnitTenthMillimetre, 0.0);
    // Whatever is cut to 32 bits later would be another place.
    if (!TruncationFitsInt32(copy.x) || !TruncationFitsInt32(copy.y)) {
        throw IllegalPositionException(Text("Invalid position (", copy.x, "/", copy.y, ")."));
    }
    return copy;
}
J4T_TRACE_FRAME

Position j4TableSDK::ConvertToUserPositionUnit(const Position& position)
try {
    Position copy = position;
    const int32_t unit = UserUnit();
    if (!IsUserUnit(unit)) {
        throw ResourceException("Invalid unit in properties.");
    }
    copy.ConvertTo(static_cast<PositionUnit>(unit), 0.0);
    return copy;
}
J4T_TRACE_FRAME

std::string j4TableSDK::J4_GetOption(const std::string& key)
try {
    const std::optional<OptionKey> option = FindOption(key);
    if (option && option->reading != Reading::Instrument) {
        try {
            return ReadOption(*option);
        } catch (const ResourceNotAvailableException&) {
            // A table that can't be reached leaves its keys to the instrument's library.
            if (option->answers == Answers::Facade) {
                throw;
            }
        }
    } else if (IsJ4TableBackdoorKey(key)) {
        return EnterBackdoor(key);
    }
    return Library()->J4_GetOption(key);
}
J4T_TRACE_FRAME

std::string j4TableSDK::ReadOption(const OptionKey& option)
{
    switch (option.reading) {
    case Reading::Instrument:
        break;
    case Reading::Number:
        return PropertyToString(Table()->GetProperty(option.number));
    case Reading::YesNo:
        return YesNo(Table()->GetProperty(option.number).AsLong() != 0);
    case Reading::BlockValue:
        return PropertyToString(Table()->GetFlashProperty(option.number));
    case Reading::Connection:
        return YesNo(J4_IsTableConnected());
    case Reading::DeviceType:
        // What was written is the index plus 1: reading and writing differ by two.
        return std::string(deviceTypePrefix) + std::to_string(Table()->GetDeviceIndex() - 1);
    case Reading::PairedSerialNumber:
        return Table()->GetPairedSerialNumber();
    case Reading::Version:
        return versionTexts.at(option.number);
    case Reading::LastError:
        return SDKError(lastError).what();
    case Reading::ExtendedError:
        return lastError.GetExtendedInformation();
    case Reading::UseableWithoutJ4:
        return YesNo(j4Table::useableWithoutJ4);
    case Reading::SerialPortLogFile:
        return SerialPortLogFile();
    case Reading::LibraryPath:
        return Library()->GetPath();
    case Reading::TestFailure:
        throw std::runtime_error("You wanted a 'throw' in the j4tavla SDK, I did it!");
    }
    return std::string();
}

void j4TableSDK::J4_SetOption(const std::string& key, const std::string& value)
try {
    const std::optional<OptionKey> option = FindOption(key);
    if (option && option->writing != Writing::Instrument) {
        WriteOption(*option, value);
    } else if (IsJ4TableBackdoorKey(key)) {
        EnterBackdoor(key, value);
    } else {
        SetLibraryOption(key, value);
    }
}
J4T_TRACE_FRAME

void j4TableSDK::WriteOption(const OptionKey& option, const std::string& value)
{
    switch (option.writing) {
    case Writing::Instrument:
        break;
    case Writing::Number: {
        const int32_t number = lexical_cast<int32_t>(value);
        Table()->SetProperty(option.number, Property(number));
        break;
    }
    case Writing::YesNo:
        Table()->SetProperty(option.number, Property(int32_t{IsYes(value)}));
        break;
    case Writing::WhitebaseCorrection:
        Table()->ResetCorrecturVectorInJ4SDK();
        if (!IsNo(value)) {
            Table()->SetCorrecturVectorInJ4SDK();
        }
        break;
    case Writing::RecognitionAlgorithm: {
        const int32_t algorithm = lexical_cast<int32_t>(value);
        Table()->SetProperty(option.number, Property(algorithm));
        SetLibraryOption("Recognition", YesNo(algorithm != Recognition::None));
        break;
    }
    case Writing::Recognition:
        SetRecognition(value);
        break;
    case Writing::DeviceType:
        SetDeviceType(value);
        break;
    case Writing::SerialLog:
        Table()->GetComManager()->WriteToSerialLogFile(value);
        break;
    case Writing::UseableWithoutJ4:
        j4Table::useableWithoutJ4 = IsYes(value);
        break;
    case Writing::SerialPortLogFile:
        SerialPortLogFile() = IsYes(value) ? "FTDI" : IsNo(value) ? "" : value;
        break;
    case Writing::Reset:
        // A full reset ends this object, so the exported function has seen to it.
        SetLibraryOption(std::string(option.key), value);
        break;
    }
}

void j4TableSDK::SetLibraryOption(const std::string& key, const std::string& value)
{
    ThrowOnStatus(Library()->J4_SetOption(key, value));
}

/// Keeps a present table in step with the library's option; no table is made for it, and an algorithm that
/// was chosen stays.
void j4TableSDK::SetRecognition(const std::string& value)
{
    if (!table.IsNull()) {
        if (value == "no") {
            table->SetProperty(PropertyId::RecognitionAlgorithm, Property(Recognition::None));
        } else if (value == "yes" &&
                   table->GetProperty(PropertyId::RecognitionAlgorithm).AsLong() == Recognition::None) {
            table->SetProperty(PropertyId::RecognitionAlgorithm, Property(Recognition::ByPositions));
        }
    }
    SetLibraryOption("Recognition", value);
}

void j4TableSDK::SetDeviceType(const std::string& value)
{
    if (!value.starts_with(deviceTypePrefix)) {
        throw ResourceException("Invalid device ID-string");
    }
    const uint16_t number = lexical_cast<uint16_t>(value.substr(deviceTypePrefix.size()));
    if (number < 1 || number > MostTables) {
        throw ResourceException("Invalid device ID");
    }
    // The old table goes first and gives up the hardware.
    UnInitialize();
    table = SmartPointer<j4Table>(new j4Table(nullptr, static_cast<uint16_t>(number - 1)));
    Initialize();
}

bool j4TableSDK::IsJ4TableBackdoorKey(const std::string& key)
try {
    if (key.empty() || key.find_first_not_of("0123456789") != std::string::npos) {
        return false;
    }
    const uint16_t id = lexical_cast<uint16_t>(key);
    if (id < FirstBackdoorKey || id > LastBackdoorKey) {
        return false;
    }
    return Table()->HasProperty(id);
}
J4T_TRACE_FRAME

std::string j4TableSDK::EnterBackdoor(const std::string& key)
try {
    return PropertyToString(Table()->GetProperty(lexical_cast<uint16_t>(key)));
}
J4T_TRACE_FRAME

void j4TableSDK::EnterBackdoor(const std::string& key, const std::string& value)
try {
    const Property property = PropertyFromString(value);
    Table()->SetProperty(lexical_cast<uint16_t>(key), property);
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::J4T
