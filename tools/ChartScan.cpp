#include "tools/ChartScan.h"

#include <chrono>
#include <filesystem>

#include "tools/AtomicFile.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

/// A power cut must not cost more than this; each write costs a moment of the table's time.
constexpr std::chrono::seconds KeepEvery{10};

std::string Names(const std::vector<size_t>& rows)
{
    std::string names;
    for (const size_t row : rows) {
        names += (names.empty() ? "" : ", ") + std::to_string(row + 1);
    }
    return names;
}

}  // namespace

ChartScan::ChartScan(Session& session, const ChartLayout& layout, const Scanner::Settings& settings,
                     const MeasurementFile::Conditions& conditions, const Files& files, Progress& progress)
    : session(session),
      layout(layout),
      conditions(conditions),
      files(files),
      progress(progress),
      scanner(session, layout, settings, progress),
      measurements(layout.Patches().size())
{}

void ChartScan::TakeUp() { measurements = MeasurementFile::Load(files.partial, layout, conditions); }

void ChartScan::Run()
{
    const std::vector<size_t> failed = ScanRows();
    const ScanState state = scanner.State(measurements);
    if (state.patchesDone == state.patches) {
        WriteWhole();
        progress.Ended(state, "done", files.whole);
        return;
    }
    const bool wasInterrupted = interrupted();
    EndWithPartial(wasInterrupted ? "interrupted" : "failed");
    if (wasInterrupted) {
        throw ToolError(ExitCode::Interrupted, "the scan was interrupted", "Go on with --resume.");
    }
    throw ToolError(ExitCode::Check, std::to_string(failed.size()) + " rows failed in every attempt: " + Names(failed),
                    "Look at the reasons above, at the chart's place and at --margin, then go on with --resume.");
}

std::vector<size_t> ChartScan::ScanRows()
{
    scanner.stop = interrupted;
    auto lastKept = std::chrono::steady_clock::now();
    scanner.keep = [&] {
        if (std::chrono::steady_clock::now() - lastKept >= KeepEvery) {
            WritePartial();
            lastKept = std::chrono::steady_clock::now();
        }
    };
    try {
        std::vector<size_t> failed = scanner.Run(measurements);
        session.Release();
        return failed;
    } catch (...) {
        session.Release();
        EndWithPartial("failed");
        throw;
    }
}

void ChartScan::WritePartial()
{
    if (CountMeasured(measurements) > 0) {
        WriteAtomically(files.partial,
                        MeasurementFile::Text(layout, measurements, conditions, MeasurementFile::Form::Cgats));
    }
}

void ChartScan::WriteWhole()
{
    try {
        WriteAtomically(files.whole, MeasurementFile::Text(layout, measurements, conditions, files.form));
    } catch (...) {
        WritePartial();
        throw;
    }
    std::error_code ignored;
    std::filesystem::remove(files.partial, ignored);
}

void ChartScan::EndWithPartial(const char* result)
{
    WritePartial();
    progress.Ended(scanner.State(measurements), result, CountMeasured(measurements) > 0 ? files.partial : "");
}

}  // namespace J4Tool
