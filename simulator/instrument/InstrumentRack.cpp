#include "simulator/instrument/InstrumentRack.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <locale>
#include <sstream>
#include <string_view>
#include <utility>

#include "Generic/Colour/Colorimetry.h"
#include "simulator/ground/TextList.h"
#include "simulator/instrument/PatchRecognition.h"

namespace J4Bench {

namespace Colorimetry = Kestrelon::DeviceDriver::Generic::Colorimetry;

namespace {

constexpr size_t DefaultInstruments = 2;
constexpr int32_t InstrumentHasGone = 1;  // number of the device message
constexpr std::string_view DevicePrefix = "Sorvane";
constexpr const char* CorrectionName = "j4TavlaCorrection";

struct ColourSpace {
    const char* name;
    Colorimetry::Triple (*convert)(const Spectrum&);
};

constexpr ColourSpace ColourSpaces[] = {
    {"CIELab", Colorimetry::Lab},
    {"CIELCh", Colorimetry::LCh},
    {"CIEXYZ", Colorimetry::TristimulusValues},
    {"XYZ", Colorimetry::TristimulusValues},
    {"CIExyY", Colorimetry::Chromaticity},
};

const ColourSpace* FindColourSpace(const std::string& name)
{
    const auto found = std::find_if(std::begin(ColourSpaces), std::end(ColourSpaces),
                                    [&](const ColourSpace& space) { return name == space.name; });
    return found == std::end(ColourSpaces) ? nullptr : found;
}

Outcome Refuse(const std::string& value, const std::string& wanted)
{
    return {Status::InvalidValue, "'" + value + "' is not " + wanted + "."};
}

/// 36 numbers from a caller; false when one of them is no usable factor.
bool CopySpectrum(const float* values, bool mayBeZero, Spectrum& spectrum)
{
    std::copy(values, values + SpectrumLength, spectrum.begin());
    return std::all_of(spectrum.begin(), spectrum.end(),
                       [mayBeZero](float value) { return std::isfinite(value) && (mayBeZero || value > 0.0f); });
}

size_t IndexOfHighest(const Densities& densities)
{
    return static_cast<size_t>(std::max_element(densities.begin(), densities.end()) - densities.begin());
}

/// A text in one line of the journal.
std::string InOneLine(const std::string& text)
{
    std::string line;
    for (const char character : text) {
        line += character == '\n' ? std::string(" | ") : std::string(1, character);
    }
    return line;
}

void AppendWord(std::ostringstream& line, const char* text)
{
    line << ' ' << (text == nullptr ? "null" : InOneLine(text));
}

template <typename Number>
void AppendWord(std::ostringstream& line, Number number)
{
    line << ' ' << number;
}

}  // namespace

InstrumentRack::InstrumentRack(Bench& bench) : bench(bench), optics(bench), simulatorOptions(bench, *this)
{
    SetInstrumentCount(DefaultInstruments);
    bench.SeatInstrument(0, instruments.back()->Serial());
    AddOptions();
}

InstrumentRack::~InstrumentRack() = default;

void InstrumentRack::AddOptions()
{
    const auto fixed = [this](const char* key, const char* meaning, const char* only) {
        options.Add({key, meaning,
                     [only](const std::string& value) {
                         return value == only ? Outcome() : Refuse(value, std::string("\"") + only + "\"");
                     },
                     [only] { return std::string(only); }});
    };
    // Texts of the selected instrument; empty while there is none.
    const auto ofInstrument = [this](std::string (*read)(const Instrument&)) {
        return [this, read] {
            const Instrument* const instrument = Selected();
            return instrument == nullptr ? std::string() : read(*instrument);
        };
    };

    options.Add({"DeviceType", "the selected instrument",
                 [this](const std::string& value) -> Outcome {
                     if (!value.starts_with(DevicePrefix)) {
                         return Refuse(value, "an instrument of this library");
                     }
                     return OptionTable::ReadInteger(
                         value.substr(DevicePrefix.size()), 0, MaximumInstruments - 1,
                         [this](int64_t index) { settings.selected = static_cast<size_t>(index); });
                 },
                 [this] { return SelectedName(); }});
    options.Add({"SerialNumber", "of the selected instrument", {}, ofInstrument([](const Instrument& instrument) {
                     return instrument.Serial();
                 })});
    options.Add({"MeasurementMode", "of whichever instrument is selected",
                 [this](const std::string& value) -> Outcome {
                     if (Outcome outcome = Ready(); outcome.Failed()) {
                         return outcome;
                     }
                     const auto found = std::find(ModeNames.begin(), ModeNames.end(), value);
                     if (found == ModeNames.end()) {
                         return Refuse(value, "a measurement mode of this instrument");
                     }
                     settings.mode = static_cast<Mode>(found - ModeNames.begin());
                     return {};
                 },
                 [this] { return std::string(ModeNames[static_cast<size_t>(settings.mode)]); }});
    options.Add({"AvailableMeasurementModes",
                 "of the selected instrument, separated by \";\"",
                 {},
                 ofInstrument([](const Instrument&) {
                     std::string names;
                     for (const char* name : ModeNames) {
                         AppendToList(names, name, ';');
                     }
                     return names;
                 })});
    options.Add({"IntegrationTime",
                 "of the current mode in seconds; 0 before its calibration",
                 {},
                 ofInstrument([](const Instrument& instrument) {
                     return OptionTable::WriteReal(static_cast<double>(instrument.IntegrationTime()) / 1e6);
                 })});
    options.Add({"1100",
                 "the instrument's white reference, 36 reflectance factors",
                 {},
                 ofInstrument([](const Instrument& instrument) {
                     std::string text;
                     for (const float value : instrument.WhiteReference()) {
                         AppendToList(text, OptionTable::WriteReal(static_cast<double>(value)), ' ');
                     }
                     return text;
                 })});
    options.Add({"ColorSpaceDescription.Type", "what J4_GetTriStimulus gives",
                 [this](const std::string& value) {
                     if (FindColourSpace(value) == nullptr) {
                         return Refuse(value, "a colour space of this library");
                     }
                     settings.colourSpace = value;
                     return Outcome();
                 },
                 [this] { return settings.colourSpace; }});
    fixed("Colorimetric.Illumination", "illuminant of the colour values", "D50");
    fixed("Colorimetric.Observer", "observer of the colour values", "TwoDegree");
    options.AddSwitch("Recognition", "a counted scan is reduced to patches", settings.recognition);
    options.AddSwitch("NoPersistentCalibrationLog", "taken and kept", settings.noPersistentCalibrationLog);
    options.Add({"LastError", "what the last call failed with", {}, [this] {
                     return lastOutcome.Failed() ? lastOutcome.text : std::string("no error");
                 }});
    options.Add(
        {"ExtendedErrorInformation", "the same with its circumstances", {}, [this] { return ExtendedError(); }});
    options.Add({"Reset",
                 "any value: samples, calibrations, options and handlers are forgotten",
                 [this](const std::string&) {
                     ForgetAll();
                     return Outcome();
                 },
                 {}});
}

int32_t InstrumentRack::IsConnected()
{
    DeliverDeviceMessage();
    return Finish("J4_IsConnected", Ready());
}

int32_t InstrumentRack::KeyPressed()
{
    DeliverDeviceMessage();
    constexpr int32_t notPressed = 0;  // nobody stands beside the bench
    Record("J4_KeyPressed", notPressed);
    return notPressed;
}

int32_t InstrumentRack::GetNumberOfAvailableSamples()
{
    DeliverDeviceMessage();
    const int32_t count = static_cast<int32_t>(samples.size());
    Record("J4_GetNumberOfAvailableSamples", count);
    return count;
}

int32_t InstrumentRack::Calibrate()
{
    DeliverDeviceMessage();
    Outcome outcome = Ready();
    if (!outcome.Failed()) {
        outcome = Selected()->Calibrate(optics, bench.Clock());
    }
    return Finish("J4_Calibrate", std::move(outcome));
}

int32_t InstrumentRack::TriggerMeasurement()
{
    DeliverDeviceMessage();
    Outcome outcome = Ready();
    if (!outcome.Failed()) {
        samples.clear();
        Spectrum result{};
        outcome = Selected()->Measure(optics, bench.Clock(), result);
        if (!outcome.Failed()) {
            samples.push_back(result);
        }
    }
    return Finish("J4_TriggerMeasurement", std::move(outcome));
}

int32_t InstrumentRack::TriggerCountedScan(uint32_t count)
{
    DeliverDeviceMessage();
    Outcome outcome = Ready();
    if (!outcome.Failed() && (count == 0 || count > MaximumSamples)) {
        outcome = Refuse(std::to_string(count), "a number of samples from 1 to " + std::to_string(MaximumSamples));
    }
    if (!outcome.Failed()) {
        samples.clear();
        Instrument& instrument = *Selected();
        outcome = instrument.StartScan(optics, bench.Clock());
        for (uint32_t i = 0; i < count && !outcome.Failed(); ++i) {
            samples.push_back(instrument.NextSample(optics, bench.Clock()));
        }
        if (settings.recognition) {
            samples = PatchRecognition::Reduce(samples, positions);
        }
        positions.clear();
    }
    return Finish("J4_TriggerCountedScan", std::move(outcome), count);
}

int32_t InstrumentRack::GetSpectrum(float* spectrum, uint32_t index)
{
    DeliverDeviceMessage();
    Outcome outcome = FindSample(spectrum, index);
    if (!outcome.Failed()) {
        std::copy(samples[index].begin(), samples[index].end(), spectrum);
    }
    return Finish("J4_GetSpectrum", std::move(outcome), index);
}

int32_t InstrumentRack::GetTriStimulus(float* tristimulus, uint32_t index)
{
    DeliverDeviceMessage();
    Outcome outcome = FindSample(tristimulus, index);
    if (!outcome.Failed()) {
        const Colorimetry::Triple values = FindColourSpace(settings.colourSpace)->convert(samples[index]);
        std::transform(values.begin(), values.end(), tristimulus,
                       [](double value) { return static_cast<float>(value); });
    }
    return Finish("J4_GetTriStimulus", std::move(outcome), index);
}

int32_t InstrumentRack::GetDensities(float* densities, int32_t* densityIndex, uint32_t index)
{
    DeliverDeviceMessage();
    Outcome outcome = FindSample(densities, index);
    if (!outcome.Failed()) {
        const Densities values = RelativeDensities(samples[index]);
        std::transform(values.begin(), values.end(), densities, [](double value) { return static_cast<float>(value); });
        if (densityIndex != nullptr) {
            *densityIndex = static_cast<int32_t>(IndexOfHighest(values));
        }
    }
    return Finish("J4_GetDensities", std::move(outcome), index);
}

int32_t InstrumentRack::GetDensity(float* density, uint32_t index)
{
    DeliverDeviceMessage();
    Outcome outcome = FindSample(density, index);
    if (!outcome.Failed()) {
        const Densities values = RelativeDensities(samples[index]);
        *density = static_cast<float>(values[IndexOfHighest(values)]);
    }
    return Finish("J4_GetDensity", std::move(outcome), index);
}

int32_t InstrumentRack::SetSubstrate(const float* spectrum)
{
    DeliverDeviceMessage();
    Outcome outcome;
    auto substrate = std::make_unique<Spectrum>();
    if (spectrum == nullptr || !CopySpectrum(spectrum, false, *substrate)) {
        outcome = {Status::InvalidValue, "A substrate has 36 reflectance factors above 0."};
    } else {
        settings.substrate = std::move(substrate);
    }
    return Finish("J4_SetSubstrate", std::move(outcome));
}

int32_t InstrumentRack::SetOption(const char* key, const char* value)
{
    DeliverDeviceMessage();
    const bool journalOff = !bench.GetJournal().Enabled();
    Outcome outcome = Write(key, value);
    if (journalOff) {  // the call that switches the journal on is no part of it
        return Conclude("J4_SetOption", std::move(outcome));
    }
    return Finish("J4_SetOption", std::move(outcome), key, value);
}

const char* InstrumentRack::GetOption(const char* key)
{
    DeliverDeviceMessage();
    answer.clear();
    if (key == nullptr) {
        return answer.c_str();
    }
    const std::string name = key;
    const bool ofSimulator = SimulatorOptions::IsSimulatorKey(name);
    const Option* const option = ofSimulator ? simulatorOptions.Find(name) : options.Find(name);
    if (option != nullptr && option->get) {
        answer = option->get();
    }
    if (!ofSimulator) {
        Record("J4_GetOption", answer.c_str(), key);
    }
    return answer.c_str();
}

InstrumentRack::ErrorHandler InstrumentRack::RegisterErrorHandler(ErrorHandler handler)
{
    Record("J4_RegisterErrorHandler", Status::Ok, handler != nullptr ? "set" : "null");
    return std::exchange(errorHandler, handler);
}

InstrumentRack::DeviceMessageHandler InstrumentRack::RegisterDeviceMessageHandler(DeviceMessageHandler handler)
{
    Record("J4_RegisterDeviceMessageHandler", Status::Ok, handler != nullptr ? "set" : "null");
    return std::exchange(deviceMessageHandler, handler);
}

int32_t InstrumentRack::SetCorrection(int active, const char* name, const float* vector)
{
    Outcome outcome = Ready();
    Spectrum correction{};
    if (!outcome.Failed()) {
        if (active == 0) {
            Selected()->SetCorrection(std::nullopt);
        } else if (name == nullptr || std::strcmp(name, CorrectionName) != 0) {
            outcome = Refuse(name == nullptr ? "" : name, "a correction of this library");
        } else if (vector == nullptr || !CopySpectrum(vector, true, correction)) {
            outcome = {Status::InvalidValue, "A correction has 36 finite factors."};
        } else {
            Selected()->SetCorrection(correction);
        }
    }
    return Finish("J4_Private", std::move(outcome), 0, active);
}

int32_t InstrumentRack::ReplaceSamples(const float* const* spectra, int32_t count)
{
    Outcome outcome;
    std::vector<Spectrum> replacement;
    if (count < 0 || static_cast<uint32_t>(count) > MaximumSamples || (count > 0 && spectra == nullptr)) {
        outcome = Refuse(std::to_string(count), "a usable number of samples");
    } else {
        replacement.resize(static_cast<size_t>(count));
        for (size_t i = 0; i < replacement.size() && !outcome.Failed(); ++i) {
            if (spectra[i] == nullptr) {
                outcome = {Status::InvalidValue, "Sample " + std::to_string(i) + " of the list is missing."};
            } else {
                std::copy(spectra[i], spectra[i] + SpectrumLength, replacement[i].begin());
            }
        }
    }
    if (!outcome.Failed()) {
        samples = std::move(replacement);
    }
    return Finish("J4_Private", std::move(outcome), 1, count);
}

int32_t InstrumentRack::SetPositions(const uint16_t* values, uint64_t count)
{
    Outcome outcome;
    if (count > MaximumSamples || (count > 0 && values == nullptr)) {
        outcome = Refuse(std::to_string(count), "a usable number of positions");
    } else {
        positions.assign(values, values + count);
    }
    return Finish("J4_Private", std::move(outcome), 5, count);
}

int32_t InstrumentRack::RefusePrivate(uint32_t operation, const char* reason)
{
    return Finish("J4_Private", {Status::InvalidValue, reason}, operation);
}

void InstrumentRack::SetInstrumentCount(size_t count)
{
    while (instruments.size() < count) {
        instruments.push_back(std::make_unique<Instrument>(instruments.size()));
    }
    instruments.resize(count);
    for (size_t table = 0; table < bench.TableCount(); ++table) {
        if (FindSerial(bench.SeatedInstrument(table)) == nullptr) {
            bench.SeatInstrument(table, {});
        }
    }
}

Instrument* InstrumentRack::FindSerial(const std::string& serial)
{
    for (const auto& instrument : instruments) {
        if (instrument->Serial() == serial) {
            return instrument.get();
        }
    }
    return nullptr;
}

void InstrumentRack::Unplug(Instrument& instrument)
{
    instrument.unplugged = true;
    instrument.Forget();
    goneSerial = instrument.Serial();
}

void InstrumentRack::PlugAll()
{
    for (const auto& instrument : instruments) {
        instrument->unplugged = false;
    }
}

std::string InstrumentRack::UnpluggedSerials() const
{
    std::string list;
    for (const auto& instrument : instruments) {
        if (instrument->unplugged) {
            AppendToList(list, instrument->Serial(), ';');
        }
    }
    return list.empty() ? "none" : list;
}

void InstrumentRack::TakeOverHandlers(const InstrumentRack& other)
{
    errorHandler = other.errorHandler;
    deviceMessageHandler = other.deviceMessageHandler;
}

void InstrumentRack::ForgetAll()
{
    settings = Settings();
    samples.clear();
    positions.clear();
    errorHandler = nullptr;
    deviceMessageHandler = nullptr;
    for (const auto& instrument : instruments) {
        instrument->Forget();
    }
}

void InstrumentRack::DeliverDeviceMessage()
{
    if (goneSerial.empty()) {
        return;
    }
    const std::string serial = std::exchange(goneSerial, {});
    if (deviceMessageHandler != nullptr) {
        deviceMessageHandler(InstrumentHasGone, serial.c_str());
    }
}

Instrument* InstrumentRack::Selected()
{
    if (settings.selected >= instruments.size()) {
        return nullptr;
    }
    Instrument* const instrument = instruments[settings.selected].get();
    instrument->mode = settings.mode;  // the mode stays when another instrument is selected
    return instrument;
}

Outcome InstrumentRack::Ready()
{
    const Instrument* const instrument = Selected();
    if (instrument == nullptr) {
        return {Status::NoSuchDevice, "There is no instrument " + SelectedName() + "."};
    }
    if (instrument->unplugged) {
        return {Status::DeviceFault, "Instrument " + instrument->Serial() + " has been unplugged."};
    }
    return {};
}

Outcome InstrumentRack::FindSample(const void* target, uint32_t index)
{
    if (target == nullptr) {
        return {Status::InvalidValue, "There is no room for the result."};
    }
    if (index >= samples.size()) {
        return {Status::NoSample, "There is no sample " + std::to_string(index) + ", only " +
                                      std::to_string(samples.size()) + " are available."};
    }
    return {};
}

Outcome InstrumentRack::Write(const char* key, const char* value)
{
    if (key == nullptr || value == nullptr) {
        return {Status::InvalidValue, "An option needs a key and a value."};
    }
    const std::string name = key;
    const Option* const option =
        SimulatorOptions::IsSimulatorKey(name) ? simulatorOptions.Find(name) : options.Find(name);
    if (option == nullptr) {
        return {Status::UnknownOption, "There is no option '" + name + "'."};
    }
    if (!option->set) {
        return {Status::UnknownOption, "The option '" + name + "' can only be read."};
    }
    Outcome outcome = option->set(value);
    if (outcome.Failed()) {
        outcome.text = name + ": " + outcome.text;
    }
    return outcome;
}

Densities InstrumentRack::RelativeDensities(const Spectrum& sample) const
{
    Densities densities = DensitiesOf(sample);
    if (settings.substrate) {
        const Densities substrate = DensitiesOf(*settings.substrate);
        for (size_t i = 0; i < densities.size(); ++i) {
            densities[i] -= substrate[i];
        }
    }
    return densities;
}

std::string InstrumentRack::SelectedName() const
{
    return std::string(DevicePrefix) + std::to_string(settings.selected);
}

std::string InstrumentRack::ExtendedError() const
{
    if (!lastOutcome.Failed()) {
        return "no error";
    }
    // Two lines of heading; readers that want the facts alone drop them.
    std::ostringstream text;
    text << "Instrument library (simulated)\nSelected instrument: " << SelectedName() << "\n"
         << lastFunction << " ended with status " << lastOutcome.status << "\n"
         << lastOutcome.text;
    return text.str();
}

template <typename Result, typename... Arguments>
void InstrumentRack::Record(const char* function, Result result, const Arguments&... arguments)
{
    if (bench.GetJournal().Enabled()) {
        std::ostringstream line;
        line.imbue(std::locale::classic());
        line << "library " << function;
        (AppendWord(line, arguments), ...);
        line << " =";
        AppendWord(line, result);
        bench.GetJournal().Add(line.str());
    }
}

int32_t InstrumentRack::Conclude(const char* function, Outcome outcome)
{
    const int32_t status = outcome.status;
    lastOutcome = std::move(outcome);
    if (status != Status::Ok) {
        lastFunction = function;
        if (errorHandlerCalls && errorHandler != nullptr) {
            const std::string message = lastOutcome.text;  // the handler may call the library
            errorHandler(function, status, message.c_str());
        }
    }
    return status;
}

template <typename... Arguments>
int32_t InstrumentRack::Finish(const char* function, Outcome outcome, const Arguments&... arguments)
{
    Record(function, outcome.status, arguments...);
    return Conclude(function, std::move(outcome));
}

}  // namespace J4Bench
