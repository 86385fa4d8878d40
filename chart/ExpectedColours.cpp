#include "chart/ExpectedColours.h"

#include <algorithm>

#include "chart/DeviceValues.h"
#include "chart/colour/PrintModel.h"

namespace J4Chart {

namespace {

/// The model's inks or lights among the chart's fields, in its order; none where one is missing.
std::vector<size_t> ModelChannels(const DeviceValues& values)
{
    for (const std::vector<const char*>& names :
         {std::vector{"RGB_R", "RGB_G", "RGB_B"}, std::vector{"CMYK_C", "CMYK_M", "CMYK_Y", "CMYK_K"}}) {
        std::vector<size_t> channels;
        for (const char* name : names) {
            if (const auto channel = values.FindChannel(name)) {
                channels.push_back(*channel);
            }
        }
        if (channels.size() == names.size()) {
            return channels;
        }
    }
    return {};
}

}  // namespace

std::vector<std::optional<Colorimetry::Triple>> ExpectedColours(const Chart& chart)
{
    std::vector<std::optional<Colorimetry::Triple>> colours(chart.patches.size());
    const DeviceValues values(chart);
    const std::vector<size_t> channels = ModelChannels(values);
    const PrintModel model({});
    for (size_t patch = 0; patch < colours.size() && !channels.empty(); ++patch) {
        const std::vector<double>& own = values.Of(patch);
        auto others = std::count_if(own.begin(), own.end(), [&](double value) { return !values.IsNone(value); });
        std::vector<double> shares;
        for (const size_t channel : channels) {
            if (!own.empty()) {
                shares.push_back(std::clamp(own[channel] / values.Full(), 0.0, 1.0));
                others -= values.IsNone(own[channel]) ? 0 : 1;
            }
        }
        if (!shares.empty() && others == 0) {
            colours[patch] = Colorimetry::Lab(model.Print(shares));
        }
    }
    return colours;
}

}  // namespace J4Chart
