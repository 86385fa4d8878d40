// The tone values of one ink as they were measured, and those of the reference.
#pragma once

#include <optional>
#include <vector>

#include "chart/ToneCurve.h"
#include "tools/ColourFile.h"

namespace J4Tool {

struct InkRamp {
    J4Chart::ToneCurve measured;
    std::optional<J4Chart::ToneCurve> reference;

    /// The ramps of a chart, in the order of its inks.
    /// @param reference   nullptr for none
    /// @param references  of each measured patch the reference's
    static std::vector<InkRamp> Find(const J4Chart::Chart& measured, const J4Chart::Chart* reference,
                                     const PatchMatch& references);
};

}  // namespace J4Tool
