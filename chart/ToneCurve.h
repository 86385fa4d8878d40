// The tone values along the ramps of single inks that a chart has: one ink from the paper over its steps to the solid.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "chart/Chart.h"
#include "chart/DeviceValues.h"

namespace J4Chart {

struct ToneCurve {
    struct Point {
        double nominal = 0.0;               ///< percent
        double toneValue = 0.0;             ///< percent, by Murray-Davies
        double sctv = 0.0;                  ///< percent, ISO 20654
        std::optional<double> ofDensities;  ///< percent, by Murray-Davies of the instrument's densities

        double Increase() const { return toneValue - nominal; }
    };

    std::string ink;
    std::string light;            ///< in which Murray-Davies was taken, for instance "reflectance at 610 to 630 nm"
    std::string filter;           ///< the same of the densities, for instance "red"; empty without them
    std::vector<Point> points;    ///< paper, steps, solid
    Colorimetry::Triple solid{};  ///< CIELab

    /// Fewest steps between paper and solid that make a ramp.
    static constexpr size_t FewestSteps = 3;

    /// The ramps of a chart, in the order of its inks.
    /// @param values   tell which patches are a ramp's
    /// @param patches  the colours, one for each patch of the values; null where there is none
    /// @param like     curves that those will be compared with: the same light is taken where that can be
    static std::vector<ToneCurve> Find(const DeviceValues& values, const std::vector<const Patch*>& patches,
                                       const std::vector<ToneCurve>& like = {});
};

}  // namespace J4Chart
