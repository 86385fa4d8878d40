// The simulated instrument library behind its sixteen C functions: the instruments that are connected, the
// one that is selected, the sample store, the options and the handlers. Every function answers with a
// status; the only exception that leaves one is what a registered handler throws.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "simulator/instrument/Densities.h"
#include "simulator/instrument/Instrument.h"
#include "simulator/instrument/Optics.h"
#include "simulator/instrument/OptionTable.h"
#include "simulator/world/Bench.h"
#include "simulator/world/SimulatorOptions.h"

namespace J4Bench {

class J4BENCH_API InstrumentRack {
public:
    using ErrorHandler = void (*)(const char* context, int32_t status, const char* message);
    using DeviceMessageHandler = void (*)(int32_t message, const char* text);

    static constexpr size_t MaximumInstruments = 128;
    static constexpr uint32_t MaximumSamples = 100000;  ///< in the store and of one scan

    /// Two instruments; the second sits in the first table, so that a search for it has to search.
    explicit InstrumentRack(Bench& bench);
    ~InstrumentRack();
    InstrumentRack(const InstrumentRack&) = delete;
    InstrumentRack& operator=(const InstrumentRack&) = delete;

    // The functions of the library; statuses are those of Status.h.

    int32_t IsConnected();
    int32_t KeyPressed();
    int32_t GetNumberOfAvailableSamples();
    int32_t Calibrate();
    int32_t TriggerMeasurement();
    int32_t TriggerCountedScan(uint32_t count);
    int32_t GetSpectrum(float* spectrum, uint32_t index);
    int32_t GetTriStimulus(float* tristimulus, uint32_t index);
    /// densityIndex may be null; it gets the index of the highest of the four.
    int32_t GetDensities(float* densities, int32_t* densityIndex, uint32_t index);
    /// The highest of the four.
    int32_t GetDensity(float* density, uint32_t index);
    /// From then on densities are relative to this spectrum, until a reset.
    int32_t SetSubstrate(const float* spectrum);
    int32_t SetOption(const char* key, const char* value);
    /// Never null; valid until the next call of this function.
    const char* GetOption(const char* key);
    /// Each returns the handler registered before.
    ErrorHandler RegisterErrorHandler(ErrorHandler handler);
    DeviceMessageHandler RegisterDeviceMessageHandler(DeviceMessageHandler handler);

    // The private operations.

    int32_t SetCorrection(int active, const char* name, const float* vector);
    int32_t ReplaceSamples(const float* const* spectra, int32_t count);
    int32_t SetPositions(const uint16_t* values, uint64_t count);
    /// Answers an operation that does not exist or came without a record.
    int32_t RefusePrivate(uint32_t operation, const char* reason);

    // What the options "Simulator." set.

    size_t InstrumentCount() const { return instruments.size(); }
    /// Connects further instruments or takes the last ones away, also out of a table.
    void SetInstrumentCount(size_t count);
    /// The instrument of this serial number, nullptr when there is none.
    Instrument* FindSerial(const std::string& serial);
    /// Takes an instrument off the bus; the device message handler hears of it in the next call.
    void Unplug(Instrument& instrument);
    /// All instruments are on the bus again.
    void PlugAll();
    std::string UnpluggedSerials() const;
    Optics& GetOptics() { return optics; }
    bool errorHandlerCalls = false;  ///< failures also go to the registered error handler
    /// The handlers that another rack had; for a fresh rack that takes its place.
    void TakeOverHandlers(const InstrumentRack& other);

private:
    struct Settings {
        size_t selected = 0;
        Mode mode = Mode::SingleReflectance;  ///< of whichever instrument is selected
        std::string colourSpace = "CIELab";
        bool recognition = false;
        bool noPersistentCalibrationLog = false;
        std::unique_ptr<Spectrum> substrate;
    };

    void AddOptions();
    void ForgetAll();
    void DeliverDeviceMessage();
    Instrument* Selected();
    /// Fails when the selected instrument does not exist or has gone.
    Outcome Ready();
    Outcome FindSample(const void* target, uint32_t index);
    Outcome Write(const char* key, const char* value);
    Densities RelativeDensities(const Spectrum& sample) const;
    std::string ExtendedError() const;
    std::string SelectedName() const;

    /// Writes a call and its result to the journal.
    template <typename Result, typename... Arguments>
    void Record(const char* function, Result result, const Arguments&... arguments);

    /// Keeps what a call ended with, and last calls the error handler, which may throw.
    int32_t Conclude(const char* function, Outcome outcome);

    /// The end of every function that answers with a status: Record and Conclude.
    template <typename... Arguments>
    int32_t Finish(const char* function, Outcome outcome, const Arguments&... arguments);

    Bench& bench;
    Optics optics;
    std::vector<std::unique_ptr<Instrument>> instruments;
    OptionTable options;
    SimulatorOptions simulatorOptions;
    Settings settings;
    std::vector<Spectrum> samples;
    std::vector<uint16_t> positions;
    ErrorHandler errorHandler = nullptr;
    DeviceMessageHandler deviceMessageHandler = nullptr;
    std::string goneSerial;  ///< of an instrument whose leaving is still to be told
    std::string lastFunction;
    Outcome lastOutcome;
    std::string answer;  ///< of GetOption
};

}  // namespace J4Bench
