// The options with the prefix "Simulator.": what an application sets on the bench at run time. They come in
// by the instrument library's option functions like any other key.
#pragma once

#include <string>

#include "simulator/instrument/OptionTable.h"

namespace J4Bench {

class Bench;
class InstrumentRack;

class SimulatorOptions {
public:
    SimulatorOptions(Bench& bench, InstrumentRack& rack);

    static bool IsSimulatorKey(const std::string& key) { return key.starts_with("Simulator."); }

    const Option* Find(const std::string& key) const { return table.Find(key); }

private:
    void AddWorld();
    void AddFaults();
    Outcome LoadChart(const std::string& fileName);
    Outcome Seat(const std::string& list);
    std::string Seated() const;
    Outcome Unplug(const std::string& serial);

    Bench& bench;
    InstrumentRack& rack;
    OptionTable table;
    std::string chartFile;
};

}  // namespace J4Bench
