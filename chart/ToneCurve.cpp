#include "chart/ToneCurve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <utility>

#include "chart/colour/Average.h"
#include "chart/colour/Densities.h"
#include "chart/colour/ToneValue.h"

namespace J4Chart {

namespace {

using Colorimetry::Triple;

/// The mean of some patches.
struct Sample {
    std::vector<double> lights;  ///< reflectances of windows of bands, or X, Y, Z
    Triple xyz{};
    std::optional<Densities> densities;
};

// Light is taken in windows of bands, so that the noise of a single one matters less, and from 410 to 670 nm: beyond it
// little is seen of an ink.
constexpr size_t window = 3;
constexpr size_t firstBand = 3;
constexpr size_t lastBand = 29;

/// Mean reflectance of each window of bands.
std::vector<double> Windows(const Spectrum& spectrum)
{
    std::vector<double> windows;
    for (size_t band = firstBand; band + window <= lastBand + 1; ++band) {
        double sum = 0.0;
        for (size_t i = 0; i < window; ++i) {
            sum += static_cast<double>(spectrum[band + i]);
        }
        windows.push_back(sum / static_cast<double>(window));
    }
    return windows;
}

/// @param chosen  one at least
Sample MeanOfSome(const std::vector<size_t>& chosen, const std::vector<const Patch*>& patches, bool bySpectra)
{
    std::vector<Spectrum> spectra;
    std::vector<Triple> colours;
    std::vector<Densities> densities;
    for (const size_t index : chosen) {
        const Patch& patch = *patches[index];
        if (bySpectra) {
            spectra.push_back(*patch.spectrum);
        } else {
            colours.push_back(Colorimetry::TristimulusOfLab(*patch.Colour(), Colorimetry::White()));
        }
        if (patch.densities) {
            densities.push_back(*patch.densities);
        }
    }
    Sample mean;
    if (bySpectra) {
        const Spectrum spectrum = MeanOf(spectra);
        mean.lights = Windows(spectrum);
        mean.xyz = Colorimetry::TristimulusValues(spectrum);
    } else {
        mean.xyz = MeanOf(colours);
        mean.lights.assign(mean.xyz.begin(), mean.xyz.end());
    }
    if (densities.size() == chosen.size()) {
        mean.densities = MeanDensities(densities);
    }
    return mean;
}

/// Where the solid takes the largest part of the paper's light.
size_t Darkest(const std::vector<double>& paper, const std::vector<double>& solid)
{
    size_t darkest = 0;
    const auto taken = [&](size_t i) { return paper[i] > 0.0 ? (paper[i] - solid[i]) / paper[i] : 0.0; };
    for (size_t i = 1; i < paper.size(); ++i) {
        if (taken(i) > taken(darkest)) {
            darkest = i;
        }
    }
    return darkest;
}

size_t Densest(const Densities& paper, const Densities& solid)
{
    size_t densest = 0;
    for (size_t i = 1; i < solid.size(); ++i) {
        if (solid[i] - paper[i] > solid[densest] - paper[densest]) {
            densest = i;
        }
    }
    return densest;
}

std::string LightName(bool bySpectra, size_t light)
{
    if (!bySpectra) {
        return "tristimulus value " + std::string(1, "XYZ"[light]);
    }
    const int first = FirstWavelength + WavelengthStep * static_cast<int>(firstBand + light);
    return "reflectance at " + std::to_string(first) + " to " +
           std::to_string(first + WavelengthStep * static_cast<int>(window - 1)) + " nm";
}

using Ramp = std::map<long, std::vector<size_t>>;  // patches by nominal value, in hundredths of a percent

constexpr double hundredths = 100.0;
constexpr long solidKey = 100 * 100;

/// @param like  whose light is taken where that can be; may be null
/// @return nothing where paper and solid can't be told apart
std::optional<ToneCurve> CurveOf(const std::string& ink, const Ramp& ramp, const std::vector<const Patch*>& patches,
                                 const ToneCurve* like)
{
    const bool bySpectra = std::all_of(ramp.begin(), ramp.end(), [&](const auto& step) {
        return std::all_of(step.second.begin(), step.second.end(),
                           [&](size_t patch) { return patches[patch]->spectrum.has_value(); });
    });
    const Sample paper = MeanOfSome(ramp.begin()->second, patches, bySpectra);
    const Sample solid = MeanOfSome(ramp.rbegin()->second, patches, bySpectra);
    size_t light = Darkest(paper.lights, solid.lights);
    for (size_t i = 0; like != nullptr && i < paper.lights.size(); ++i) {
        if (LightName(bySpectra, i) == like->light && paper.lights[i] > solid.lights[i]) {
            light = i;
        }
    }
    if (paper.lights[light] <= solid.lights[light] || Colorimetry::Distance(paper.xyz, solid.xyz) < 1e-6) {
        return std::nullopt;
    }
    ToneCurve curve;
    curve.ink = ink;
    curve.light = LightName(bySpectra, light);
    curve.solid = Colorimetry::LabOfTristimulus(solid.xyz);
    std::optional<size_t> filter;
    if (paper.densities && solid.densities) {
        constexpr std::array<const char*, 4> names = {"red", "green", "blue", "visual"};
        filter = Densest(*paper.densities, *solid.densities);
        if ((*solid.densities)[*filter] <= (*paper.densities)[*filter]) {
            filter.reset();
        } else {
            curve.filter = names[*filter];
        }
    }
    for (const auto& [nominal, chosen] : ramp) {
        const Sample tone = MeanOfSome(chosen, patches, bySpectra);
        ToneCurve::Point point;
        point.nominal = static_cast<double>(nominal) / hundredths;
        point.toneValue = ToneValue::OfReflectances(paper.lights[light], solid.lights[light], tone.lights[light]);
        point.sctv = ToneValue::OfTristimulus(paper.xyz, solid.xyz, tone.xyz);
        if (filter && tone.densities) {
            point.ofDensities = ToneValue::OfDensities((*paper.densities)[*filter], (*solid.densities)[*filter],
                                                       (*tone.densities)[*filter]);
        }
        curve.points.push_back(std::move(point));
    }
    return curve;
}

}  // namespace

std::vector<ToneCurve> ToneCurve::Find(const DeviceValues& values, const std::vector<const Patch*>& patches,
                                       const std::vector<ToneCurve>& like)
{
    std::vector<size_t> paper;
    std::vector<Ramp> ramps(values.Channels().size());
    for (size_t i = 0; i < patches.size(); ++i) {
        if (patches[i] == nullptr || !values.AreInks()) {
            continue;
        }
        if (values.IsPaper(i)) {
            paper.push_back(i);
        } else if (const std::optional<size_t> ink = values.OnlyInk(i)) {
            const double value = values.Of(i)[*ink];
            ramps[*ink][values.IsFull(value) ? solidKey : std::lround(100.0 * hundredths * value / values.Full())]
                .push_back(i);
        }
    }
    std::vector<ToneCurve> curves;
    for (size_t ink = 0; ink < ramps.size(); ++ink) {
        Ramp& ramp = ramps[ink];
        if (paper.empty() || ramp.size() <= FewestSteps || ramp.rbegin()->first != solidKey) {
            continue;
        }
        ramp[0] = paper;
        const std::string& name = values.Channels()[ink];
        const auto same = std::find_if(like.begin(), like.end(), [&](const ToneCurve& one) { return one.ink == name; });
        if (auto curve = CurveOf(name, ramp, patches, same == like.end() ? nullptr : &*same)) {
            curves.push_back(std::move(*curve));
        }
    }
    return curves;
}

}  // namespace J4Chart
