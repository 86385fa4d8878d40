#include "tools/report/InkRamp.h"

#include <algorithm>
#include <utility>

namespace J4Tool {

std::vector<InkRamp> InkRamp::Find(const J4Chart::Chart& measured, const J4Chart::Chart* reference,
                                   const PatchMatch& references)
{
    // Device values often stand in one of the files only; then its order of patches is taken.
    const bool byReference = reference != nullptr && measured.deviceFields.empty();
    const J4Chart::Chart& teller = byReference ? *reference : measured;
    std::vector<const J4Chart::Patch*> own(teller.patches.size());
    std::vector<const J4Chart::Patch*> wanted(teller.patches.size());
    for (size_t i = 0; i < measured.patches.size(); ++i) {
        if (byReference && !references[i]) {
            continue;
        }
        const size_t place = byReference ? *references[i] : i;
        own[place] = &measured.patches[i];
        wanted[place] = references[i] ? &reference->patches[*references[i]] : nullptr;
    }
    const J4Chart::DeviceValues values(teller);
    std::vector<J4Chart::ToneCurve> aims = J4Chart::ToneCurve::Find(values, wanted);
    std::vector<InkRamp> ramps;
    for (J4Chart::ToneCurve& curve : J4Chart::ToneCurve::Find(values, own, aims)) {
        const auto aim = std::find_if(aims.begin(), aims.end(), [&](const auto& one) { return one.ink == curve.ink; });
        ramps.push_back({std::move(curve), aim == aims.end() ? std::nullopt : std::optional(std::move(*aim))});
    }
    return ramps;
}

}  // namespace J4Tool
