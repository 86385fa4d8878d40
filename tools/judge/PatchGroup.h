// Some of a chart's patches, chosen by their part in the chart (paper, solids, overprints, greys), by their names or by
// their device values.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "chart/Chart.h"
#include "chart/DeviceValues.h"

namespace J4Tool {

class PatchGroup {
public:
    /// The parts that a patch can have, by device values.
    enum class Part {
        All,
        Paper,        ///< no ink, or all lights
        Primaries,    ///< one ink or light in full, nothing of the others
        Secondaries,  ///< two of C, M, Y, or two lights, in full, nothing of the others
        Greys,  ///< C, M and Y together without another ink, where the reference is near grey; or three equal lights
    };

    /// Largest chroma C*ab of the reference of a grey of inks.
    static constexpr double GreyChroma = 6.0;

    /// The values that an ink, 0 to 100, or a light, 0 to 255, may have.
    struct Range {
        std::string channel;
        double low = 0.0;
        double high = 0.0;
    };

    /// Patches whose device values lie in all of the ranges.
    struct Device {
        std::vector<Range> ranges;
        std::optional<Range> others;  ///< of all channels that have no range of their own
    };

    explicit PatchGroup(Part part = Part::All) : part(part) {}

    /// @param patterns  one of which the name has to match, with "*" for any text and "?" for any character; none: any
    ///                  name
    /// @param devices   one of which the device values have to lie in; none: any values
    PatchGroup(std::vector<std::string> patterns, std::vector<Device> devices)
        : patterns(std::move(patterns)), devices(std::move(devices))
    {}

    /// "all", "paper", "primaries", "secondaries", "greys"; nothing for any other name.
    static std::optional<PatchGroup> OfPart(const std::string& name);

    /// @param values     of this chart
    /// @param reference  the colour that the patch should have, if that is known
    bool Has(const J4Chart::Chart& chart, const J4Chart::DeviceValues& values, size_t patch,
             const std::optional<J4Chart::Colorimetry::Triple>& reference) const;

    /// What the group can't lack without being another one: each name and each set of device values of its lists, each
    /// ink or light of the primaries, each pair of the secondaries.
    struct Need {
        std::string words;
        std::function<bool(const J4Chart::Chart& chart, const J4Chart::DeviceValues& values, size_t patch)> isMet;
    };

    /// @param values  of a chart: its inks or lights count
    std::vector<Need> Needs(const J4Chart::DeviceValues& values) const;

private:
    Part part = Part::All;
    std::vector<std::string> patterns;
    std::vector<Device> devices;
};

}  // namespace J4Tool
