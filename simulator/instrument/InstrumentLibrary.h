// The simulated instrument library behind its sixteen C functions. Each answers with a status, is recorded in
// the journal, and keeps what it failed with; the only exception that leaves one is what a registered handler
// throws.
#pragma once

#include <cstdint>
#include <string>

#include "simulator/ground/BenchApi.h"
#include "simulator/ground/BenchClock.h"
#include "simulator/ground/Faults.h"
#include "simulator/ground/Journal.h"
#include "simulator/instrument/InstrumentOptions.h"
#include "simulator/instrument/InstrumentRack.h"
#include "simulator/instrument/Optics.h"
#include "simulator/instrument/OptionTable.h"
#include "simulator/instrument/SampleStore.h"

namespace J4Bench {

class J4BENCH_API InstrumentLibrary {
public:
    using ErrorHandler = void (*)(const char* context, int32_t status, const char* message);
    using DeviceMessageHandler = void (*)(int32_t message, const char* text);

    /// What the library stands among; all of it must live as long as the library.
    struct Surroundings {
        BenchClock& clock;
        Journal& journal;
        const Faults& faults;
        Optics& optics;
        InstrumentRack& rack;
        const OptionTable& benchOptions;  ///< those whose keys begin with BenchPrefix
        const Outcome& refusal;           ///< failed: no instrument works, and no option can be set, because of this
    };

    static constexpr const char* BenchPrefix = "Simulator.";

    explicit InstrumentLibrary(const Surroundings& surroundings);
    InstrumentLibrary(const InstrumentLibrary&) = delete;
    InstrumentLibrary& operator=(const InstrumentLibrary&) = delete;

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

    /// Samples, settings and the last failure are forgotten, also what the instruments have learnt; registered
    /// handlers stay. May be called from within an option.
    void Forget();

private:
    void AddOptions();
    /// Tells the device message handler of an instrument that has gone.
    void DeliverDeviceMessage();
    const OptionTable& TableOf(const std::string& key) const;
    /// Whether the selected instrument can work.
    Outcome Ready();
    Outcome Write(const char* key, const char* value);
    Outcome Correct(int active, const char* name, const float* vector);
    std::string ExtendedError() const;

    template <typename... Arguments>
    JournalEntry EntryOf(const char* function, const Arguments&... arguments) const;

    /// Writes to the journal: a call and what it gave, that is no status; a run of samples.
    template <typename Result, typename... Arguments>
    void Record(const char* function, Result result, const Arguments&... arguments);
    void NoteSamples(int64_t begin, uint32_t count);

    /// Keeps what a call ended with, and last calls the error handler, which may throw.
    int32_t Conclude(const char* function, Outcome outcome);

    /// The end of every function that answers with a status: Record and Conclude.
    template <typename... Arguments>
    int32_t Finish(const char* function, Outcome outcome, const Arguments&... arguments);

    BenchClock& clock;
    Journal& journal;
    const Faults& faults;
    Optics& optics;
    InstrumentRack& rack;
    const OptionTable& benchOptions;
    const Outcome& refusal;
    OptionTable options;
    InstrumentOptions settings;
    SampleStore samples;
    ErrorHandler errorHandler = nullptr;
    DeviceMessageHandler deviceMessageHandler = nullptr;
    std::string lastFunction;
    Outcome lastOutcome;
    std::string answer;  ///< of GetOption
};

}  // namespace J4Bench
