#include "tools/judge/PatchGroup.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Utilities/Tools/Utf8.h"
#include "chart/cgats/CgatsFields.h"

namespace J4Tool {

namespace Utf8 = Kestrelon::Utilities::Tools::Utf8;

using J4Chart::DeviceValues;

namespace {

constexpr std::array<std::string_view, 5> PartNames = {"all", "paper", "primaries", "secondaries", "greys"};

/// Bytes of the character at the beginning, or of what is none.
size_t CharacterLength(std::string_view text)
{
    const auto character = Utf8::CharacterAt(text);
    return character ? character->length : 1;
}

bool Matches(std::string_view text, std::string_view pattern)
{
    // Only the last star is ever tried again: what an earlier one could take, the last one can take too.
    std::string_view textBehindStar;
    std::optional<std::string_view> patternBehindStar;
    while (!text.empty() || !pattern.empty()) {
        if (pattern.starts_with('*')) {
            pattern.remove_prefix(1);
            patternBehindStar = pattern;
            textBehindStar = text;
        } else if (!text.empty() && pattern.starts_with('?')) {
            pattern.remove_prefix(1);
            text.remove_prefix(CharacterLength(text));
        } else if (!text.empty() && !pattern.empty() && pattern.front() == text.front()) {
            pattern.remove_prefix(1);
            text.remove_prefix(1);
        } else if (patternBehindStar && !textBehindStar.empty()) {
            textBehindStar.remove_prefix(1);
            text = textBehindStar;
            pattern = *patternBehindStar;
        } else {
            return false;
        }
    }
    return true;
}

bool IsChromatic(const DeviceValues& values, size_t channel)
{
    const std::string& name = values.Channels()[channel];
    return !values.AreInks() || name == "C" || name == "M" || name == "Y";
}

bool IsSecondary(const DeviceValues& values, size_t patch)
{
    const std::vector<size_t> solids = values.Solids(patch);
    return solids.size() == 2 && IsChromatic(values, solids[0]) && IsChromatic(values, solids[1]);
}

bool IsGrey(const DeviceValues& values, size_t patch, const std::optional<J4Chart::Colorimetry::Triple>& reference)
{
    const std::vector<double>& own = values.Of(patch);
    if (own.size() < 3) {
        return false;
    }
    if (!values.AreInks()) {
        return !values.IsNone(own[0]) && !values.IsFull(own[0]) &&
               std::all_of(own.begin(), own.end(),
                           [&](double value) { return std::abs(value - own[0]) <= values.Tolerance(); });
    }
    size_t chromatic = 0;
    for (size_t channel = 0; channel < own.size(); ++channel) {
        if (IsChromatic(values, channel) == values.IsNone(own[channel])) {
            return false;
        }
        chromatic += IsChromatic(values, channel) ? 1 : 0;
    }
    return chromatic == 3 && reference && J4Chart::Colorimetry::LChOfLab(*reference)[1] <= PatchGroup::GreyChroma;
}

bool LiesIn(const PatchGroup::Device& device, const DeviceValues& values, size_t patch)
{
    const std::vector<double>& own = values.Of(patch);
    if (own.empty()) {
        return false;
    }
    std::vector<const PatchGroup::Range*> wanted(own.size(), device.others ? &*device.others : nullptr);
    for (const PatchGroup::Range& range : device.ranges) {
        const std::optional<size_t> channel = values.FindChannel(range.channel);
        if (!channel) {
            return false;
        }
        wanted[*channel] = &range;
    }
    for (size_t channel = 0; channel < own.size(); ++channel) {
        if (wanted[channel] != nullptr && (own[channel] < wanted[channel]->low - values.Tolerance() ||
                                           own[channel] > wanted[channel]->high + values.Tolerance())) {
            return false;
        }
    }
    return true;
}

std::string WordsOf(const PatchGroup::Device& device)
{
    std::string words;
    const auto add = [&words](const PatchGroup::Range& range) {
        words += (words.empty() ? "" : ", ") + range.channel + " " + J4Chart::NumberText(range.low) +
                 (range.high > range.low ? " to " + J4Chart::NumberText(range.high) : "");
    };
    std::for_each(device.ranges.begin(), device.ranges.end(), add);
    if (device.others) {
        add(*device.others);
    }
    return words;
}

}  // namespace

std::optional<PatchGroup> PatchGroup::OfPart(const std::string& name)
{
    const auto found = std::find(PartNames.begin(), PartNames.end(), name);
    return found == PartNames.end() ? std::nullopt
                                    : std::optional(PatchGroup(static_cast<Part>(found - PartNames.begin())));
}

bool PatchGroup::Has(const J4Chart::Chart& chart, const DeviceValues& values, size_t patch,
                     const std::optional<J4Chart::Colorimetry::Triple>& reference) const
{
    switch (part) {
    case Part::All:
        break;
    case Part::Paper:
        return values.IsPaper(patch);
    case Part::Primaries:
        return values.Solids(patch).size() == 1;
    case Part::Secondaries:
        return IsSecondary(values, patch);
    case Part::Greys:
        return IsGrey(values, patch, reference);
    }
    const auto any = [](const auto& list, const auto& isMet) {
        return list.empty() || std::any_of(list.begin(), list.end(), isMet);
    };
    return any(patterns, [&](const std::string& pattern) { return Matches(chart.patches[patch].name, pattern); }) &&
           any(devices, [&](const Device& device) { return LiesIn(device, values, patch); });
}

std::vector<PatchGroup::Need> PatchGroup::Needs(const DeviceValues& values) const
{
    std::vector<Need> needs;
    const std::vector<std::string>& channels = values.Channels();
    // One channel in full, or two of them.
    const auto addSolid = [&](const std::vector<std::string>& solid) {
        needs.push_back({solid.front() + (solid.size() > 1 ? " and " + solid.back() : "") + " in full",
                         [solid](const J4Chart::Chart&, const DeviceValues& own, size_t patch) {
                             const std::vector<size_t> solids = own.Solids(patch);
                             return solids.size() == solid.size() &&
                                    std::all_of(solids.begin(), solids.end(), [&](size_t channel) {
                                        return std::count(solid.begin(), solid.end(), own.Channels()[channel]) > 0;
                                    });
                         }});
    };
    for (size_t i = 0; i < channels.size(); ++i) {
        if (part == Part::Primaries) {
            addSolid({channels[i]});
        }
        for (size_t k = i + 1; k < channels.size() && part == Part::Secondaries; ++k) {
            if (IsChromatic(values, i) && IsChromatic(values, k)) {
                addSolid({channels[i], channels[k]});
            }
        }
    }
    for (const std::string& pattern : patterns) {
        needs.push_back({"a name like '" + pattern + "'",
                         [pattern](const J4Chart::Chart& chart, const DeviceValues&, size_t patch) {
                             return Matches(chart.patches[patch].name, pattern);
                         }});
    }
    for (const Device& device : devices) {
        needs.push_back({WordsOf(device), [device](const J4Chart::Chart&, const DeviceValues& own, size_t patch) {
                             return LiesIn(device, own, patch);
                         }});
    }
    return needs;
}

}  // namespace J4Tool
