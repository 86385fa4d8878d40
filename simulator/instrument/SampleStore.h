// The samples of the last measurement, and what is read from them: spectra, colour values, densities relative
// to a substrate. Also keeps the travel at each sample of the next counted scan, along which that is reduced
// to patches.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "chart/colour/Colorimetry.h"
#include "simulator/ground/Spectrum.h"
#include "simulator/instrument/Densities.h"
#include "simulator/instrument/Status.h"

namespace J4Bench {

class SampleStore {
public:
    using Conversion = J4Chart::Colorimetry::Triple (*)(const Spectrum&);

    static constexpr uint32_t MaximumSamples = 100000;  ///< in the store and of one scan

    size_t Count() const { return samples.size(); }
    void Clear() { samples.clear(); }
    void Add(const Spectrum& sample) { samples.push_back(sample); }

    /// Takes the samples from a list of pointers to 36 values each.
    Outcome Replace(const float* const* spectra, int32_t count);

    /// Travel at each sample of the next scan, tenths of a millimetre.
    Outcome SetPositions(const uint16_t* values, uint64_t count);

    /// A scan is over: its positions are spent.
    /// @param recognition  the samples are reduced to patches
    /// @param noise        standard deviation of each band of a sample
    void EndScan(bool recognition, const Spectrum& noise);

    /// From then on densities are relative to this spectrum of 36 values.
    Outcome SetSubstrate(const float* spectrum);

    // What a sample says; target has room for 36, 3, 4 values or one.

    Outcome ReadSpectrum(float* target, uint32_t index) const;
    Outcome ReadColour(float* target, uint32_t index, Conversion convert) const;
    /// @param highest  may be null; gets the index of the highest of the four
    Outcome ReadDensities(float* target, int32_t* highest, uint32_t index) const;
    /// The highest of the four.
    Outcome ReadDensity(float* target, uint32_t index) const;

private:
    Outcome Find(const void* target, uint32_t index) const;
    Densities RelativeDensities(const Spectrum& sample) const;

    std::vector<Spectrum> samples;
    std::vector<uint16_t> positions;
    std::optional<Spectrum> substrate;
};

}  // namespace J4Bench
