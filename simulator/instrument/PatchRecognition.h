// Reduces the stream of samples of one scanned row to the patches that lie in it: finds the runs of constant
// colour that are long enough to be a patch, and takes the mean of the clean middle of each.
#pragma once

#include <cstdint>
#include <vector>

#include "simulator/chart/Aperture.h"
#include "simulator/ground/Spectrum.h"

namespace J4Bench {

class PatchRecognition {
public:
    /// Samples of one run differ from its first by less than this, in CIELab; neighbouring patches must
    /// differ by more.
    static constexpr double ColourTolerance = 1.5;

    /// Noise makes a sample of a dark patch differ by more than that from the others. A sample also belongs to a
    /// run when the mean square of its difference from the run's mean, over all bands, is less than so many times
    /// what noise makes it. With 36 bands one sample in a million is a stray one.
    static constexpr double NoiseAllowance = 2.6;

    /// Least travel of constant colour that makes a patch, tenths of a millimetre. Over the middle of a gap
    /// narrower than the aperture the colour stands still for up to two thirds of the aperture. A patch is seen
    /// without its neighbours over its width less the aperture.
    static constexpr double LeastTravel = 0.75 * ApertureDiameter;

    /// Without positions: least number of samples of constant colour that makes a patch, and the least share
    /// of the length of a typical run.
    static constexpr double LeastSamples = 4.0;
    static constexpr double LeastShare = 0.5;

    /// A row begins and ends on paper, or on a patch: a first and a last run that are lighter than this L*
    /// and have less than this chroma are taken for unprinted paper.
    static constexpr double PaperLightness = 80.0;
    static constexpr double PaperChroma = 10.0;

    /// @param samples    in order of time
    /// @param positions  travel of each sample in tenths of a millimetre; where it falls or is
    ///                   shorter than samples the rest stands at the place before that; empty: samples alone decide
    /// @param noise      standard deviation of each band of a sample, which an instrument knows of itself
    /// @return one spectrum for each patch, in order of travel
    static std::vector<Spectrum> Reduce(const std::vector<Spectrum>& samples, const std::vector<uint16_t>& positions,
                                        const Spectrum& noise);
};

}  // namespace J4Bench
