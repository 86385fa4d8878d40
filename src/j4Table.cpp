#include "src/j4Table.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "Utilities/Exceptions/SDKError.h"
#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/Clock.h"
#include "Utilities/Tools/LexicalCast.h"
#include "Utilities/Tools/StringTools.h"
#include "Utilities/Tools/WrappingArithmetic.h"
#include "src/SpectrumLength.h"
#include "src/TableFacts.h"
#include "src/j4Bridge.h"
#include "src/j4SpectraGuard.h"
#include "src/j4TableHelper.h"

namespace Kestrelon::DeviceDriver::J4T {

using Communication::j4TableComManager;
using Communication::J4TableMode;
using Generic::Configuration::Property;
using Utilities::Exceptions::ResourceException;
using Utilities::Exceptions::RethrowOutOfMemory;
using Utilities::Tools::lexical_cast;
using Utilities::Tools::SmartPointer;
using Utilities::Tools::strict_lexical_cast;
using Utilities::Tools::TruncateToInt32;

namespace {

const char* const optionMeasurementMode = "MeasurementMode";
const char* const optionDeviceType = "DeviceType";
const char* const modeSingle = "SingleReflectance";
const char* const modeScanning = "ScanningReflectance";

/// Name under which the correction is installed in the instrument's library.
const char* const correctionName = "j4TavlaCorrection";

/// Of the instrument that sits in the table.
constexpr int32_t LastDeviceIndex = 127;
constexpr int32_t StatusNoSuchDevice = J4_ResultDeviceNotConnected;

constexpr uint32_t CalibrationPause = 1500;  ///< ms between the calibrations of the two modes

bool IsFluctuating(uint16_t id) { return id >= PropertyId::FirstTableValue && id <= PropertyId::LastTableValue; }

Property LongProperty(uint32_t value) { return Property(static_cast<int32_t>(value)); }

void RequestCorrection(const float* vector)
{
    J4CorrectionRequest request{static_cast<uint8_t>(vector != nullptr), correctionName, vector};
    Library()->J4_Private(PrivateOperation::Correction, &request);
}

/// One measurement as CIELab.
std::array<float, 3> MeasureTriStimulus()
{
    std::array<float, 3> values{};
    Library()->J4_TriggerMeasurement();
    Library()->J4_GetTriStimulus(values.data(), 0);
    return values;
}

}  // namespace

bool j4Table::useableWithoutJ4 = false;

j4Table::j4Table(Generic::EventListener* listener, uint16_t deviceIndex)
try : deviceIndex(deviceIndex), listener(listener) {
    Initialize();
}
J4T_TRACE_FRAME

j4Table::~j4Table()
{
    TryStep([this] { comManager->GetMotors()->HoldPosition(false); });
    TryStep([this] { comManager->GetMisc()->ElectrostaticFoil(false); });
    TryStep([this] { comManager->GetMisc()->ElectrostaticFoilButton(true); });
    UnInitialize();
}

void j4Table::Initialize()
try {
    comManager = SmartPointer<j4TableComManager>(new j4TableComManager(deviceIndex));
    flashHandle = SmartPointer<j4TableFlashDataHandle>(new j4TableFlashDataHandle(comManager));
    scanHandle = SmartPointer<j4TableScanHandle>(new j4TableScanHandle(comManager));
    TableToReadyMode(false);
    if (!useableWithoutJ4) {
        SetupJ4();
    }
    SetLimits();
    comManager->GetMotors()->SetTargetCheck(
        [this] { return properties.GetProperty(PropertyId::CheckRange).AsLong() != 0; });
    ready = true;
}
J4T_TRACE_FRAME

void j4Table::UnInitialize()
{
    ready = false;
    scanHandle = 0;
    flashHandle = 0;
    comManager = 0;
}

int32_t j4Table::FlashLong(uint16_t id) { return flashHandle->GetCachedFlashData().GetProperty(id).AsLong(); }

void j4Table::SetLimits()
{
    const auto tenths = [](int32_t millimetres) {
        return Utilities::Tools::WrapMultiply(millimetres, TenthsPerMillimetre);
    };
    const int32_t visorSide = FlashLong(FlashId::VisorSide);
    const int32_t visorBack = FlashLong(FlashId::VisorBack);
    const int32_t sensorReach = FlashLong(FlashId::SensorReach);
    const int32_t armLength = FlashLong(FlashId::ArmLength);
    const int32_t maxSpeed = FlashLong(FlashId::MaxSpeed);
    const int32_t yMax = FlashLong(FlashId::YMax);
    const int32_t yMin = FlashLong(FlashId::YMin);
    const int32_t xMax = FlashLong(FlashId::XMax);
    const int32_t xMin = FlashLong(FlashId::XMin);
    comManager->GetMotors()->SetLimits(tenths(xMin), tenths(xMax), tenths(yMin), tenths(yMax), 1,
                                       static_cast<uint16_t>(maxSpeed), armLength, sensorReach, visorBack, visorSide);
}

void j4Table::TableToReadyMode(bool isRetry)
try {
    try {
        const J4TableMode mode = comManager->GetInfo()->GetMode();
        if (mode == Communication::J4TableModeNotReady || mode == Communication::J4TableModeNotInitialized) {
            comManager->GetMotors()->Initialize();
        }
        return;
    } catch (...) {
        RethrowOutOfMemory();
        if (isRetry) {
            throw;
        }
    }
    comManager->GetMisc()->Reset(true);
    TableToReadyMode(true);
}
J4T_TRACE_FRAME

void j4Table::SetupJ4()
try {
    comManager->GetMotors()->HoldPosition(false);
    std::string previousDeviceType;
    SwitchJ4SDK2TableJ4(previousDeviceType);
    pairedSerialNumber = Library()->J4_GetOption("SerialNumber");
    PrepareCurrentJ4ForTable();
}
J4T_TRACE_FRAME

void j4Table::SwitchJ4SDK2TableJ4(std::string& previousDeviceType)
try {
    int32_t index = -1;
    bool found = false;
    int32_t status = StatusNoSuchDevice;
    try {
        previousDeviceType = Library()->J4_GetOption(optionDeviceType);
        status = Library()->J4_IsConnected();
    } catch (...) {
        RethrowOutOfMemory();
        // A library that can't answer here has no instrument.
    }
    while (status == 0 && !found) {
        ++index;
        if (index > LastDeviceIndex) {
            break;
        }
        int32_t connected = StatusNoSuchDevice;
        try {
            Library()->J4_SetOption(optionDeviceType, "Sorvane" + std::to_string(index));
            connected = Library()->J4_IsConnected();
            if (connected == 0) {
                found = IsCurrentJ4Connected2Table();
            }
        } catch (const J4LibraryException&) {
            continue;
        } catch (const SDKError& error) {
            connected = error.code;
        }
        if (connected == StatusNoSuchDevice) {
            index = LastDeviceIndex + 1;
            break;
        }
    }
    comManager->GetMisc()->J4CurrentInterrupt(false);
    if (static_cast<uint32_t>(index) > static_cast<uint32_t>(LastDeviceIndex)) {
        Library()->J4_SetOption(optionDeviceType, previousDeviceType);
        throw J4NotConnectedException("No j4 device connected to table");
    }
}
J4T_TRACE_FRAME

/// Only a measurement by the instrument in the table draws a current that the table sees.
bool j4Table::IsCurrentJ4Connected2Table()
try {
    SavedOption mode(optionMeasurementMode);
    j4SpectraGuard applicationSamples;
    comManager->GetMisc()->J4CurrentInterrupt(false);
    comManager->GetMisc()->J4CurrentInterrupt(true);
    if (Library()->J4_SetOption(optionMeasurementMode, modeSingle) != 0) {
        throw J4LibraryException("Mode not supported.");
    }
    Library()->J4_TriggerMeasurement();
    return comManager->GetMisc()->WasJ4CurrentMeasured();
}
J4T_TRACE_FRAME

void j4Table::PrepareCurrentJ4ForTable()
try {
    SavedOption mode(optionMeasurementMode);
    const std::string modes = Library()->J4_GetOption("AvailableMeasurementModes");
    // The library keeps the correction by mode.
    PrepareMode(modes, modeSingle);
    PrepareMode(modes, modeScanning);
}
J4T_TRACE_FRAME

void j4Table::PrepareMode(const std::string& modes, const std::string& mode)
{
    if (modes.find(mode) == std::string::npos) {
        return;
    }
    Library()->J4_SetOption(optionMeasurementMode, mode);
    Library()->J4_SetOption("NoPersistentCalibrationLog", "yes");
    ResetCorrecturVectorInJ4SDK();
    SetCorrecturVectorInJ4SDK();
}

void j4Table::SetCorrecturVectorInJ4SDK()
try {
    std::vector<float> table(SpectrumLength, 1.0f);
    int32_t transferTime = 0;
    flashHandle->GetWhitebaseCorrection(table, transferTime);
    const std::vector<std::string> words = Utilities::Tools::SplitAtBlanks(Library()->J4_GetOption("1100"));
    if (words.size() != SpectrumLength) {
        throw ResourceException("Invalid Sorvane white reference");
    }
    std::array<float, SpectrumLength> vector{};
    for (std::size_t i = 0; i < SpectrumLength; ++i) {
        const float reference = strict_lexical_cast<float>(words[i]);
        if (reference == 0.0f) {
            throw ResourceException("Invalid Sorvane white reference (division by zero)");
        }
        vector[i] = table[i] / reference;
    }
    RequestCorrection(vector.data());
}
J4T_TRACE_FRAME

void j4Table::ResetCorrecturVectorInJ4SDK()
try {
    RequestCorrection(nullptr);
}
J4T_TRACE_FRAME

bool j4Table::IsTableConnected()
try {
    if (!comManager->IsTableConnected()) {
        return false;
    }
    if (pairedSerialNumber.empty() && !useableWithoutJ4) {
        SetupJ4();
    }
    return true;
}
J4T_TRACE_FRAME

bool j4Table::IsActiveJ4ConnectedToTable()
try {
    const std::string serialNumber = Library()->J4_GetOption("SerialNumber");
    return !serialNumber.empty() && serialNumber == pairedSerialNumber;
}
J4T_TRACE_FRAME

Position j4Table::GetPosition()
try {
    int32_t x = 0;
    int32_t y = 0;
    comManager->GetMotors()->GetPosition(x, y, IsVisor());
    return Position{static_cast<double>(x), static_cast<double>(y), PositionUnitTenthMillimetre, 0.0};
}
J4T_TRACE_FRAME

void j4Table::SetPosition(const Position& position)
try {
    comManager->GetMotors()->Move(TruncateToInt32(position.x), TruncateToInt32(position.y),
                                  Speed(PropertyId::MoveSpeed), IsVisor(), false);
}
J4T_TRACE_FRAME

void j4Table::GoToHomePosition()
try {
    comManager->GetMotors()->GoHome();
}
J4T_TRACE_FRAME

void j4Table::Calibrate()
try {
    SavedOption applicationMode(optionMeasurementMode);
    PrepareCurrentJ4ForTable();
    const std::string mode = Library()->J4_GetOption(optionMeasurementMode);
    if (mode != modeSingle && mode != modeScanning) {
        Library()->J4_Calibrate();
        return;
    }
    Library()->J4_SetOption(optionMeasurementMode, modeScanning);
    if (properties.GetProperty(PropertyId::PlacementCheck).AsLong() == 0) {
        Library()->J4_Calibrate();
    } else {
        CalibrateWithPlacementCheck();
    }
    Utilities::Tools::Clock::Sleep(CalibrationPause);
    Library()->J4_SetOption(optionMeasurementMode, modeSingle);
    Library()->J4_Calibrate();
    if (properties.GetProperty(PropertyId::DirtCheck).AsLong() != 0) {
        j4SpectraGuard emptyStore(false, true);
        WhiteTileDirtCheck();
    }
}
J4T_TRACE_FRAME

/// An instrument that doesn't sit tight on the tile gets less light back and settles on a longer integration
/// time than it is known for.
void j4Table::CalibrateWithPlacementCheck()
try {
    Library()->J4_Calibrate();
    j4TableFlashData data = flashHandle->GetCachedFlashData();
    const int32_t storedSerial = data.GetProperty(FlashId::CalibratedSerial).AsLong();
    const int32_t currentSerial = strict_lexical_cast<int32_t>(Library()->J4_GetOption("SerialNumber"));
    const float currentTime = strict_lexical_cast<float>(Library()->J4_GetOption("IntegrationTime"));
    if (currentTime > 0.0f && currentTime < ShortestIntegrationTime) {
        // Once learnt it would make every real time count as a loose instrument.
        throw J4CalibrationFailedException("Integration time in j4 is too short.");
    }
    float storedTime = data.GetProperty(FlashId::CalibratedIntegrationTime).AsFloat();
    if (std::isnan(storedTime)) {
        storedTime = 0.0f;
    }
    const bool known = storedSerial >= 1 && storedSerial == currentSerial && storedTime > 0.0f;
    const float reference = known ? storedTime : currentTime;
    const float factor = properties.GetProperty(PropertyId::PlacementFactor).AsFloat();
    if (currentTime > factor * reference) {
        throw J4CalibrationFailedException("Sorvane not placed properly.");
    }
    if (storedSerial == currentSerial && std::fabs(currentTime - storedTime) <= storedTime * 0.1f) {
        return;
    }
    data.SetProperty(FlashId::CalibratedSerial, Property(currentSerial));
    data.SetProperty(FlashId::CalibratedIntegrationTime, Property(currentTime));
    flashHandle->WriteToFlash(data);
    TableToReadyMode(false);
}
J4T_TRACE_FRAME

/// A dirty spot shows as a colour difference (CIE 1976) between two places on the tile.
void j4Table::WhiteTileDirtCheck()
try {
    SavedOption colorSpace("ColorSpaceDescription.Type");
    SavedOption illumination("Colorimetric.Illumination");
    SavedOption observer("Colorimetric.Observer");
    Library()->J4_SetOption(optionMeasurementMode, modeSingle);
    Library()->J4_SetOption("ColorSpaceDescription.Type", "CIELab");
    Library()->J4_SetOption("Colorimetric.Illumination", "D50");
    Library()->J4_SetOption("Colorimetric.Observer", "TwoDegree");
    const std::array<float, 3> first = MeasureTriStimulus();
    const Position home = GetPosition();
    Position besides = home;
    const int32_t offset = properties.GetProperty(PropertyId::DirtCheckOffset).AsLong();
    besides += Position{0.0, static_cast<double>(offset), PositionUnitTenthMillimetre, 0.0};
    SetPosition(besides);
    const std::array<float, 3> second = MeasureTriStimulus();
    double squares = 0.0;
    for (std::size_t k = 0; k < first.size(); ++k) {
        const double part = static_cast<double>(first[k]) - static_cast<double>(second[k]);
        squares += part * part;
    }
    const double difference = std::sqrt(squares);
    SetPosition(home);
    comManager->GetMotors()->HoldPosition(false);
    properties.SetProperty(PropertyId::DirtCheckDifference, Property(static_cast<float>(difference)));
    if (difference > static_cast<double>(properties.GetProperty(PropertyId::DirtCheckLimit).AsFloat())) {
        throw J4CalibrationFailedException("White base is dirty.");
    }
}
J4T_TRACE_FRAME

void j4Table::SynchronizeWhitebases(const std::vector<float>& whiteBase)
try {
    flashHandle->SynchronizeWhitebases(whiteBase);
    UnInitialize();
    Initialize();
}
J4T_TRACE_FRAME

void j4Table::Scan(const Position& start, const Position& end)
try {
    PrepareCurrentJ4ForTable();
    scanHandle->SetScanDelay(static_cast<uint16_t>(GetProperty(PropertyId::ScanDelay).AsLong()));
    scanHandle->SetPatchRecognition(static_cast<uint8_t>(GetProperty(PropertyId::RecognitionAlgorithm).AsLong()));
    scanHandle->Scan(start, end, IsVisor(), Speed(PropertyId::MoveSpeed), Speed(PropertyId::ScanSpeed));
}
J4T_TRACE_FRAME

void j4Table::MessageFromDevice(int32_t message, const std::string& text)
try {
    if (listener != nullptr) {
        listener->MessageFromDevice(message, text);
    }
}
J4T_TRACE_FRAME

Property j4Table::GetProperty(uint16_t id)
try {
    return IsFluctuating(id) ? GetFluctuatingProperty(id) : properties.GetProperty(id);
}
J4T_TRACE_FRAME

void j4Table::SetProperty(uint16_t id, const Property& value)
try {
    if (IsFluctuating(id)) {
        SetFluctuatingProperty(id, value);
    } else {
        properties.SetProperty(id, value);
    }
}
J4T_TRACE_FRAME

bool j4Table::HasProperty(uint16_t id) const { return properties.Contains(id) || IsFluctuating(id); }

Property j4Table::GetFlashProperty(uint16_t id)
try {
    return flashHandle->GetCachedFlashData().GetProperty(id);
}
J4T_TRACE_FRAME

Property j4Table::GetFluctuatingProperty(uint16_t id)
try {
    if (id >= PropertyId::FirmwareVersion && id <= PropertyId::FirmwareThird) {
        uint32_t first = 0;
        uint32_t second = 0;
        uint32_t third = 0;
        comManager->GetInfo()->GetFirmware(first, second, third);
        return LongProperty(id == PropertyId::FirmwareVersion ? second
                            : id == PropertyId::FirmwareFirst ? first
                                                              : third);
    }
    if (id >= PropertyId::FirstDeviation && id <= PropertyId::LastDeviation) {
        std::array<int32_t, 6> deviations{};
        comManager->GetInfo()->GetControllerDeviation(deviations);
        return Property(deviations[id - PropertyId::FirstDeviation]);
    }
    if (id == PropertyId::FirstControllerInfo || id == PropertyId::SecondControllerInfo) {
        uint32_t first = 0;
        uint32_t second = 0;
        comManager->GetInfo()->GetControllerInfo(first, second);
        return LongProperty(id == PropertyId::FirstControllerInfo ? first : second);
    }
    if (id >= PropertyId::FirstMetric && id <= PropertyId::LastMetric) {
        std::array<uint32_t, 7> metrics{};
        comManager->GetInfo()->GetTableMetrics(metrics);
        return LongProperty(metrics[id - PropertyId::FirstMetric]);
    }
    switch (id) {
    case PropertyId::HoldPosition:
        return LongProperty(comManager->GetInfo()->GetMode() == Communication::J4TableModeHold);
    case PropertyId::Foil:
        return LongProperty(comManager->GetMisc()->IsElectrostaticFoilEnabled());
    case PropertyId::FoilButton:
        return LongProperty(comManager->GetMisc()->IsElectrostaticFoilButtonEnabled());
    case PropertyId::SerialNumber: {
        const std::string serialNumber = comManager->GetSerialNumber();
        if (serialNumber.empty()) {
            throw GeneralCommunicationException("Empty serial number.");
        }
        return Property(lexical_cast<int32_t>(serialNumber));
    }
    default:
        return Property();
    }
}
J4T_TRACE_FRAME

void j4Table::SetFluctuatingProperty(uint16_t id, const Property& value)
try {
    switch (id) {
    case PropertyId::HoldPosition:
        comManager->GetMotors()->HoldPosition(value.AsLong() != 0);
        break;
    case PropertyId::Foil:
        comManager->GetMisc()->ElectrostaticFoil(value.AsLong() != 0);
        break;
    case PropertyId::FoilButton:
        comManager->GetMisc()->ElectrostaticFoilButton(value.AsLong() != 0);
        break;
    default:
        throw ResourceException("Can't set read only property " + std::to_string(id) + ".");
    }
}
J4T_TRACE_FRAME

bool j4Table::IsVisor() const { return properties.GetProperty(PropertyId::IsVisorCoordinate).AsLong() == 1; }

uint16_t j4Table::Speed(uint16_t id) const { return static_cast<uint16_t>(properties.GetProperty(id).AsLong()); }

}  // namespace Kestrelon::DeviceDriver::J4T
