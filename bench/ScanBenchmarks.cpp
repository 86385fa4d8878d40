// How long the tool takes to read a chart, in virtual time, against the way that the instrument is carried over its
// patches: a whole chart of a thousand patches, and the rows of a smaller one for each way of reading a row.

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <utility>

#include "chart/cgats/CgatsFields.h"
#include "chart/cgats/CgatsFile.h"
#include "tools/ChartFinder.h"
#include "tools/Library.h"
#include "tools/RowReader.h"
#include "tools/Scanner.h"
#include "tools/ToolError.h"

namespace {

/// Rows along x of square patches that touch one another.
struct ChartForm {
    size_t rows = 0;
    size_t columns = 0;
    double size = 0.0;       ///< mm
    bool pairs = false;      ///< some patches have the colour of their neighbour: recognition takes the two for one
    bool specks = false;     ///< one patch of each row has a speck
    bool spotsOnly = false;  ///< no row is scanned
};

constexpr double FirstX = 190.0;  // mm
constexpr double FirstY = 200.0;

constexpr size_t PairEvery = 10;
constexpr size_t SpeckedColumn = 5;

/// Any colour that is neither paper nor black, unlike the one before.
J4Chart::Spectrum NextColour(std::mt19937& random, const J4Chart::Spectrum& before)
{
    constexpr std::array<float, 4> levels = {0.05f, 0.15f, 0.3f, 0.5f};
    J4Chart::Spectrum colour = before;
    while (colour == before) {
        const std::array<float, 3> parts = {levels[random() % 4], levels[random() % 4], levels[random() % 4]};
        for (size_t band = 0; band < colour.size(); ++band) {
            colour[band] = parts[band * parts.size() / colour.size()];
        }
    }
    return colour;
}

J4Chart::CgatsFile ChartOf(const ChartForm& form)
{
    J4Chart::CgatsTable table;
    table.fields = {"SAMPLE_NAME", "X", "Y", "WIDTH", "HEIGHT"};
    for (size_t band = 0; band < J4Chart::SpectrumLength; ++band) {
        table.fields.push_back(J4Chart::SpectralField(band));
    }
    const std::string size = J4Chart::NumberText(form.size);
    std::mt19937 random(1);
    for (size_t row = 0; row < form.rows; ++row) {
        J4Chart::Spectrum colour{};
        for (size_t column = 0; column < form.columns; ++column) {
            if (!form.pairs || column % PairEvery != 1) {
                colour = NextColour(random, colour);
            }
            const double x = FirstX + static_cast<double>(column) * form.size;
            const double y = FirstY + static_cast<double>(row) * form.size;
            std::vector<std::string> values = {std::to_string(row) + "/" + std::to_string(column),
                                               J4Chart::NumberText(x), J4Chart::NumberText(y), size, size};
            for (const float value : colour) {
                values.push_back(J4Chart::NumberText(value));
            }
            table.rows.push_back({std::move(values)});
            if (form.specks && column == SpeckedColumn) {
                table.keywords.push_back(
                    {"SPECK", J4Chart::NumberText(x + 2.0) + " " + J4Chart::NumberText(y) + " 1.6 0.9"});
            }
        }
    }
    J4Chart::CgatsFile file;
    file.Add(std::move(table));
    return file;
}

/// Holds what failed, for the message of a benchmark that did not measure what it was made for.
class LastReason : public J4Tool::ScanListener {
public:
    void Step(const std::string&) override {}
    void Notice(const std::string&) override {}
    void Started(const J4Tool::ScanState&) override {}
    void RowBegins(const J4Tool::ScanState&, size_t, J4Tool::ReadingWay) override {}
    void RowDone(const J4Tool::ScanState&, size_t) override {}
    void RowFailed(const J4Tool::ScanState&, size_t, int, const std::string& why, bool) override { reason = why; }

    std::string reason;
};

/// What one chart took.
struct Figures {
    double look = 0.0;  ///< virtual seconds, for finding out where the chart lies
    double rows = 0.0;  ///< virtual seconds, from the calibrated instrument to the last row
    double ways = 0.0;  ///< seconds that the lengths of all rows take at scan speed
    std::array<size_t, J4Tool::WayNames.size()> patches{};  ///< by the way in which they were read
    std::string fault;
};

Figures Read(const ChartForm& form)
{
    static J4Tool::Library library(true, {});
    const std::string name = std::filesystem::temp_directory_path() / "j4tavla_scan_benchmark.cgats";
    const J4Chart::CgatsFile file = ChartOf(form);
    std::ofstream stream(name);
    stream << file.Text();
    stream.close();

    J4Tool::Session session(library.Functions());
    const auto now = [&session] { return std::stod(session.GetOption("Simulator.Clock")) / 1e6; };
    session.SetOption("Simulator.ChartFile", name);
    std::filesystem::remove(name);
    session.Calibrate();
    const J4Tool::ChartLayout layout = J4Tool::ChartLayout::Read(file, {}, false);
    const J4Tool::RowSpeed speed(J4Tool::LineScan(session).IntegrationTime(), 0);

    Figures figures;
    J4Tool::RowReader reader(session, layout);
    const J4Tool::WorkArea area = J4Tool::WorkArea::Of(session);
    const double begin = now();
    reader.Expect(J4Tool::ChartFinder(session, layout, area, speed, [](const std::string&) {}).Look());
    figures.look = now() - begin;

    LastReason listener;
    J4Tool::Scanner::Settings settings;
    J4Tool::ScanPlan::Settings ways;
    ways.spotsOnly = form.spotsOnly;
    const J4Tool::ScanPlan plan(layout, area, speed, ways);
    J4Tool::Scanner scanner(session, layout, settings, listener);
    scanner.UseReader(reader, plan);
    J4Tool::Measurements measurements(layout.Patches().size());
    const size_t failed = scanner.Run(measurements).size();
    figures.rows = now() - begin - figures.look;
    figures.fault = failed > 0 ? listener.reason : "";
    for (const auto& reading : measurements) {
        if (reading) {
            ++figures.patches[static_cast<size_t>(reading->way)];
        }
    }
    for (size_t row = 0; row < layout.Rows().size(); ++row) {
        const J4Tool::RowPlan::Pass pass = J4Tool::RowPlan::Along(layout, row, settings.margin, false);
        figures.ways += std::hypot(pass.end.x - pass.start.x, pass.end.y - pass.start.y) / J4Tool::RowSpeed::Fastest;
    }
    return figures;
}

void ReadChart(benchmark::State& state, const ChartForm& form)
{
    Figures figures;
    for (auto unused : state) {
        (void)unused;
        try {
            figures = Read(form);
        } catch (const J4Tool::ToolError& error) {
            figures.fault = error.what();
        }
    }
    if (!figures.fault.empty()) {
        state.SkipWithError(figures.fault.c_str());
        return;
    }
    const double rows = static_cast<double>(form.rows);
    state.counters["look_s"] = figures.look;
    state.counters["rows_s"] = figures.rows;
    state.counters["row_s"] = figures.rows / rows;
    state.counters["ratio_to_ways"] = figures.rows / figures.ways;
    for (size_t way = 0; way < figures.patches.size(); ++way) {
        state.counters[std::string(J4Tool::WayNames[way])] = static_cast<double>(figures.patches[way]);
    }
}

BENCHMARK_CAPTURE(ReadChart, ThousandPatches, ChartForm{.rows = 25, .columns = 40, .size = 8.0})->Iterations(1);
BENCHMARK_CAPTURE(ReadChart, Recognised, ChartForm{.rows = 10, .columns = 30, .size = 10.0})->Iterations(1);
BENCHMARK_CAPTURE(ReadChart, Fitted, ChartForm{.rows = 10, .columns = 30, .size = 10.0, .pairs = true})->Iterations(1);
BENCHMARK_CAPTURE(ReadChart, SpotOfEachRow,
                  ChartForm{.rows = 10, .columns = 30, .size = 10.0, .pairs = true, .specks = true})
    ->Iterations(1);
BENCHMARK_CAPTURE(ReadChart, Spots, ChartForm{.rows = 10, .columns = 30, .size = 10.0, .spotsOnly = true})
    ->Iterations(1);

}  // namespace
