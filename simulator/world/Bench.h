// The one world of the process: its clock, its tables and its instruments. The table's USB face and the
// instrument library's face are two views of it.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "simulator/ground/BenchApi.h"
#include "simulator/ground/BenchClock.h"
#include "simulator/ground/Carriage.h"
#include "simulator/ground/Faults.h"
#include "simulator/ground/Journal.h"

namespace J4Bench {

class InstrumentRack;
class TableUnit;

class J4BENCH_API Bench {
public:
    static constexpr size_t MaximumTables = 127;

    /// The bench of the process. It is made at the first call and never destroyed: libraries above still
    /// talk to it while the process ends.
    static Bench& Instance();

    Bench();
    ~Bench();
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    BenchClock& Clock() { return clock; }
    Journal& GetJournal() { return journal; }
    Faults& GetFaults() { return faults; }
    InstrumentRack& Instruments() { return *instruments; }

    /// The table at this place, nullptr where there is none.
    std::shared_ptr<TableUnit> TableAt(size_t index) const;
    size_t TableCount() const { return tables.size(); }

    /// Plugs new tables in behind the present ones, or takes the last ones away.
    /// @return false when count is above MaximumTables; nothing is changed then
    bool SetTableCount(size_t count);

    /// The carriage of the table in which the instrument with this serial number sits, nullptr when it sits
    /// nowhere.
    Carriage* CarriageOf(const std::string& instrumentSerial);

    /// Puts the instrument with this serial number into a table, and out of any other; with an empty text
    /// the table's seat becomes empty.
    /// @return false when there is no such table
    bool SeatInstrument(size_t tableIndex, const std::string& serial);

    /// Serial number of the instrument that sits in this table; empty when none does.
    std::string SeatedInstrument(size_t tableIndex) const;

    /// Puts the world to its power-on state: one fresh table, fresh instruments, no faults, an empty journal
    /// that is off. The clock goes on. A handle that is open on a table of before finds its device removed.
    /// May be called from within the instruments.
    void Reset();

private:
    BenchClock clock;
    Journal journal;
    Faults faults;
    std::vector<std::shared_ptr<TableUnit>> tables;
    std::unique_ptr<InstrumentRack> instruments;         ///< made after the tables; its constructor seats one
    std::unique_ptr<InstrumentRack> retiredInstruments;  ///< those that were in a call when Reset replaced them
};

}  // namespace J4Bench
