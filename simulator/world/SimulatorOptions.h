// The options with the prefix "Simulator.": what an application sets on the bench at run time. They come in
// by the instrument library's option functions like any other key.
#pragma once

#include <string>

#include "simulator/instrument/OptionTable.h"

namespace J4Bench {

class Bench;

class SimulatorOptions {
public:
    /// The bench must live as long as its options.
    explicit SimulatorOptions(Bench& bench);
    SimulatorOptions(const SimulatorOptions&) = delete;
    SimulatorOptions& operator=(const SimulatorOptions&) = delete;

    const OptionTable& Table() const { return table; }

    /// Sets options out of a text "KEY=VALUE;KEY=VALUE...", in their order; ";;" stands for one ";" of a value.
    /// @return how the first that is refused failed; those behind it are not set
    Outcome SetAll(const std::string& settings);

    /// The bench is new: there is no chart on it.
    void Forget()
    {
        chartFile.clear();
        chartPage = 0;
    }

private:
    void AddWorld();
    void AddFaults();
    Outcome LoadChart(const std::string& fileName);
    Outcome TurnTo(const std::string& page);
    Outcome KeepState(const std::string& fileName);
    std::string KeptState() const;
    Outcome TraceTo(const std::string& fileName);
    Outcome MoveChart(const std::string& text);
    std::string ChartMoved() const;
    Outcome Seat(const std::string& list);
    std::string Seated() const;
    Outcome Unplug(const std::string& serial);

    Bench& bench;
    OptionTable table;
    std::string chartFile;
    int64_t chartPage = 0;  ///< 0: the first
    std::string traceFile;
};

}  // namespace J4Bench
