#include "simulator/instrument/SampleStore.h"

#include <algorithm>
#include <string>
#include <utility>

#include "simulator/instrument/Factors.h"
#include "simulator/instrument/PatchRecognition.h"

namespace J4Bench {

namespace {

size_t IndexOfHighest(const Densities& densities)
{
    return static_cast<size_t>(std::max_element(densities.begin(), densities.end()) - densities.begin());
}

template <typename Values>
void Write(const Values& values, float* target)
{
    std::transform(values.begin(), values.end(), target, [](double value) { return static_cast<float>(value); });
}

}  // namespace

Outcome SampleStore::Replace(const float* const* spectra, int32_t count)
{
    if (count < 0 || static_cast<uint32_t>(count) > MaximumSamples || (count > 0 && spectra == nullptr)) {
        return Refuse(std::to_string(count), "a usable number of samples");
    }
    std::vector<Spectrum> replacement(static_cast<size_t>(count));
    for (size_t i = 0; i < replacement.size(); ++i) {
        if (spectra[i] == nullptr) {
            return {Status::InvalidValue, "Sample " + std::to_string(i) + " of the list is missing."};
        }
        std::copy(spectra[i], spectra[i] + SpectrumLength, replacement[i].begin());
    }
    samples = std::move(replacement);
    return {};
}

Outcome SampleStore::SetPositions(const uint16_t* values, uint64_t count)
{
    if (count > MaximumSamples || (count > 0 && values == nullptr)) {
        return Refuse(std::to_string(count), "a usable number of positions");
    }
    positions.assign(values, values + count);
    return {};
}

void SampleStore::EndScan(bool recognition, const Spectrum& noise)
{
    if (recognition) {
        samples = PatchRecognition::Reduce(samples, positions, noise);
    }
    positions.clear();
}

Outcome SampleStore::SetSubstrate(const float* spectrum)
{
    const std::optional<Spectrum> factors = Factors(spectrum, false);
    if (!factors) {
        return {Status::InvalidValue, "A substrate has 36 reflectance factors above 0."};
    }
    substrate = factors;
    return {};
}

Outcome SampleStore::ReadSpectrum(float* target, uint32_t index) const
{
    Outcome outcome = Find(target, index);
    if (!outcome.Failed()) {
        std::copy(samples[index].begin(), samples[index].end(), target);
    }
    return outcome;
}

Outcome SampleStore::ReadColour(float* target, uint32_t index, Conversion convert) const
{
    Outcome outcome = Find(target, index);
    if (!outcome.Failed()) {
        Write(convert(samples[index]), target);
    }
    return outcome;
}

Outcome SampleStore::ReadDensities(float* target, int32_t* highest, uint32_t index) const
{
    Outcome outcome = Find(target, index);
    if (!outcome.Failed()) {
        const Densities values = RelativeDensities(samples[index]);
        Write(values, target);
        if (highest != nullptr) {
            *highest = static_cast<int32_t>(IndexOfHighest(values));
        }
    }
    return outcome;
}

Outcome SampleStore::ReadDensity(float* target, uint32_t index) const
{
    Outcome outcome = Find(target, index);
    if (!outcome.Failed()) {
        const Densities values = RelativeDensities(samples[index]);
        *target = static_cast<float>(values[IndexOfHighest(values)]);
    }
    return outcome;
}

Outcome SampleStore::Find(const void* target, uint32_t index) const
{
    if (target == nullptr) {
        return {Status::InvalidValue, "There is no room for the result."};
    }
    if (index >= samples.size()) {
        return {Status::NoSample, "There is no sample " + std::to_string(index) + ", only " +
                                      std::to_string(samples.size()) + " are available."};
    }
    return {};
}

Densities SampleStore::RelativeDensities(const Spectrum& sample) const
{
    Densities densities = DensitiesOf(sample);
    if (substrate) {
        const Densities base = DensitiesOf(*substrate);
        for (size_t i = 0; i < densities.size(); ++i) {
            densities[i] -= base[i];
        }
    }
    return densities;
}

}  // namespace J4Bench
