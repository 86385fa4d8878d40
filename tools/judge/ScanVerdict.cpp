#include "tools/judge/ScanVerdict.h"

#include <algorithm>

#include "tools/ColourFile.h"
#include "tools/ToolError.h"
#include "tools/judge/ToleranceFile.h"

namespace J4Tool {

ScanVerdict::ScanVerdict(const std::string& toleranceFile, const std::string& referenceFile, const ChartLayout& layout)
    : tolerances(ToleranceFile::Load(toleranceFile)), layout(layout)
{
    if (!referenceFile.empty()) {
        reference = ColourFile::Load(referenceFile).chart;
        MatchPatches(layout.AsChart(), reference);
        return;
    }
    reference = layout.AsChart();
    if (std::none_of(reference.patches.begin(), reference.patches.end(),
                     [](const J4Chart::Patch& patch) { return patch.Colour().has_value(); })) {
        throw ToolError(ExitCode::Usage, "the layout tells no colours to judge by",
                        "Name a file that does with --reference.");
    }
}

Judgement ScanVerdict::On(const Measurements& measurements) const
{
    J4Chart::Chart measured = layout.AsChart();
    for (size_t i = 0; i < measured.patches.size(); ++i) {
        measured.patches[i].spectrum = measurements[i]->spectrum;
    }
    return {tolerances, measured, reference};
}

}  // namespace J4Tool
