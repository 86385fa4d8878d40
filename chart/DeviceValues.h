// The device values of a chart as numbers: which inks or lights of the screen a patch was asked to have. By them patches
// are found that have a part of their own: paper, solids, overprints, greys, ramps.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "chart/Chart.h"

namespace J4Chart {

class DeviceValues {
public:
    /// The keyword that tells what an ink or light in full has in a file.
    static constexpr const char* MaximumKeyword = "DEVICE_MAXIMUM";

    explicit DeviceValues(const Chart& chart);

    /// The inks or lights by what their fields end in, for instance "C" for CMYK_C, and spot inks by the name that the chart
    /// tells, else by their field; empty where the chart tells none.
    const std::vector<std::string>& Channels() const { return channels; }

    /// @param name  of a channel, or its whole field
    std::optional<size_t> FindChannel(const std::string& name) const;

    /// True for inks, of which more is darker; false for lights (RGB), of which more is lighter, and where there are no
    /// device values.
    bool AreInks() const { return inks; }

    /// The value of a solid, 100, or of the full light, 255.
    double Full() const { return inks ? 100.0 : 255.0; }

    /// Of a patch, from 0 to Full() whatever the file's scale is: that which its keyword tells, else 255 where it has
    /// values above 100, 1 where it has none above that, and 100. Empty where one is no number, or there are none.
    const std::vector<double>& Of(size_t patch) const { return values[patch]; }

    /// Bare paper: no ink, or all lights.
    bool IsPaper(size_t patch) const;

    /// Channels that a patch has in full, where it has nothing of the others; empty for any other patch.
    std::vector<size_t> Solids(size_t patch) const;

    /// The only channel of which the patch has something; nothing for paper, mixtures, and lights.
    std::optional<size_t> OnlyInk(size_t patch) const;

    /// Up to which values are the same: the rounding of files.
    double Tolerance() const { return 0.0005 * Full(); }

    bool IsNone(double value) const { return value <= Tolerance(); }
    bool IsFull(double value) const { return value >= Full() - Tolerance(); }

private:
    std::vector<std::string> fields;
    std::vector<std::string> channels;
    bool inks = false;
    std::vector<std::vector<double>> values;
};

}  // namespace J4Chart
