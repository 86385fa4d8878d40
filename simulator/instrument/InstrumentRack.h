// The instruments that are connected: which one of them is selected, in which mode it measures, and which
// have gone off the bus.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "simulator/ground/BenchApi.h"
#include "simulator/instrument/Instrument.h"
#include "simulator/instrument/Status.h"

namespace J4Bench {

class J4BENCH_API InstrumentRack {
public:
    static constexpr size_t MaximumInstruments = 128;

    /// The names of the instruments are this and their index.
    static constexpr const char* NamePrefix = "Sorvane";

    explicit InstrumentRack(size_t count) { SetCount(count); }

    size_t Count() const { return instruments.size(); }

    /// Connects further instruments or takes the last ones away.
    /// @param count  0 to MaximumInstruments
    void SetCount(size_t count);

    /// @param index  below Count()
    const std::string& SerialAt(size_t index) const { return instruments[index].Serial(); }

    /// The instrument of this serial number, nullptr when there is none.
    Instrument* FindSerial(const std::string& serial);

    /// Also an instrument that is not there can be selected.
    void Select(size_t index) { selected = index; }

    /// The selected instrument in the rack's mode, nullptr when it is not there.
    Instrument* Selected();

    /// Fails when the selected instrument does not exist or has gone.
    Outcome Ready();

    /// For instance "Sorvane0".
    std::string SelectedName() const { return NamePrefix + std::to_string(selected); }

    /// The mode of whichever instrument is selected.
    Mode GetMode() const { return mode; }
    void SetMode(Mode value) { mode = value; }

    /// Takes an instrument off the bus; it forgets what it has learnt.
    void Unplug(Instrument& instrument);

    /// All instruments are on the bus again.
    void PlugAll();

    /// Separated by ";", or "none".
    std::string UnpluggedSerials() const;

    /// Serial number of the instrument that was unplugged last, until it is asked for: empty after that.
    std::string TakeGoneSerial();

    /// Selection and mode as at power-on, no calibrations and corrections.
    void Forget();

private:
    std::vector<Instrument> instruments;
    size_t selected = 0;
    Mode mode = Mode::SingleReflectance;
    std::string goneSerial;
};

}  // namespace J4Bench
