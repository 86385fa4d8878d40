#include "chart/DeviceValues.h"

#include <algorithm>
#include <iterator>

#include "chart/cgats/CgatsFields.h"

namespace J4Chart {

namespace {

std::vector<double> Numbers(const std::vector<std::string>& texts)
{
    std::vector<double> numbers;
    numbers.reserve(texts.size());
    for (const std::string& text : texts) {
        double number = 0.0;
        if (!ParseNumber(text, number)) {
            return {};
        }
        numbers.push_back(number);
    }
    return numbers;
}

}  // namespace

DeviceValues::DeviceValues(const Chart& chart) : fields(chart.deviceFields)
{
    for (const std::string& field : fields) {
        const std::string spot = field.starts_with("SPOT_") ? chart.Condition(field + "_NAME") : "";
        channels.push_back(!spot.empty()                ? spot
                           : field.starts_with("SPOT_") ? field
                                                        : field.substr(field.rfind('_') + 1));
        inks = inks || (!field.starts_with("RGB_") && !field.starts_with("GRAY"));
    }
    double largest = 0.0;
    values.reserve(chart.patches.size());
    for (const Patch& patch : chart.patches) {
        values.push_back(Numbers(patch.device));
        for (const double value : values.back()) {
            largest = std::max(largest, value);
        }
    }
    double maximum = 0.0;
    if (!ParseNumber(chart.Condition(MaximumKeyword), maximum) || maximum <= 0.0) {
        maximum = largest > 100.5 ? 255.0 : largest > 1.0 ? 100.0 : 1.0;
    }
    for (std::vector<double>& patch : values) {
        for (double& value : patch) {
            value *= Full() / maximum;
        }
    }
}

std::optional<size_t> DeviceValues::FindChannel(const std::string& name) const
{
    for (size_t i = 0; i < fields.size(); ++i) {
        if (name == channels[i] || name == fields[i]) {
            return i;
        }
    }
    return std::nullopt;
}

bool DeviceValues::IsPaper(size_t patch) const
{
    const std::vector<double>& own = values[patch];
    return !own.empty() &&
           std::all_of(own.begin(), own.end(), [this](double value) { return inks ? IsNone(value) : IsFull(value); });
}

std::vector<size_t> DeviceValues::Solids(size_t patch) const
{
    std::vector<size_t> solids;
    for (size_t i = 0; i < values[patch].size(); ++i) {
        if (IsFull(values[patch][i])) {
            solids.push_back(i);
        } else if (!IsNone(values[patch][i])) {
            return {};
        }
    }
    return solids;
}

std::optional<size_t> DeviceValues::OnlyInk(size_t patch) const
{
    const std::vector<double>& own = values[patch];
    const auto isSome = [this](double value) { return !IsNone(value); };
    const auto first = std::find_if(own.begin(), own.end(), isSome);
    if (!inks || first == own.end() || std::any_of(first + 1, own.end(), isSome)) {
        return std::nullopt;
    }
    return static_cast<size_t>(std::distance(own.begin(), first));
}

}  // namespace J4Chart
