#include "tools/ColourFile.h"

#include <algorithm>
#include <map>

#include "Utilities/Tools/FilePath.h"
#include "chart/ChartFile.h"
#include "chart/ChartReader.h"
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

}  // namespace

ColourFile ColourFile::Read(const std::string& name, const J4Chart::CgatsFile& file)
{
    J4Chart::ChartReader::Wanted wanted;
    wanted.colours = true;
    ColourFile read = {name, J4Chart::ChartReader::Read(file, wanted)};
    if (read.chart.patches.empty()) {
        throw J4Chart::CgatsError(0, "there are no patches");
    }
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
            "A chart has SAMPLE_NAME or SAMPLE_ID and for each patch a spectrum (36 bands from 380 to 730 nm "
            "in steps of 10 nm), LAB or XYZ values.");
    }
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
            return match;
        }
    }
    throw ToolError(ExitCode::File, "no patch of the measured file has a reference",
                    "Both files need the same SAMPLE_NAME or SAMPLE_ID for a patch, each only once in the reference.");
}

}  // namespace J4Tool
