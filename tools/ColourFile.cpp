#include "tools/ColourFile.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "Utilities/Tools/FilePath.h"
#include "chart/ChartFile.h"
#include "chart/ChartReader.h"
#include "chart/DeviceValues.h"
#include "chart/cgats/CgatsFields.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

using TextOfPatch = std::string J4Chart::Patch::*;
using Index = std::map<std::string, size_t>;

/// False when a text is empty or stands for two patches.
bool MakeIndex(const J4Chart::Chart& chart, TextOfPatch text, Index& index)
{
    index.clear();
    for (size_t i = 0; i < chart.patches.size(); ++i) {
        if ((chart.patches[i].*text).empty() || !index.emplace(chart.patches[i].*text, i).second) {
            return false;
        }
    }
    return true;
}

/// Also where one of them tells no device values.
bool HaveSameDevice(const J4Chart::Chart& measured, const J4Chart::Chart& reference)
{
    const std::vector<std::string>& own = measured.deviceFields;
    const std::vector<std::string>& other = reference.deviceFields;
    return own.empty() || other.empty() ||
           std::find_first_of(own.begin(), own.end(), other.begin(), other.end()) != own.end();
}

/// No paper is as dark as one of which X, Y and Z are on a scale from 0 to 1.
void RequireUsualScale(const std::vector<J4Chart::Patch>& patches)
{
    constexpr double darkest = 0.5;  // that the lightest patch would be on that scale
    constexpr double lightest = 1.2;
    double highest = 0.0;
    for (const J4Chart::Patch& patch : patches) {
        if (patch.spectrum || patch.lab || !patch.xyz) {
            return;
        }
        highest = std::max(highest, (*patch.xyz)[1]);
    }
    if (patches.size() > 1 && highest > darkest && highest <= lightest) {
        throw J4Chart::CgatsError(
            0, "XYZ_Y is " + J4Chart::NumberText(highest) + " at most: white has to be 100, and not 1");
    }
}

}  // namespace

ColourFile ColourFile::Read(const std::string& name, const J4Chart::CgatsFile& file)
{
    J4Chart::ChartReader::Wanted wanted;
    wanted.colours = true;
    ColourFile read = {name, J4Chart::ChartReader::Read(file, wanted)};
    if (read.chart.patches.empty()) {
        throw J4Chart::CgatsError(0, "there are no patches");
    }
    RequireUsualScale(read.chart.patches);
    return read;
}

ColourFile ColourFile::Load(const std::string& fileName)
{
    using Kestrelon::Utilities::Tools::NameOf;
    using Kestrelon::Utilities::Tools::PathOf;
    try {
        return Read(NameOf(PathOf(fileName).filename()), J4Chart::ChartFile::Read(fileName));
    } catch (const J4Chart::CgatsError& error) {
        throw ToolError(
            ExitCode::File, fileName + ": " + error.what(),
            "A chart has SAMPLE_NAME or SAMPLE_ID and for each patch a spectrum (400 to 700 nm at least, in steps of "
            "up to 20 nm), LAB or XYZ values.");
    }
}

std::optional<DeviceContradiction> FindContradiction(const J4Chart::Chart& chart, const J4Chart::Chart& other,
                                                     const PatchMatch& match)
{
    constexpr double rounding = 0.006;  // of full: one file may have whole percents, the other has eight bits
    const J4Chart::DeviceValues values(chart);
    const J4Chart::DeviceValues otherValues(other);
    for (size_t field = 0; field < chart.deviceFields.size(); ++field) {
        const std::string& name = chart.deviceFields[field];
        const auto found = std::find(other.deviceFields.begin(), other.deviceFields.end(), name);
        if (found == other.deviceFields.end()) {
            continue;
        }
        const auto there = static_cast<size_t>(found - other.deviceFields.begin());
        for (size_t i = 0; i < match.size(); ++i) {
            if (!match[i] || values.Of(i).empty() || otherValues.Of(*match[i]).empty()) {
                continue;
            }
            const std::string& value = chart.patches[i].device[field];
            const std::string& otherValue = other.patches[*match[i]].device[there];
            if (value != otherValue &&
                std::abs(values.Of(i)[field] - otherValues.Of(*match[i])[there]) > rounding * values.Full()) {
                return DeviceContradiction{i, *match[i], name, value, otherValue};
            }
        }
    }
    return std::nullopt;
}

PatchMatch MatchPatches(const J4Chart::Chart& measured, const J4Chart::Chart& reference)
{
    for (const TextOfPatch text : {&J4Chart::Patch::name, &J4Chart::Patch::id}) {
        Index index;
        if (!MakeIndex(reference, text, index)) {
            continue;
        }
        PatchMatch match;
        match.reserve(measured.patches.size());
        for (const J4Chart::Patch& patch : measured.patches) {
            const auto found = index.find(patch.*text);
            match.push_back(found == index.end() ? std::nullopt : std::optional(found->second));
        }
        if (std::any_of(match.begin(), match.end(), [](const auto& patch) { return patch.has_value(); })) {
            if (text == &J4Chart::Patch::id && !HaveSameDevice(measured, reference)) {
                throw ToolError(ExitCode::File,
                                "the reference has other inks or lights than the measured file, and no name is in both",
                                "Numbers of patches are the same in many charts. Give the reference of this chart.");
            }
            if (const auto found = FindContradiction(measured, reference, match)) {
                const J4Chart::Patch& patch = measured.patches[found->patch];
                throw ToolError(ExitCode::File,
                                "the reference is of another chart: patch '" + patch.name + "' has " + found->field +
                                    " " + found->value + " in the measured file (line " + std::to_string(patch.line) +
                                    ") and " + found->otherValue + " in the reference (line " +
                                    std::to_string(reference.patches[found->otherPatch].line) + ")",
                                "Patches belong together by SAMPLE_NAME, or by SAMPLE_ID where no name is in both "
                                "files; what full ink or light is, DEVICE_MAXIMUM tells.");
            }
            return match;
        }
    }
    throw ToolError(ExitCode::File, "no patch of the measured file has a reference",
                    "Both files need the same SAMPLE_NAME or SAMPLE_ID for a patch, each only once in the reference.");
}

}  // namespace J4Tool
