// Everything that the page of many measurements of a chart shows, computed: the figures and rules over time with their
// control limits, the patches that are farthest from their reference, and the tone values.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "chart/colour/ScreenColour.h"
#include "tools/ColourFile.h"
#include "tools/judge/Tolerances.h"
#include "tools/series/ControlLimits.h"
#include "tools/series/MeasurementSeries.h"

namespace J4Tool {

class TrendData {
public:
    struct Measurement {
        std::string name;                 ///< of its file, without folders
        std::string date;                 ///< as the file tells it; may be empty
        std::optional<std::time_t> time;  ///< of the same, where it can be read
        std::string verdict;              ///< "pass", "fail" or "not judged"; empty without tolerances
    };

    /// One figure, or one limit of a rule, over the measurements.
    struct Curve {
        std::string name;                           ///< of the rule
        std::string what;                           ///< for instance "CIEDE2000, mean"
        size_t patches = 0;                         ///< that it is of
        std::optional<double> limit;                ///< of the tolerances
        std::string limitText;                      ///< the same, for people; empty where there is none
        std::string lastText;                       ///< the last value, for people
        std::vector<std::optional<double>> values;  ///< one for each measurement
        std::optional<ControlLimits> control;       ///< differences don't fall below 0, nor does the lower limit
        std::vector<size_t> outside;                ///< measurements beyond the control limits
    };

    /// The tone value increase of one ink in all measurements.
    struct Tones {
        std::string ink;
        std::string light;                                          ///< of which the tone values were taken last
        bool sameLight = true;                                      ///< false: others were taken of another
        std::vector<double> nominal;                                ///< tone values of the steps, percent
        std::vector<std::vector<std::optional<double>>> increases;  ///< one list for each measurement, percent
        std::vector<std::optional<double>> reference;  ///< the same of the reference; empty without its ramp
    };

    struct PatchCurve {
        std::string name;
        J4Chart::ScreenColour reference;
        J4Chart::ScreenColour last;  ///< as it was measured last
        std::vector<double> values;  ///< CIEDE2000, one for each measurement
    };

    /// @param series      two measurements at least; they are put in the order of time where all tell it
    /// @param tolerances  nullptr for none
    /// @param baseline    of how many measurements, from the first on, the control limits are made; two or more
    /// @throws ToolError when no patch has a reference
    TrendData(const MeasurementSeries& series, const ColourFile& reference, const Tolerances* tolerances,
              size_t baseline);

    const std::string& ReferenceName() const { return referenceName; }
    size_t PatchCount() const { return patchCount; }

    /// How many measurements the control limits are of.
    size_t Baseline() const { return baseline; }

    /// What the reader has to know, one sentence each.
    const std::vector<std::string>& Notices() const { return notices; }

    /// True when the measurements have dates and are in their order; else they are as they were given.
    bool IsDated() const { return dated; }

    const std::vector<Measurement>& Measurements() const { return measurements; }

    /// The usual figures, then the rules of the tolerances.
    const std::vector<Curve>& Curves() const { return curves; }

    /// Those that were once the farthest from their reference, the farthest first; twelve at most.
    const std::vector<PatchCurve>& Worst() const { return worst; }

    /// In the order of the inks; none where device values tell no ramps of single inks.
    const std::vector<Tones>& Ramps() const { return ramps; }

private:
    /// @return the measurements of the series in the order in which they are shown
    std::vector<size_t> TakeMeasurements(const MeasurementSeries& series);
    void TakeCurves(const std::vector<const J4Chart::Chart*>& charts, const J4Chart::Chart& reference,
                    const Tolerances& rules, bool haveLimits);
    void TakeWorst(const std::vector<const J4Chart::Chart*>& charts, const J4Chart::Chart& reference);
    void TakeRamps(const std::vector<const J4Chart::Chart*>& charts, const J4Chart::Chart& reference);
    void FindOutside(Curve& curve) const;
    void TellLimitsOfNoWidth();

    std::string referenceName;
    size_t patchCount = 0;
    size_t baseline = 0;
    bool dated = false;
    std::vector<std::string> notices;
    std::vector<Measurement> measurements;
    std::vector<Curve> curves;
    std::vector<PatchCurve> worst;
    std::vector<Tones> ramps;
};

}  // namespace J4Tool
