#include "tools/judge/Judgement.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "chart/DeviceValues.h"
#include "chart/colour/DifferenceSummary.h"
#include "tools/ColourFile.h"
#include "tools/FixedText.h"
#include "tools/Plural.h"
#include "tools/Rounding.h"

namespace J4Tool {

namespace {

using J4Chart::Chart;
using J4Chart::DeviceValues;
using J4Chart::Colorimetry::Triple;

constexpr double none = std::numeric_limits<double>::quiet_NaN();

/// Both charts, made ready to be asked rule by rule.
class Pair {
public:
    Pair(const Chart& measured, const Chart& reference)
        : measured(measured),
          reference(reference),
          match(MatchPatches(measured, reference)),
          measuredValues(measured),
          referenceValues(reference),
          isMeasured(reference.patches.size())
    {
        for (const J4Chart::Patch& patch : reference.patches) {
            wanted.push_back(patch.Colour());
        }
        for (size_t i = 0; i < match.size(); ++i) {
            colours.push_back(measured.patches[i].Colour());
            if (match[i]) {
                isMeasured[*match[i]] = true;
            }
        }
    }

    /// What a rule is about: the value of each measured patch, not a number for those that are none of its patches or
    /// have no reference, and how many patches are in one of the files only.
    struct Values {
        std::vector<double> values;
        size_t compared = 0;
        size_t withoutReference = 0;
        size_t notMeasured = 0;
        std::string lacking;  ///< what has to be among the patches and is not, for people
    };

    Values ValuesOf(const Tolerances::Rule& rule) const
    {
        Values found;
        found.values.assign(match.size(), none);
        std::vector<PatchGroup::Need> needs =
            rule.patches.Needs(measuredValues.Channels().empty() ? referenceValues : measuredValues);
        for (size_t i = 0; i < match.size(); ++i) {
            // A patch is what either file says of it: device values often stand in one of them only.
            const std::optional<Triple> aim = match[i] ? wanted[*match[i]] : std::nullopt;
            if (!rule.patches.Has(measured, measuredValues, i, aim) &&
                !(match[i] && rule.patches.Has(reference, referenceValues, *match[i], aim))) {
                continue;
            }
            if (aim) {
                found.values[i] = rule.ValueOf(*aim, *colours[i]);
                ++found.compared;
                std::erase_if(needs, [&](const PatchGroup::Need& need) {
                    return need.isMet(measured, measuredValues, i) || need.isMet(reference, referenceValues, *match[i]);
                });
            } else {
                ++found.withoutReference;
            }
        }
        for (size_t i = 0; i < isMeasured.size(); ++i) {
            const bool isMissing = !isMeasured[i] && rule.patches.Has(reference, referenceValues, i, wanted[i]);
            found.notMeasured += isMissing ? 1 : 0;
        }
        for (const PatchGroup::Need& need : needs) {
            found.lacking += (found.lacking.empty() ? "no patch with " : ", with ") + need.words;
        }
        return found;
    }

private:
    const Chart& measured;
    const Chart& reference;
    PatchMatch match;
    DeviceValues measuredValues;
    DeviceValues referenceValues;
    std::vector<bool> isMeasured;                ///< by patches of the reference
    std::vector<std::optional<Triple>> wanted;   ///< by patches of the reference
    std::vector<std::optional<Triple>> colours;  ///< by measured patches
};

/// Why a rule can't be judged; empty where it can.
std::string Reason(const Pair::Values& found, bool subset, bool optional)
{
    if (!subset && found.withoutReference > 0) {
        return Plural(found.withoutReference, "patch") + " without a reference";
    }
    if (!subset && found.notMeasured > 0) {
        return Plural(found.notMeasured, "patch") + " of the reference not measured";
    }
    return found.compared == 0 ? "no such patches" : optional ? "" : found.lacking;
}

/// With two decimals, or as many more as it takes.
template <class Condition>
std::string TextOf(double value, const Condition& tellsEnough)
{
    constexpr int most = 9;
    int decimals = 2;
    while (decimals < most && !tellsEnough(std::stod(FixedText(value, decimals)))) {
        ++decimals;
    }
    return FixedText(value, decimals);
}

double Of(const J4Chart::DifferenceSummary& summary, Tolerances::Statistic statistic)
{
    switch (statistic) {
    case Tolerances::Statistic::Mean:
        return summary.Mean();
    case Tolerances::Statistic::Percentile95:
        return summary.Percentile95();
    default:
        return summary.Maximum();
    }
}

}  // namespace

std::string Judgement::Line::What() const
{
    constexpr std::array<const char*, Tolerances::StatisticNames.size()> words = {"mean", "95th percentile", "maximum"};
    return rule.QuantityText() + ", " + words[static_cast<size_t>(statistic)];
}

std::string Judgement::Line::LimitText() const
{
    return TextOf(limit, [this](double shown) { return shown == limit; });
}

std::string Judgement::Line::ValueText() const
{
    if (!value) {
        return "-";
    }
    // 3.004 does not hold 3.00, and must not look as if it did; nor as if 2.9985 did not hold 2.9985.
    return TextOf(*value, [this](double shown) { return IsAbove(shown, limit) == IsAbove(*value, limit); });
}

Judgement::Judgement(const Tolerances& tolerances, const Chart& measured, const Chart& reference)
    : title(tolerances.title), source(tolerances.source), isCovered(measured.patches.size())
{
    const Pair pair(measured, reference);
    for (const Tolerances::Rule& rule : tolerances.rules) {
        const Pair::Values found = pair.ValuesOf(rule);
        for (size_t i = 0; i < isCovered.size(); ++i) {
            isCovered[i] = isCovered[i] || !std::isnan(found.values[i]);
        }
        Line line;
        line.rule = rule;
        line.patches = found.compared;
        line.reason = Reason(found, tolerances.subset, rule.optional);
        // Only patches that are on no chart can be done without.
        const bool canBeLeftOut = rule.optional && found.compared + found.withoutReference + found.notMeasured == 0;
        std::optional<J4Chart::DifferenceSummary> summary;
        if (found.compared > 0) {
            summary.emplace(found.values);
            for (const size_t patch : summary->Worst()) {
                line.behind.push_back({patch, measured.patches[patch].name, found.values[patch]});
            }
        }
        for (size_t statistic = 0; statistic < rule.limits.size(); ++statistic) {
            if (!rule.limits[statistic]) {
                continue;
            }
            line.statistic = static_cast<Tolerances::Statistic>(statistic);
            line.limit = *rule.limits[statistic];
            if (summary) {
                line.value = Of(*summary, line.statistic);
            }
            // A maximum beyond its limit fails, whatever other patches would be.
            const bool isKnown =
                line.reason.empty() || (line.value && line.statistic == Tolerances::Statistic::Maximum);
            line.verdict = isKnown && IsAbove(*line.value, line.limit) ? Verdict::Fail
                           : line.reason.empty()                       ? Verdict::Pass
                           : canBeLeftOut                              ? Verdict::LeftOut
                                                                       : Verdict::NotJudged;
            lines.push_back(line);
        }
    }
    const auto any = [this](Verdict verdict) {
        return std::any_of(lines.begin(), lines.end(), [verdict](const Line& line) { return line.verdict == verdict; });
    };
    overall = any(Verdict::Fail)        ? Verdict::Fail
              : any(Verdict::NotJudged) ? Verdict::NotJudged
              : any(Verdict::Pass)      ? Verdict::Pass
                                        : Verdict::NotJudged;
}

size_t Judgement::Covered() const { return static_cast<size_t>(std::count(isCovered.begin(), isCovered.end(), true)); }

std::string Judgement::CoverageWords() const
{
    return "Rules cover " + std::to_string(Covered()) + " of " + Plural(Patches(), "patch") + ".";
}

std::string Judgement::Words() const
{
    const auto count = [this](Verdict verdict) {
        return static_cast<size_t>(
            std::count_if(lines.begin(), lines.end(), [verdict](const Line& line) { return line.verdict == verdict; }));
    };
    const std::string limits = Plural(lines.size(), "limit");
    switch (overall) {
    case Verdict::Pass:
        return "pass: " + std::to_string(count(Verdict::Pass)) + " of " + limits + " held" +
               (count(Verdict::LeftOut) > 0 ? ", the others are for patches that the chart does not have" : "");
    case Verdict::Fail:
        return "fail: " + std::to_string(count(Verdict::Fail)) + " of " + limits + " not held";
    default:
        return "no verdict: " + std::to_string(lines.size() - count(Verdict::Pass)) + " of " + limits +
               " could not be judged";
    }
}

}  // namespace J4Tool
