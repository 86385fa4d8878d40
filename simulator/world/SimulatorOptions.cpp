#include "simulator/world/SimulatorOptions.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "Utilities/Tools/FilePath.h"
#include "chart/cgats/CgatsError.h"
#include "simulator/ground/TextList.h"
#include "simulator/world/Bench.h"
#include "src/TableFacts.h"

namespace J4Bench {

using Kestrelon::Utilities::Tools::NameOf;
using Kestrelon::Utilities::Tools::PathOf;

namespace {

using Kestrelon::DeviceDriver::J4T::MostTables;

constexpr int64_t NumberLimit = std::numeric_limits<int32_t>::max();

// A chart that is moved farther lies on no bed.
constexpr double LargestShift = 1000.0;  // mm
constexpr double LargestTurn = 360.0;    // degrees

/// The value that ends the use of a file.
constexpr const char* NoFile = "none";

/// The pieces between single separators; a double one is one character of a piece. Empty pieces are left out.
std::vector<std::string> Pieces(const std::string& text, char separator)
{
    std::vector<std::string> pieces;
    std::string piece;
    const auto end = [&] {
        if (!piece.empty()) {
            pieces.push_back(std::exchange(piece, {}));
        }
    };
    for (size_t i = 0; i < text.size(); ++i) {
        const bool isDouble = text[i] == separator && i + 1 < text.size() && text[i + 1] == separator;
        if (text[i] == separator && !isDouble) {
            end();
        } else {
            piece += text[i];
            i += isDouble ? 1 : 0;
        }
    }
    end();
    return pieces;
}

}  // namespace

SimulatorOptions::SimulatorOptions(Bench& bench) : bench(bench)
{
    AddWorld();
    AddFaults();
}

void SimulatorOptions::AddWorld()
{
    table.Add({"Simulator.Help", "the list of these options", {}, [this] { return table.Help(); }});
    table.Add({"Simulator.ChartFile", "CGATS.17 file with layout of the chart on the bed",
               [this](const std::string& text) { return LoadChart(text); }, [this] { return chartFile; }});
    table.Add({"Simulator.ChartPage", "which page of a chart that has pages; 0: the first",
               [this](const std::string& text) { return TurnTo(text); }, [this] { return std::to_string(chartPage); }});
    table.Add({"Simulator.ChartOffset",
               "\"dx dy degrees\" by which the chart lies wrong: millimetres, then turned from x towards y",
               [this](const std::string& text) { return MoveChart(text); }, [this] { return ChartMoved(); }});
    table.Add({"Simulator.TimeScale", "0: nothing waits; 1: real pace; 2: half speed",
               [this](const std::string& text) {
                   return OptionTable::ReadReal(text, 0.0, 1000.0,
                                                [this](double scale) { bench.Clock().SetTimeScale(scale); });
               },
               [this] { return OptionTable::WriteReal(bench.Clock().TimeScale()); }});
    table.Add({"Simulator.Noise", "standard deviation of a measured reflectance; 0: none",
               [this](const std::string& text) {
                   return OptionTable::ReadReal(text, 0.0, 1.0,
                                                [this](double deviation) { bench.GetNoise().SetDeviation(deviation); });
               },
               [this] { return OptionTable::WriteReal(bench.GetNoise().Deviation()); }});
    table.Add({"Simulator.NoiseSeed", "starts the noise anew from this number",
               [this](const std::string& text) {
                   return OptionTable::ReadInteger(text, 0, NumberLimit, [this](int64_t seed) {
                       bench.GetNoise().SetSeed(static_cast<uint32_t>(seed));
                   });
               },
               [this] { return std::to_string(bench.GetNoise().Seed()); }});
    table.Add({"Simulator.Tables", "number of tables, 0 to 127; new tables have an empty seat",
               [this](const std::string& text) {
                   return OptionTable::ReadInteger(
                       text, 0, MostTables, [this](int64_t count) { bench.SetTableCount(static_cast<size_t>(count)); });
               },
               [this] { return std::to_string(bench.TableCount()); }});
    table.Add(
        {"Simulator.StateFile",
         "file in which the first table keeps position, counters and flash for the next program; \"none\": nowhere",
         [this](const std::string& text) { return KeepState(text); }, [this] { return KeptState(); }});
    table.Add({"Simulator.Instruments", "number of instruments, 0 to 128",
               [this](const std::string& text) {
                   return OptionTable::ReadInteger(text, 0, InstrumentRack::MaximumInstruments, [this](int64_t count) {
                       bench.SetInstrumentCount(static_cast<size_t>(count));
                   });
               },
               [this] { return std::to_string(bench.Instruments().Count()); }});
    table.Add({"Simulator.SeatedInstrument",
               "serial number of the instrument in the first table, or \"none\"; more tables follow behind \";\"",
               [this](const std::string& text) { return Seat(text); }, [this] { return Seated(); }});
    table.Add({"Simulator.Journal", "yes, no: records calls and wire traffic; reading gives the record and empties it",
               [this](const std::string& text) {
                   return OptionTable::ReadSwitch(text, [this](bool on) { bench.GetJournal().Enable(on); });
               },
               [this] { return bench.GetJournal().Take(); }});
    table.Add({"Simulator.TraceFile", "file that gets a line of JSON for each call and frame; \"none\" ends it",
               [this](const std::string& text) { return TraceTo(text); },
               [this] { return bench.GetJournal().Tracing() ? traceFile : std::string(); }});
    table.Add({"Simulator.Clock", "virtual time in microseconds", {}, [this] {
                   return std::to_string(bench.Clock().Now());
               }});
    table.Add({"Simulator.Reset",
               "yes: the whole bench as at power-on, registered handlers stay",
               [this](const std::string& text) {
                   return OptionTable::ReadSwitch(text, [this](bool on) {
                       if (on) {
                           bench.Reset();
                       }
                   });
               },
               {}});
}

void SimulatorOptions::AddFaults()
{
    Faults& faults = bench.GetFaults();
    table.AddSwitch("Simulator.TableUnplugged", "the USB cables of the tables are pulled out", faults.tableUnplugged);
    table.Add({"Simulator.UnplugAfterTransfers", "the cables come out after so many USB transfers; -1: never",
               [&faults](const std::string& text) {
                   return OptionTable::ReadInteger(text, -1, NumberLimit,
                                                   [&faults](int64_t count) { faults.unplugAfterTransfers = count; });
               },
               [&faults] { return std::to_string(faults.unplugAfterTransfers); }});
    table.Add({"Simulator.PowerCutAfterFlashSteps",
               "the table loses its power within the next step of a flash write but so many; -1: never",
               [&faults](const std::string& text) {
                   return OptionTable::ReadInteger(
                       text, -1, NumberLimit, [&faults](int64_t count) { faults.powerCutAfterFlashSteps = count; });
               },
               [&faults] { return std::to_string(faults.powerCutAfterFlashSteps); }});
    table.AddSwitch("Simulator.TableSilent", "the tables take commands and answer nothing", faults.tableSilent);
    table.AddSwitch("Simulator.TableBusy", "the tables answer every command with \"busy\"", faults.tableBusy);
    table.AddSwitch("Simulator.PositionNotReached", "moves end with an error", faults.positionNotReached);
    table.Add({"Simulator.CorruptReplies", "so many of the tables' next replies are damaged",
               [&faults](const std::string& text) {
                   return OptionTable::ReadInteger(text, 0, NumberLimit, [&faults](int64_t count) {
                       faults.corruptReplies = static_cast<int32_t>(count);
                   });
               },
               [&faults] { return std::to_string(faults.corruptReplies); }});
    table.AddSwitch("Simulator.DirtyTile", "a spot lies on the white tile beside its middle", faults.dirtyTile);
    table.AddSwitch("Simulator.InstrumentLoose", "the instrument does not sit tight: a fifth of the light is lost",
                    faults.instrumentLoose);
    table.Add({"Simulator.Drift", "relative change of all readings per minute of virtual time since the calibration",
               [&faults](const std::string& text) {
                   return OptionTable::ReadReal(text, -1.0, 1.0, [&faults](double drift) { faults.drift = drift; });
               },
               [&faults] { return OptionTable::WriteReal(faults.drift); }});
    table.Add({"Simulator.Unplug", "serial number of an instrument that goes off the bus; \"none\": all come back",
               [this](const std::string& text) { return Unplug(text); },
               [this] { return bench.Instruments().UnpluggedSerials(); }});
    table.AddSwitch("Simulator.ErrorHandlerCalls", "the library also calls the registered error handler",
                    faults.errorHandlerCalls);
}

Outcome SimulatorOptions::SetAll(const std::string& settings)
{
    for (const std::string& setting : Pieces(settings, ';')) {
        const size_t equals = setting.find('=');
        if (equals == std::string::npos) {
            return Refuse(setting, "of the form KEY=VALUE");
        }
        if (Outcome outcome = table.Set(setting.substr(0, equals), setting.substr(equals + 1)); outcome.Failed()) {
            return outcome;
        }
    }
    return {};
}

Outcome SimulatorOptions::LoadChart(const std::string& fileName)
{
    try {
        PrintedChart chart =
            PrintedChart::Load(fileName, chartPage > 0 ? std::optional(static_cast<size_t>(chartPage)) : std::nullopt);
        chart.SetOffset(bench.GetChart().Offset());
        bench.GetChart() = std::move(chart);
    } catch (const J4Chart::CgatsError& error) {
        return {Status::InvalidValue, "Chart file '" + fileName + "': " + error.what() + "."};
    }
    chartFile = fileName;
    return {};
}

Outcome SimulatorOptions::TurnTo(const std::string& text)
{
    constexpr int64_t mostPages = 99999;
    const int64_t before = chartPage;
    Outcome outcome = OptionTable::ReadInteger(text, 0, mostPages, [this](int64_t page) { chartPage = page; });
    if (!outcome.Failed() && !chartFile.empty()) {
        outcome = LoadChart(chartFile);
    }
    chartPage = outcome.Failed() ? before : chartPage;
    return outcome;
}

Outcome SimulatorOptions::KeepState(const std::string& fileName)
{
    const std::shared_ptr<TableUnit> first = bench.TableAt(0);
    if (first == nullptr) {
        return {Status::InvalidValue, "There is no table."};
    }
    const std::string name = fileName == NoFile ? "" : fileName;
    try {
        first->Controller().KeepIn(PathOf(name));
    } catch (const std::exception& error) {
        return {Status::InvalidValue, "The table's state can't be kept in '" + fileName + "': " + error.what()};
    }
    return {};
}

std::string SimulatorOptions::KeptState() const
{
    const std::shared_ptr<TableUnit> first = bench.TableAt(0);
    return first == nullptr ? std::string() : NameOf(first->Controller().KeptIn());
}

Outcome SimulatorOptions::TraceTo(const std::string& fileName)
{
    const std::string name = fileName == NoFile ? "" : fileName;
    if (!bench.GetJournal().TraceTo(PathOf(name))) {
        return {Status::InvalidValue, "The trace can't be written to '" + fileName + "'."};
    }
    traceFile = name;
    return {};
}

Outcome SimulatorOptions::MoveChart(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<double> numbers;
    for (std::string word; stream >> word;) {
        const double largest = numbers.size() < 2 ? LargestShift : LargestTurn;
        const Outcome outcome =
            OptionTable::ReadReal(word, -largest, largest, [&numbers](double number) { numbers.push_back(number); });
        if (outcome.Failed()) {
            return outcome;
        }
    }
    if (numbers.size() != 3) {
        return Refuse(text, "an offset \"dx dy degrees\"");
    }
    bench.GetChart().SetOffset({{numbers[0] * TenthsPerMillimetre, numbers[1] * TenthsPerMillimetre}, numbers[2]});
    return {};
}

std::string SimulatorOptions::ChartMoved() const
{
    const ChartOffset& offset = bench.GetChart().Offset();
    return OptionTable::WriteReal(offset.shift.x / TenthsPerMillimetre) + " " +
           OptionTable::WriteReal(offset.shift.y / TenthsPerMillimetre) + " " + OptionTable::WriteReal(offset.degrees);
}

Outcome SimulatorOptions::Seat(const std::string& list)
{
    std::vector<std::string> serials;
    std::istringstream stream(list);
    for (std::string serial; std::getline(stream, serial, ';');) {
        if (serial == "none") {
            serial.clear();
        } else if (bench.Instruments().FindSerial(serial) == nullptr) {
            return {Status::InvalidValue, "There is no instrument with the serial number '" + serial + "'."};
        } else if (std::find(serials.begin(), serials.end(), serial) != serials.end()) {
            return {Status::InvalidValue, "Instrument " + serial + " can't sit in two tables."};
        }
        serials.push_back(serial);
    }
    if (serials.size() > bench.TableCount()) {
        return {Status::InvalidValue, "There are only " + std::to_string(bench.TableCount()) + " tables."};
    }
    for (size_t table = 0; table < bench.TableCount(); ++table) {
        bench.SeatInstrument(table, {});
    }
    for (size_t table = 0; table < serials.size(); ++table) {
        if (!serials[table].empty()) {
            bench.SeatInstrument(table, serials[table]);
        }
    }
    return {};
}

std::string SimulatorOptions::Seated() const
{
    std::string list;
    for (size_t table = 0; table < bench.TableCount(); ++table) {
        const std::string serial = bench.SeatedInstrument(table);
        AppendToList(list, serial.empty() ? "none" : serial, ';');
    }
    return list;
}

Outcome SimulatorOptions::Unplug(const std::string& serial)
{
    if (serial == "none") {
        bench.Instruments().PlugAll();
        return {};
    }
    Instrument* const instrument = bench.Instruments().FindSerial(serial);
    if (instrument == nullptr) {
        return {Status::InvalidValue, "There is no instrument with the serial number '" + serial + "'."};
    }
    bench.Instruments().Unplug(*instrument);
    return {};
}

}  // namespace J4Bench
