#include "simulator/world/Bench.h"

#include <utility>

#include "Utilities/Tools/Environment.h"
#include "src/TableFacts.h"

namespace J4Bench {

namespace {

using Kestrelon::DeviceDriver::J4T::MostTables;

constexpr size_t FirstUsbSerial = 640001;
constexpr size_t DefaultInstruments = 2;

}  // namespace

Bench& Bench::Instance()
{
    static Bench* const bench = [] {
        auto made = std::make_unique<Bench>();
        made->Configure(OptionsVariable, Kestrelon::Utilities::Tools::EnvironmentText(OptionsVariable));
        return made.release();
    }();
    return *bench;
}

UsbLines* J4Bench_Lines() { return &Bench::Instance(); }

Bench::Bench()
    : journal(clock),
      instruments(DefaultInstruments),
      optics(*this, faults, chart, noise),
      options(*this),
      library({clock, journal, faults, optics, instruments, options.Table(), refusal})
{
    SetUpTables();
}

Bench::~Bench() = default;

void Bench::SetUpTables()
{
    tables.clear();
    SetTableCount(1);
    SeatInstrument(0, instruments.SerialAt(DefaultInstruments - 1));
}

std::shared_ptr<TableUnit> Bench::TableAt(size_t index) const
{
    return index < tables.size() ? tables[index] : nullptr;
}

std::shared_ptr<UsbLine> Bench::LineAt(size_t index, std::string& serialNumber)
{
    const std::shared_ptr<TableUnit> table = TableAt(index);
    if (table == nullptr) {
        return nullptr;
    }
    serialNumber = table->UsbSerial();
    return {table, &table->GetBridge()};
}

void Bench::Configure(const std::string& source, const std::string& settings)
{
    Outcome outcome = options.SetAll(settings);
    if (outcome.Failed()) {
        refusal = {outcome.status, source + ": " + outcome.text};
    }
}

bool Bench::SetTableCount(size_t count)
{
    if (count > MostTables) {
        return false;
    }
    while (tables.size() < count) {
        tables.push_back(
            std::make_shared<TableUnit>(clock, journal, faults, std::to_string(FirstUsbSerial + tables.size())));
    }
    tables.resize(count);
    return true;
}

void Bench::SetInstrumentCount(size_t count)
{
    instruments.SetCount(count);
    for (const auto& table : tables) {
        if (instruments.FindSerial(table->seatedInstrument) == nullptr) {
            table->seatedInstrument.clear();
        }
    }
}

Carriage* Bench::CarriageOf(const std::string& instrumentSerial)
{
    for (const auto& table : tables) {
        if (!instrumentSerial.empty() && table->seatedInstrument == instrumentSerial) {
            return &table->Controller();
        }
    }
    return nullptr;
}

bool Bench::SeatInstrument(size_t tableIndex, const std::string& serial)
{
    if (tableIndex >= tables.size()) {
        return false;
    }
    for (const auto& table : tables) {
        if (table->seatedInstrument == serial) {
            table->seatedInstrument.clear();
        }
    }
    tables[tableIndex]->seatedInstrument = serial;
    return true;
}

std::string Bench::SeatedInstrument(size_t tableIndex) const
{
    return tableIndex < tables.size() ? tables[tableIndex]->seatedInstrument : std::string();
}

void Bench::Reset()
{
    faults = Faults();
    journal.Forget();
    clock.SetTimeScale(0.0);
    chart = PrintedChart();
    noise = Noise();
    instruments = InstrumentRack(DefaultInstruments);
    options.Forget();
    library.Forget();
    SetUpTables();
}

}  // namespace J4Bench
