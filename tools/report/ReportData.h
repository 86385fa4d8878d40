// Everything that the report shows, computed: the patches with their measured and reference colours, the
// differences with their figures, and the travel of the rows.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/report/ColourTable.h"
#include "tools/report/DifferenceSummary.h"
#include "tools/report/RowTravel.h"
#include "tools/report/ScreenColour.h"

namespace J4Tool {

class ReportData {
public:
    /// One of a patch's two colours.
    struct Side {
        J4Chart::Colorimetry::Triple lab{};
        ScreenColour colour;
        std::optional<J4Chart::Spectrum> spectrum;
    };

    struct Patch {
        std::string name;
        ColourTable::Place place;  ///< width along x, height along y
        Side measured;
        std::optional<Side> reference;
        std::vector<double> differences;  ///< one for each formula; empty without a reference
    };

    struct Formula {
        std::string name;
        DifferenceSummary summary;
    };

    /// A file that the report was made of.
    struct Source {
        std::string name;
        ColourTable table;
    };

    /// Patches are matched by SAMPLE_NAME, or by SAMPLE_ID where names are missing or not unique.
    /// @throws ToolError when no measured patch has a reference
    explicit ReportData(const Source& measured, const Source* reference = nullptr);

    const std::string& MeasuredName() const { return measuredName; }

    /// Empty without a reference.
    const std::string& ReferenceName() const { return referenceName; }

    /// The keywords of the measured file, in its order.
    const std::vector<std::pair<std::string, std::string>>& Conditions() const { return conditions; }

    /// What the reader has to know before trusting the figures, one sentence each.
    const std::vector<std::string>& Notices() const { return notices; }

    /// False: no file tells where the patches lie, so they are set out in the order of the file.
    bool IsPlaced() const { return placed; }

    /// In the order of the measured file.
    const std::vector<Patch>& Patches() const { return patches; }

    /// CIEDE2000 and CIE 1976; none without a reference.
    const std::vector<Formula>& Formulas() const { return formulas; }

    /// None where the files do not tell places, rows and speed.
    const std::vector<RowTravel>& Rows() const { return rows; }

private:
    void TakePatches(const ColourTable& measured, const ColourTable* reference);
    void TakePlaces(const ColourTable& measured, const std::vector<const ColourTable::Patch*>& references);
    void TakeRows(const ColourTable& measured);

    std::string measuredName;
    std::string referenceName;
    std::vector<std::pair<std::string, std::string>> conditions;
    std::vector<std::string> notices;
    bool placed = true;
    std::vector<Patch> patches;
    std::vector<Formula> formulas;
    std::vector<RowTravel> rows;
};

}  // namespace J4Tool
