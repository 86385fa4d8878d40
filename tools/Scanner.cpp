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
    const RowPlan plan(layout, settings.margin, session.Position(), settings.bothWays, OpenRows(layout, measurements));
    std::vector<size_t> failed;
    for (const RowPlan::Pass& pass : plan.Passes()) {
        if (stop()) {
            break;
        }
        if (ScanRow(pass, measurements)) {
            listener.RowDone(State(measurements), pass.row);
            keep();
        } else if (!stop()) {
            failed.push_back(pass.row);
        }
    }
    return failed;
}

bool Scanner::ScanRow(const RowPlan::Pass& pass, Measurements& measurements)
{
    for (int attempt = 1;; ++attempt) {
        const std::string fault = Attempt(pass, measurements);
        if (fault.empty()) {
            return true;
        }
        const bool again = attempt <= settings.retries && !stop();
        listener.RowFailed(State(measurements), pass.row, attempt, fault, again);
        if (!again) {
            return false;
        }
    }
}

std::string Scanner::Attempt(const RowPlan::Pass& pass, Measurements& measurements)
{
    std::vector<Session::Spectrum> spectra;
    try {
        spectra = session.Scan(pass.start, pass.end);
    } catch (const ToolError& error) {
        // A fault of the moment may pass; a table that is gone or a row that can't be reached will not.
        if (error.status == 0 || !FindStatus(error.status).mayPass) {
            throw;
        }
        return error.what();
    }
    if (pass.reversed) {
        std::reverse(spectra.begin(), spectra.end());
    }
    const std::string fault = check.Fault(pass.row, spectra);
    if (fault.empty()) {
        const ChartLayout::Row& patches = layout.Rows()[pass.row];
        for (size_t i = 0; i < patches.size(); ++i) {
            measurements[patches[i]] = spectra[i];
        }
    }
    return fault;
}

}  // namespace J4Tool
