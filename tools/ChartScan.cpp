#include "tools/ChartScan.h"

#include "tools/ColourCheck.h"
#include "tools/DensityOrder.h"
#include "tools/Plural.h"
#include "tools/Question.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

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
      measurements(layout.Patches().size()),
      partial(files.partial, layout, conditions)
{}

void ChartScan::TakeUp(RowReader& reader)
{
    measurements = MeasurementFile::Load(files.partial, layout, conditions);
    const std::string fault = OpenRows(layout, measurements).empty() ? "" : reader.Recheck(measurements);
    if (!fault.empty()) {
        throw ToolError(ExitCode::Check, "the rows of '" + files.partial + "' are not of what lies there now: " + fault,
                        "Lay the chart as it lay, with the layout and the corners as they were; or begin anew with "
                        "--restart.");
    }
    // What an interruption may have cut is put right before more is added.
    if (const std::string fault = partial.End(measurements); !fault.empty()) {
        progress.Notice(fault);
    }
}

std::string ChartScan::Advice(const std::string& first) const
{
    return first + (CountMeasured(measurements) > 0 ? "Go on with --resume." : "Nothing was measured: scan again.");
}

void ChartScan::Run()
{
    const std::vector<size_t> failed = ScanRows();
    const ScanState state = scanner.State(measurements);
    if (state.patchesDone == state.patches) {
        CheckColours();
        TellRepeats();
        TellDensities();
        WriteWhole();
        progress.Ended(state, "done", files.whole.Name());
        return;
    }
    const bool wasInterrupted = interrupted();
    EndWithPartial(wasInterrupted ? "interrupted" : "failed");
    if (wasInterrupted) {
        throw ToolError(ExitCode::Interrupted, "the scan was interrupted", Advice(""));
    }
    throw ToolError(ExitCode::Check, Plural(failed.size(), "row") + " failed in every attempt: " + Names(failed),
                    Advice("Look at the reasons above, at the chart's place and at --margin. "));
}

std::vector<size_t> ChartScan::ScanRows()
{
    scanner.stop = interrupted;
    std::string lastFault;
    scanner.keep = [&](size_t row) {
        const std::string fault = partial.Add(layout.Rows()[row], measurements);
        if (!fault.empty() && fault != lastFault) {
            progress.Notice(fault + "; the scan goes on, and the next row tries again");
        }
        lastFault = fault;
    };
    try {
        std::vector<size_t> failed = scanner.Run(measurements);
        session.Release();
        return failed;
    } catch (const ToolError& error) {
        session.Release();
        EndWithPartial(error.code == ExitCode::Interrupted ? "interrupted" : "failed");
        if (error.code == ExitCode::Interrupted) {
            throw ToolError(ExitCode::Interrupted, "the scan was interrupted", Advice(""));
        }
        throw;
    } catch (...) {
        session.Release();
        EndWithPartial("failed");
        throw;
    }
}

void ChartScan::CheckColours()
{
    const ColourCheck check(layout, measurements);
    if (!check.CanTellCharts()) {
        progress.Notice(
            "the layout tells no colours, or too few that differ: whether the chart lies the right way round "
            "can't be seen");
    }
    if (const std::string fault = check.Fault(); !fault.empty()) {
        EndWithPartial("failed");
        throw ToolError(
            ExitCode::Check, fault,
            "Look whether it is the chart of the layout and lies where the layout says, and scan again with "
            "--align --restart; or scan by a layout without colours and device values.");
    }
    if (check.HasColours()) {
        progress.Differences(check.Summary(), check.Words());
    }
}

void ChartScan::TellDensities()
{
    if (const std::string doubt = DensityOrderDoubt(measurements); !doubt.empty()) {
        progress.Notice(doubt);
    }
}

void ChartScan::TellRepeats()
{
    const size_t repeats = scanner.State(measurements).repeats;
    if (repeats > 1) {
        std::vector<double> spreads;
        for (const auto& reading : measurements) {
            spreads.push_back(reading->repeatSpread);
        }
        progress.Repeats(repeats, J4Chart::DifferenceSummary(spreads));
    }
}

void ChartScan::WriteWhole()
{
    try {
        const std::string text = MeasurementFile::Text(layout, measurements, conditions, files.form);
        for (bool isWritten = false; !isWritten;) {
            isWritten = WriteOrAsk(text);
        }
    } catch (ToolError& error) {
        EndWithPartial("failed");
        error.advice += " All patches are measured: with --resume only the file is written.";
        throw;
    } catch (...) {
        EndWithPartial("failed");
        throw;
    }
    partial.Remove();
}

/// @return false when the person named another place, which may be a better one
bool ChartScan::WriteOrAsk(const std::string& text)
{
    try {
        files.whole.Write(text);
        return true;
    } catch (const ToolError& error) {
        std::string reason = error.what();
        for (;;) {
            const std::string name =
                AskText(reason + "\nName another file for the measurement, or nothing to give up:");
            if (name.empty()) {
                throw;
            }
            try {
                files.whole = OutputFile(name, false, {});
                return false;
            } catch (const ToolError& refusal) {
                reason = refusal.what();
            }
        }
    }
}

void ChartScan::EndWithPartial(const char* result)
{
    if (const std::string fault = partial.End(measurements); !fault.empty()) {
        progress.Notice(fault);
    }
    progress.Ended(scanner.State(measurements), result, CountMeasured(measurements) > 0 ? files.partial : "");
}

}  // namespace J4Tool
