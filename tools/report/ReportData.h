// Everything that the report shows, computed: the verdict, the patches with their measured and reference colours, the
// differences with their figures, tone values, how the rows were read, and their travel.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "chart/Chart.h"
#include "chart/colour/ColourDifference.h"
#include "chart/colour/DifferenceSummary.h"
#include "chart/colour/ScreenColour.h"
#include "tools/ColourFile.h"
#include "tools/judge/Judgement.h"
#include "tools/report/InkRamp.h"
#include "tools/report/RowTravel.h"

namespace J4Tool {

class ReportData {
public:
    /// One of a patch's two colours.
    struct Side {
        J4Chart::Colorimetry::Triple lab{};
        J4Chart::ScreenColour colour;
        std::optional<J4Chart::Spectrum> spectrum;  ///< not a number where the file has no such band
    };

    struct Rectangle {
        double x = 0.0;  ///< of the middle
        double y = 0.0;
        double width = 0.0;   ///< along x
        double height = 0.0;  ///< along y
    };

    struct Patch {
        std::string name;
        Rectangle place;  ///< mm
        Side measured;
        std::optional<Side> reference;
        std::optional<J4Chart::Reading> reading;
        std::optional<J4Chart::Densities> densities;  ///< as the instrument told them
        std::optional<double> repeatSpread;           ///< of several scans from their mean, CIEDE2000
        std::vector<double> differences;              ///< one for each formula; empty without a reference
        J4Chart::ColourDifference::Parts parts;
    };

    struct Formula {
        std::string name;
        J4Chart::DifferenceSummary summary;
    };

    /// The patches of a row that were read in the same way.
    struct RowReading {
        std::string row;
        size_t patches = 0;
        std::string way;            ///< for people
        size_t fewestSamples = 0;   ///< of a patch; 0 where the instrument does not tell
        double spread = 0.0;        ///< the largest of a patch
        double residual = 0.0;      ///< the largest, mm
        double repeatSpread = 0.0;  ///< the largest of a patch
    };

    /// Patches are matched by MatchPatches().
    /// @param tolerances  by which a verdict is wanted; needs a reference
    /// @throws ToolError when no measured patch has a reference
    explicit ReportData(const ColourFile& measured, const ColourFile* reference = nullptr,
                        const Tolerances* tolerances = nullptr);

    const std::string& MeasuredName() const { return measuredName; }

    /// Empty without a reference.
    const std::string& ReferenceName() const { return referenceName; }

    /// Nothing where none was wanted.
    const std::optional<Judgement>& Verdict() const { return verdict; }

    /// The keywords of the measured file, in its order.
    const std::vector<std::pair<std::string, std::string>>& Conditions() const { return conditions; }

    /// What the reader has to know before trusting the figures, one sentence each.
    const std::vector<std::string>& Notices() const { return notices; }

    /// False: no file tells where the patches lie, so they are set out in the order of the file.
    bool IsPlaced() const { return placed; }

    /// In the order of the measured file.
    const std::vector<Patch>& Patches() const { return patches; }

    /// CIEDE2000, CIE 1976, and what others the tolerances take; none without a reference.
    const std::vector<Formula>& Formulas() const { return formulas; }

    /// In the order of the inks; none where the chart has no ramps of single inks.
    const std::vector<InkRamp>& Ramps() const { return ramps; }

    /// In the order of the rows; none where the file does not tell how they were read.
    const std::vector<RowReading>& Readings() const { return readings; }

    /// None where the files do not tell places, rows and speed.
    const std::vector<RowTravel>& Rows() const { return rows; }

private:
    void TakePatches(const J4Chart::Chart& measured, const J4Chart::Chart* reference, const Tolerances* tolerances);
    void TakePlaces(const J4Chart::Chart& measured, const J4Chart::Chart* reference, const PatchMatch& references);
    void TakeRows(const J4Chart::Chart& measured);
    void TakeReadings(const J4Chart::Chart& measured);
    void TellWays();

    std::string measuredName;
    std::string referenceName;
    std::vector<std::pair<std::string, std::string>> conditions;
    std::vector<std::string> notices;
    bool placed = true;
    std::vector<Patch> patches;
    std::vector<Formula> formulas;
    std::vector<InkRamp> ramps;
    std::vector<RowReading> readings;
    std::vector<RowTravel> rows;
    std::optional<Judgement> verdict;
};

}  // namespace J4Tool
