#include "simulator/instrument/InstrumentLibrary.h"

#include <cstring>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

#include "simulator/instrument/Factors.h"

namespace J4Bench {

namespace {

constexpr int32_t InstrumentHasGone = 1;  // number of the device message
constexpr const char* CorrectionName = "j4TavlaCorrection";

bool IsBenchKey(const std::string& key) { return key.starts_with(InstrumentLibrary::BenchPrefix); }

std::string Word(const char* text) { return text == nullptr ? "null" : text; }

template <typename Number>
std::string Word(Number number)
{
    return std::to_string(number);
}

}  // namespace

InstrumentLibrary::InstrumentLibrary(const Surroundings& surroundings)
    : clock(surroundings.clock),
      journal(surroundings.journal),
      faults(surroundings.faults),
      optics(surroundings.optics),
      rack(surroundings.rack),
      benchOptions(surroundings.benchOptions),
      refusal(surroundings.refusal),
      settings(rack, options)
{
    AddOptions();
}

void InstrumentLibrary::AddOptions()
{
    options.Add({"LastError", "what the last call failed with", {}, [this] {
                     return lastOutcome.Failed() ? lastOutcome.text : std::string("no error");
                 }});
    options.Add(
        {"ExtendedErrorInformation", "the same with its circumstances", {}, [this] { return ExtendedError(); }});
    options.Add({"Reset",
                 "any value: samples, calibrations, options and handlers are forgotten",
                 [this](const std::string&) {
                     Forget();
                     errorHandler = nullptr;
                     deviceMessageHandler = nullptr;
                     return Outcome();
                 },
                 {}});
}

int32_t InstrumentLibrary::IsConnected()
{
    DeliverDeviceMessage();
    return Finish("J4_IsConnected", Ready());
}

int32_t InstrumentLibrary::KeyPressed()
{
    DeliverDeviceMessage();
    constexpr int32_t notPressed = 0;  // nobody stands beside the bench
    Record("J4_KeyPressed", notPressed);
    return notPressed;
}

int32_t InstrumentLibrary::GetNumberOfAvailableSamples()
{
    DeliverDeviceMessage();
    const int32_t count = static_cast<int32_t>(samples.Count());
    Record("J4_GetNumberOfAvailableSamples", count);
    return count;
}

int32_t InstrumentLibrary::Calibrate()
{
    DeliverDeviceMessage();
    Outcome outcome = Ready();
    if (!outcome.Failed()) {
        outcome = rack.Selected()->Calibrate(optics, clock);
    }
    return Finish("J4_Calibrate", std::move(outcome));
}

int32_t InstrumentLibrary::TriggerMeasurement()
{
    DeliverDeviceMessage();
    Outcome outcome = Ready();
    if (!outcome.Failed()) {
        samples.Clear();
        Spectrum result{};
        const int64_t begin = clock.Now();
        outcome = rack.Selected()->Measure(optics, clock, result);
        if (!outcome.Failed()) {
            samples.Add(result);
            NoteSamples(begin, 1);
        }
    }
    return Finish("J4_TriggerMeasurement", std::move(outcome));
}

int32_t InstrumentLibrary::TriggerCountedScan(uint32_t count)
{
    DeliverDeviceMessage();
    constexpr uint32_t most = SampleStore::MaximumSamples;
    Outcome outcome = Ready();
    if (!outcome.Failed() && (count == 0 || count > most)) {
        outcome = Refuse(std::to_string(count), "a number of samples from 1 to " + std::to_string(most));
    }
    if (!outcome.Failed()) {
        samples.Clear();
        Instrument& instrument = *rack.Selected();
        outcome = instrument.StartScan(optics, clock);
        const int64_t begin = clock.Now();
        for (uint32_t i = 0; i < count && !outcome.Failed(); ++i) {
            samples.Add(instrument.NextSample(optics, clock));
        }
        if (!outcome.Failed()) {
            NoteSamples(begin, count);
        }
        samples.EndScan(settings.Recognition(), instrument.SampleNoise(optics));
    }
    return Finish("J4_TriggerCountedScan", std::move(outcome), count);
}

int32_t InstrumentLibrary::GetSpectrum(float* spectrum, uint32_t index)
{
    DeliverDeviceMessage();
    return Finish("J4_GetSpectrum", samples.ReadSpectrum(spectrum, index), index);
}

int32_t InstrumentLibrary::GetTriStimulus(float* tristimulus, uint32_t index)
{
    DeliverDeviceMessage();
    return Finish("J4_GetTriStimulus", samples.ReadColour(tristimulus, index, settings.ColourSpace()), index);
}

int32_t InstrumentLibrary::GetDensities(float* densities, int32_t* densityIndex, uint32_t index)
{
    DeliverDeviceMessage();
    return Finish("J4_GetDensities", samples.ReadDensities(densities, densityIndex, index), index);
}

int32_t InstrumentLibrary::GetDensity(float* density, uint32_t index)
{
    DeliverDeviceMessage();
    return Finish("J4_GetDensity", samples.ReadDensity(density, index), index);
}

int32_t InstrumentLibrary::SetSubstrate(const float* spectrum)
{
    DeliverDeviceMessage();
    return Finish("J4_SetSubstrate", samples.SetSubstrate(spectrum));
}

int32_t InstrumentLibrary::SetOption(const char* key, const char* value)
{
    DeliverDeviceMessage();
    const bool wasOff = !journal.Enabled();
    Outcome outcome = Write(key, value);
    if (wasOff && journal.Enabled()) {  // the call that switches the journal on is no part of it
        return Conclude("J4_SetOption", std::move(outcome));
    }
    return Finish("J4_SetOption", std::move(outcome), key, value);
}

const char* InstrumentLibrary::GetOption(const char* key)
{
    DeliverDeviceMessage();
    answer.clear();
    if (key == nullptr) {
        return answer.c_str();
    }
    const Option* const option = TableOf(key).Find(key);
    if (option != nullptr && option->get) {
        answer = option->get();
    }
    if (!IsBenchKey(key)) {
        Record("J4_GetOption", answer.c_str(), key);
    }
    return answer.c_str();
}

InstrumentLibrary::ErrorHandler InstrumentLibrary::RegisterErrorHandler(ErrorHandler handler)
{
    Record("J4_RegisterErrorHandler", Status::Ok, handler != nullptr ? "set" : "null");
    return std::exchange(errorHandler, handler);
}

InstrumentLibrary::DeviceMessageHandler InstrumentLibrary::RegisterDeviceMessageHandler(DeviceMessageHandler handler)
{
    Record("J4_RegisterDeviceMessageHandler", Status::Ok, handler != nullptr ? "set" : "null");
    return std::exchange(deviceMessageHandler, handler);
}

int32_t InstrumentLibrary::SetCorrection(int active, const char* name, const float* vector)
{
    return Finish("J4_Private", Correct(active, name, vector), 0, active);
}

int32_t InstrumentLibrary::ReplaceSamples(const float* const* spectra, int32_t count)
{
    return Finish("J4_Private", samples.Replace(spectra, count), 1, count);
}

int32_t InstrumentLibrary::SetPositions(const uint16_t* values, uint64_t count)
{
    return Finish("J4_Private", samples.SetPositions(values, count), 5, count);
}

int32_t InstrumentLibrary::RefusePrivate(uint32_t operation, const char* reason)
{
    return Finish("J4_Private", {Status::InvalidValue, reason}, operation);
}

void InstrumentLibrary::Forget()
{
    rack.Forget();
    settings.Forget();
    samples = SampleStore();
    lastOutcome = {};
}

void InstrumentLibrary::DeliverDeviceMessage()
{
    const std::string serial = rack.TakeGoneSerial();
    if (!serial.empty() && deviceMessageHandler != nullptr) {
        deviceMessageHandler(InstrumentHasGone, serial.c_str());
    }
}

const OptionTable& InstrumentLibrary::TableOf(const std::string& key) const
{
    return IsBenchKey(key) ? benchOptions : options;
}

Outcome InstrumentLibrary::Ready() { return refusal.Failed() ? refusal : rack.Ready(); }

Outcome InstrumentLibrary::Write(const char* key, const char* value)
{
    if (key == nullptr || value == nullptr) {
        return {Status::InvalidValue, "An option needs a key and a value."};
    }
    return refusal.Failed() ? refusal : TableOf(key).Set(key, value);
}

Outcome InstrumentLibrary::Correct(int active, const char* name, const float* vector)
{
    if (Outcome outcome = Ready(); outcome.Failed()) {
        return outcome;
    }
    std::optional<Spectrum> correction;
    if (active != 0) {
        if (name == nullptr || std::strcmp(name, CorrectionName) != 0) {
            return Refuse(name == nullptr ? "" : name, "a correction of this library");
        }
        correction = Factors(vector, true);
        if (!correction) {
            return {Status::InvalidValue, "A correction has 36 finite factors."};
        }
    }
    rack.Selected()->SetCorrection(correction);
    return {};
}

std::string InstrumentLibrary::ExtendedError() const
{
    if (!lastOutcome.Failed()) {
        return "no error";
    }
    // Two lines of heading; readers that want the facts alone drop them.
    std::ostringstream text;
    text << "Instrument library (simulated)\nSelected instrument: " << rack.SelectedName() << "\n"
         << lastFunction << " ended with status " << lastOutcome.status << "\n"
         << lastOutcome.text;
    return text.str();
}

template <typename... Arguments>
JournalEntry InstrumentLibrary::EntryOf(const char* function, const Arguments&... arguments) const
{
    return {.kind = JournalEntry::Kind::Library, .name = function, .arguments = {Word(arguments)...}};
}

template <typename Result, typename... Arguments>
void InstrumentLibrary::Record(const char* function, Result result, const Arguments&... arguments)
{
    if (journal.Recording()) {
        JournalEntry entry = EntryOf(function, arguments...);
        entry.result = Word(result);
        journal.Add(entry);
    }
}

void InstrumentLibrary::NoteSamples(int64_t begin, uint32_t count)
{
    journal.Add({.kind = JournalEntry::Kind::Samples, .name = rack.SelectedName(), .begin = begin, .count = count});
}

int32_t InstrumentLibrary::Conclude(const char* function, Outcome outcome)
{
    const int32_t status = outcome.status;
    lastOutcome = std::move(outcome);
    if (status != Status::Ok) {
        lastFunction = function;
        if (faults.errorHandlerCalls && errorHandler != nullptr) {
            const std::string message = lastOutcome.text;  // the handler may call the library
            errorHandler(function, status, message.c_str());
        }
    }
    return status;
}

template <typename... Arguments>
int32_t InstrumentLibrary::Finish(const char* function, Outcome outcome, const Arguments&... arguments)
{
    if (journal.Recording()) {
        JournalEntry entry = EntryOf(function, arguments...);
        entry.status = outcome.status;
        if (outcome.Failed()) {
            entry.result = outcome.text;
        }
        journal.Add(entry);
    }
    return Conclude(function, std::move(outcome));
}

}  // namespace J4Bench
