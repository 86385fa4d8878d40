// What a print has to hold: rules, each with the patches that it is about, what of them is looked at, and its limits.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "chart/colour/ColourDifference.h"
#include "tools/judge/PatchGroup.h"

namespace J4Tool {

struct Tolerances {
    /// What of a patch and its reference is looked at; all but the first without a sign.
    enum class Quantity {
        Difference,  ///< by a formula
        Lightness,   ///< dL*
        Chroma,      ///< dC*ab
        Hue,         ///< dH*ab
        Grey,        ///< dCh, the distance in the plane of a* and b*
    };

    /// What of a rule's patches together.
    enum class Statistic { Mean, Percentile95, Maximum };

    static constexpr std::array<const char*, 5> QuantityNames = {"difference", "lightness", "chroma", "hue", "grey"};
    static constexpr std::array<const char*, 3> StatisticNames = {"mean", "percentile95", "maximum"};

    struct Rule {
        std::string name;
        std::string source;  ///< where the limits come from; may be empty
        PatchGroup patches;
        Quantity quantity = Quantity::Difference;
        const J4Chart::ColourDifference::Formula* formula = J4Chart::ColourDifference::Formulas.data();
        std::array<std::optional<double>, StatisticNames.size()> limits;  ///< by Statistic; at least one
        bool optional = false;  ///< a chart without such patches passes all the same

        /// For people: the formula's name, or for instance "dH*ab".
        std::string QuantityText() const;

        /// @return 0 or more
        double ValueOf(const J4Chart::Colorimetry::Triple& reference,
                       const J4Chart::Colorimetry::Triple& measured) const;
    };

    std::string title;
    std::string source;
    bool subset = false;      ///< a chart may be measured in part, and have patches without a reference
    std::vector<Rule> rules;  ///< at least one
};

}  // namespace J4Tool
