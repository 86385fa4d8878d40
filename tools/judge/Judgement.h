// The verdict on a measured chart: each rule of the tolerances with its limit and its value, whether that is held, and
// the patches behind it. What can't be judged is never taken as held.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "chart/Chart.h"
#include "tools/judge/Tolerances.h"

namespace J4Tool {

class Judgement {
public:
    enum class Verdict {
        Pass,
        Fail,
        NotJudged,
        LeftOut,  ///< not judged, and the rule allows that
    };

    struct PatchValue {
        size_t patch = 0;  ///< in the order of the measured file
        std::string name;
        double value = 0.0;
    };

    /// One limit of a rule.
    struct Line {
        Tolerances::Rule rule;
        Tolerances::Statistic statistic = Tolerances::Statistic::Maximum;
        double limit = 0.0;
        std::optional<double> value;  ///< nothing where it could not be judged
        size_t patches = 0;           ///< that were compared
        Verdict verdict = Verdict::NotJudged;
        std::string reason;              ///< why it was not judged; empty where it was
        std::vector<PatchValue> behind;  ///< those with the largest values, largest first, ten at most

        /// For people, for instance "CIEDE2000, 95th percentile".
        std::string What() const;

        /// The value with as many decimals as it takes to see on which side of the limit it lies; "-" where there is none.
        std::string ValueText() const;

        /// The limit with all of its decimals, two at least.
        std::string LimitText() const;
    };

    /// @param reference  its patches belong to the measured ones by MatchPatches()
    /// @throws ToolError when no measured patch has a reference
    Judgement(const Tolerances& tolerances, const J4Chart::Chart& measured, const J4Chart::Chart& reference);

    const std::string& Title() const { return title; }
    const std::string& Source() const { return source; }

    /// How many measured patches there are, and of how many of them a rule tells something.
    size_t Patches() const { return isCovered.size(); }
    size_t Covered() const;

    /// In the order of the rules.
    const std::vector<Line>& Lines() const { return lines; }

    /// Fail where a line fails; else NotJudged where one is not judged, or none is; else Pass.
    Verdict Overall() const { return overall; }

    /// A sentence for people.
    std::string Words() const;

    /// How much of the chart the verdict is about, a sentence for people.
    std::string CoverageWords() const;

private:
    std::string title;
    std::string source;
    std::vector<bool> isCovered;  ///< by measured patches
    std::vector<Line> lines;
    Verdict overall = Verdict::NotJudged;
};

}  // namespace J4Tool
