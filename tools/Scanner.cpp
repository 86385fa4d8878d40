#include "tools/Scanner.h"

#include <algorithm>

#include "tools/StatusTable.h"
#include "tools/ToolError.h"

namespace J4Tool {

ScanState Scanner::State(const Measurements& measurements) const
{
    const size_t rows = layout.Rows().size();
    return {rows - OpenRows(layout, measurements).size(), rows, CountMeasured(measurements), layout.Patches().size()};
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

bool Scanner::ScanRow(const RowPlan::Pass& pass, Measurements& measurements)
{
    const ChartLayout::Row& patches = layout.Rows()[pass.row];
    const std::vector<ReadingWay> ways = Ways(pass.row);
    Readings readings;
    int attempt = 0;
    for (const ReadingWay way : ways) {
        listener.RowBegins(State(measurements), pass.row, way);
        for (int tries = 0;; ++tries) {
            const std::string fault = Attempt(way, pass, readings);
            if (fault.empty()) {
                for (size_t i = 0; i < patches.size(); ++i) {
                    measurements[patches[i]] = readings[i];
                }
                return true;
            }
            // Another way finds more than the same way again.
            const bool sameAgain = way == ways.back() && tries < settings.retries;
            const bool again = (sameAgain || way != ways.back()) && !stop();
            listener.RowFailed(State(measurements), pass.row, ++attempt, fault, again);
            if (!again) {
                return false;
            }
            if (!sameAgain) {
                break;
            }
        }
    }
    return false;
}

std::string Scanner::Attempt(ReadingWay way, const RowPlan::Pass& pass, Readings& readings)
{
    try {
        switch (way) {
        case ReadingWay::Recognised:
            return Recognise(pass, readings);
        case ReadingWay::Fitted:
            return reader->Fit(pass, plan->Rows()[pass.row].fitSpeed, readings);
        case ReadingWay::Spot:
            return reader->Measure(pass.row, readings);
        }
    } catch (const ToolError& error) {
        // A fault of the moment may pass; a table that is gone or a row that can't be reached will not.
        if (error.status == 0 || error.code == ExitCode::Refused || !FindStatus(error.status).mayPass) {
            throw;
        }
        return error.what();
    }
    return {};
}

std::string Scanner::Recognise(const RowPlan::Pass& pass, Readings& readings)
{
    if (reader != nullptr) {
        reader->PrepareRecognition(plan->Rows()[pass.row].speed);
    }
    std::vector<Session::Spectrum> spectra = session.Scan(pass.start, pass.end);
    if (pass.reversed) {
        std::reverse(spectra.begin(), spectra.end());
    }
    std::string fault = check.Fault(pass.row, spectra);
    if (fault.empty()) {
        fault = check.Doubt(pass.row, spectra);
    }
    if (fault.empty()) {
        readings.clear();
        for (const Session::Spectrum& spectrum : spectra) {
            readings.push_back(PatchReading{spectrum, ReadingWay::Recognised, 0, 0.0, 0.0});
        }
    }
    return fault;
}

}  // namespace J4Tool
