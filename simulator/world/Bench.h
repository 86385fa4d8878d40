// The one world of the process: its clock, its tables, its instruments and the chart on the bed. The table's
// USB face and the instrument library's face are two views of it.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "simulator/chart/PrintedChart.h"
#include "simulator/ground/BenchApi.h"
#include "simulator/ground/BenchClock.h"
#include "simulator/ground/BenchLines.h"
#include "simulator/ground/Carriage.h"
#include "simulator/ground/Faults.h"
#include "simulator/ground/Journal.h"
#include "simulator/ground/Seats.h"
#include "simulator/instrument/InstrumentLibrary.h"
#include "simulator/instrument/InstrumentRack.h"
#include "simulator/instrument/Noise.h"
#include "simulator/instrument/Optics.h"
#include "simulator/table/TableUnit.h"
#include "simulator/world/SimulatorOptions.h"

namespace J4Bench {

class J4BENCH_API Bench final : private Seats, public UsbLines {
public:
    /// The environment variable with the options that the bench of the process begins with.
    static constexpr const char* OptionsVariable = "J4TAVLA_OPTIONS";

    /// The bench of the process. It is made at the first call, with the options of the environment, and never
    /// destroyed: libraries above still talk to it while the process ends.
    static Bench& Instance();

    /// A world at power-on: one table, and two instruments, of which the second sits in the table, so that a
    /// search for it has to search.
    Bench();
    ~Bench() override;
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    BenchClock& Clock() { return clock; }
    Journal& GetJournal() { return journal; }
    Faults& GetFaults() { return faults; }
    PrintedChart& GetChart() { return chart; }
    Noise& GetNoise() { return noise; }
    InstrumentRack& Instruments() { return instruments; }
    InstrumentLibrary& Library() { return library; }

    /// The table at this place, nullptr where there is none.
    std::shared_ptr<TableUnit> TableAt(size_t index) const;
    size_t TableCount() const { return tables.size(); }

    /// Plugs new tables in behind the present ones, or takes the last ones away.
    /// @return false when count is above MostTables; nothing is changed then
    bool SetTableCount(size_t count);

    /// Connects further instruments or takes the last ones away, also out of a table.
    void SetInstrumentCount(size_t count);

    /// Sets options out of a text "KEY=VALUE;KEY=VALUE...", in which ";;" stands for one ";" of a value. With the first
    /// that is refused nothing works any more, so that nobody takes what follows for the wanted: table and instruments
    /// fail with its text, also after Reset.
    /// @param source  where the options come from; the text of a failure begins with it
    void Configure(const std::string& source, const std::string& settings);

    std::string Refusal() override { return refusal.text; }
    size_t LineCount() override { return faults.tableUnplugged ? 0 : tables.size(); }
    std::shared_ptr<UsbLine> LineAt(size_t index, std::string& serialNumber) override;
    uint32_t Milliseconds() override { return static_cast<uint32_t>(clock.Now() / 1000); }
    void Pause(uint32_t milliseconds) override { clock.Advance(int64_t{1000} * milliseconds); }

    Carriage* CarriageOf(const std::string& instrumentSerial) override;

    /// Puts the instrument with this serial number into a table, and out of any other; with an empty text
    /// the table's seat becomes empty.
    /// @return false when there is no such table
    bool SeatInstrument(size_t tableIndex, const std::string& serial);

    /// Serial number of the instrument that sits in this table; empty when none does.
    std::string SeatedInstrument(size_t tableIndex) const;

    /// Puts the world to its power-on state: one fresh table, fresh instruments, bare paper, no faults, an empty
    /// journal that is off. Clock and trace go on, and the library keeps its handlers. A handle that is open on a
    /// table of before finds its device removed. May be called from within the library.
    void Reset();

private:
    /// One fresh table with the last instrument in it.
    void SetUpTables();

    BenchClock clock;
    Journal journal;
    Faults faults;
    PrintedChart chart;
    Noise noise;
    std::vector<std::shared_ptr<TableUnit>> tables;
    InstrumentRack instruments;
    Optics optics;
    Outcome refusal;  ///< of the options that the bench was configured with
    SimulatorOptions options;
    InstrumentLibrary library;
};

}  // namespace J4Bench
