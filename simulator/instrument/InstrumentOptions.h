// What an application sets on the simulated instrument library itself, and reads from the selected instrument:
// the options that the library has in common with a real one, apart from those that tell its last failure.
#pragma once

#include "simulator/instrument/InstrumentRack.h"
#include "simulator/instrument/OptionTable.h"
#include "simulator/instrument/SampleStore.h"

namespace J4Bench {

class InstrumentOptions {
public:
    /// Adds the options to the table; both must live as long as it.
    InstrumentOptions(InstrumentRack& rack, OptionTable& table);
    InstrumentOptions(const InstrumentOptions&) = delete;
    InstrumentOptions& operator=(const InstrumentOptions&) = delete;

    /// A counted scan is reduced to patches.
    bool Recognition() const { return settings.recognition; }

    /// What makes the colour values of a sample.
    SampleStore::Conversion ColourSpace() const;

    /// All settings are as at power-on.
    void Forget() { settings = Settings(); }

private:
    struct Settings {
        size_t colourSpace = 0;  ///< place in the list of colour spaces
        bool recognition = false;
        bool noPersistentCalibrationLog = false;
    };

    void AddInstrument(OptionTable& table);
    void AddColour(OptionTable& table);
    Outcome SelectInstrument(const std::string& name);
    Outcome SetMode(const std::string& name);
    Outcome SetColourSpace(const std::string& name);

    InstrumentRack& rack;
    Settings settings;
};

}  // namespace J4Bench
