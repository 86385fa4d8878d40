// Scans a chart into its file. Whatever ends the scan before every patch is measured, the table is let go and the rows
// that are good stay in the partial file, from which another scan goes on.
#pragma once

#include <functional>
#include <string>

#include "tools/MeasurementFile.h"
#include "tools/Measurements.h"
#include "tools/OutputFile.h"
#include "tools/PartialFile.h"
#include "tools/Progress.h"
#include "tools/Scanner.h"

namespace J4Tool {

class ChartScan {
public:
    struct Files {
        OutputFile whole;
        MeasurementFile::Form form = MeasurementFile::Form::Cgats;
        std::string partial;
    };

    ChartScan(Session& session, const ChartLayout& layout, const Scanner::Settings& settings,
              const MeasurementFile::Conditions& conditions, const Files& files, Progress& progress);

    /// Is asked before each travel: true ends the scan.
    std::function<bool()> interrupted = [] { return false; };

    /// Reads what the instrument's own recognition can't tell; without it such rows fail.
    void UseReader(RowReader& reader, const ScanPlan& plan) { scanner.UseReader(reader, plan); }

    /// Takes up the rows of the partial file.
    /// @param reader  measures a few of their patches again
    /// @throws ToolError when it was measured of another chart, or otherwise
    void TakeUp(RowReader& reader);

    /// @throws ToolError unless the whole chart is measured and written
    void Run();

    const Measurements& Measured() const { return measurements; }

private:
    std::vector<size_t> ScanRows();
    void CheckColours();
    void TellRepeats();
    void TellDensities();
    void WriteWhole();
    bool WriteOrAsk(const std::string& text);
    void EndWithPartial(const char* result);

    /// What to do after a scan that was not finished.
    std::string Advice(const std::string& first) const;

    Session& session;
    const ChartLayout& layout;
    MeasurementFile::Conditions conditions;
    Files files;
    Progress& progress;
    Scanner scanner;
    Measurements measurements;
    PartialFile partial;
};

}  // namespace J4Tool
