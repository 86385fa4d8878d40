#include "tools/Scanner.h"

#include <algorithm>
#include <cmath>

#include "tools/RepeatedReading.h"
#include "tools/StatusTable.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {}  // namespace

ScanState Scanner::State(const Measurements& measurements) const
{
    const size_t rows = layout.Rows().size();
    return {rows - OpenRows(layout, measurements).size(),
            rows,
            CountMeasured(measurements),
            layout.Patches().size(),
            1,
            settings.repeats};
}

std::vector<size_t> Scanner::Run(Measurements& measurements)
{
    listener.Started(State(measurements));
    const RowPlan order(layout, settings.margin, session.Position(), settings.bothWays, OpenRows(layout, measurements));
    std::vector<size_t> failed;
    for (const RowPlan::Pass& pass : order.Passes()) {
        if (stop()) {
            break;
        }
        if (ScanRow(pass, measurements)) {
            keep(pass.row);
            listener.RowDone(State(measurements), pass.row);
        } else if (!stop()) {
            failed.push_back(pass.row);
        }
    }
    return failed;
}

std::vector<ReadingWay> Scanner::Ways(size_t row) const
{
    return plan == nullptr ? std::vector{ReadingWay::Recognised} : plan->Rows()[row].ways;
}

RowPlan::Pass Scanner::Along(size_t row, bool reversed) const
{
    return RowPlan::Along(layout, row, settings.margin, reversed);
}

RowPlan::Pass Scanner::FromHere(const RowPlan::Pass& pass) const
{
    // A row that was tried in several ways, or several times, may have left the arm at its other end.
    const bool isTurned = settings.bothWays && here && Distance(*here, pass.end) < Distance(*here, pass.start);
    return isTurned ? Along(pass.row, !pass.reversed) : pass;
}

bool Scanner::ScanRow(const RowPlan::Pass& planned, Measurements& measurements)
{
    const ChartLayout::Row& patches = layout.Rows()[planned.row];
    std::vector<std::vector<PatchReading>> all(patches.size());
    ScanState state = State(measurements);
    for (state.repeat = 1; state.repeat <= settings.repeats; ++state.repeat) {
        Readings readings;
        if ((state.repeat > 1 && stop()) || !ReadRow(FromHere(planned), state, readings)) {
            return false;
        }
        for (size_t i = 0; i < patches.size(); ++i) {
            all[i].push_back(*readings[i]);
        }
    }
    for (size_t i = 0; i < patches.size(); ++i) {
        measurements[patches[i]] = AverageOf(all[i]);
    }
    return true;
}

bool Scanner::ReadRow(RowPlan::Pass pass, const ScanState& state, Readings& readings)
{
    const std::vector<ReadingWay> ways = Ways(pass.row);
    int attempt = 0;
    for (const ReadingWay way : ways) {
        listener.RowBegins(state, pass.row, way);
        for (int tries = 0;; ++tries) {
            const std::string fault = Attempt(way, pass, readings);
            here = pass.end;
            if (fault.empty()) {
                return true;
            }
            // Another way finds more than the same way again.
            const bool sameAgain = way == ways.back() && tries < settings.retries;
            const bool again = (sameAgain || way != ways.back()) && !stop();
            listener.RowFailed(state, pass.row, ++attempt, fault, again);
            if (!again) {
                return false;
            }
            if (!sameAgain) {
                // The arm stands at the row's other end now.
                if (settings.bothWays && way != ReadingWay::Spot) {
                    pass = Along(pass.row, !pass.reversed);
                }
                break;
            }
        }
    }
    return false;
}

std::string Scanner::Attempt(ReadingWay way, const RowPlan::Pass& pass, Readings& readings)
{
    try {
        std::string fault;
        switch (way) {
        case ReadingWay::Recognised:
            fault = Recognise(pass, readings);
            break;
        case ReadingWay::Fitted:
            fault = reader->Fit(pass, plan->Rows()[pass.row].fitSpeed, readings);
            break;
        case ReadingWay::Spot:
            return reader->Measure(pass.row, readings);
        }
        const bool canConfirm = reader != nullptr && plan->Rows()[pass.row].ways.back() == ReadingWay::Spot;
        return fault.empty() && canConfirm ? reader->Confirm(pass, readings) : fault;
    } catch (const ToolError& error) {
        // A fault of the moment may pass; a table that is gone or a row that can't be reached will not.
        if (error.status == 0 || error.code == ExitCode::Refused || !FindStatus(error.status).mayPass) {
            throw;
        }
        return error.what();
    }
}

std::string Scanner::Recognise(const RowPlan::Pass& pass, Readings& readings)
{
    if (reader != nullptr) {
        reader->PrepareRecognition(plan->Rows()[pass.row].speed);
    }
    std::vector<Session::Spectrum> spectra = session.Scan(pass.start, pass.end);
    std::vector<J4Chart::Densities> densities = session.SampleDensities();
    if (pass.reversed) {
        std::reverse(spectra.begin(), spectra.end());
        std::reverse(densities.begin(), densities.end());
    }
    std::string fault = check.Fault(pass.row, spectra);
    if (fault.empty()) {
        fault = check.Doubt(pass.row, spectra);
    }
    if (fault.empty()) {
        readings.clear();
        for (size_t i = 0; i < spectra.size(); ++i) {
            readings.push_back(PatchReading{spectra[i], ReadingWay::Recognised, 0, 0.0, 0.0, 0.0});
            if (!densities.empty()) {
                readings.back()->densities = densities[i];
            }
        }
    }
    return fault;
}

}  // namespace J4Tool
