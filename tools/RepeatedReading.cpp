#include "tools/RepeatedReading.h"

#include <algorithm>
#include <cmath>

#include "chart/colour/Average.h"

namespace J4Tool {

PatchReading AverageOf(const std::vector<PatchReading>& readings)
{
    if (readings.size() == 1) {
        return readings.front();
    }
    PatchReading average;
    std::vector<J4Chart::Spectrum> spectra;
    std::vector<J4Chart::Colorimetry::Triple> colours;
    std::vector<J4Chart::Densities> densities;
    double squares = 0.0;
    for (const PatchReading& reading : readings) {
        spectra.push_back(reading.spectrum);
        colours.push_back(J4Chart::Colorimetry::Lab(reading.spectrum));
        average.way = std::max(average.way, reading.way);
        average.samples += reading.samples;
        squares += static_cast<double>(reading.samples) * reading.spread * reading.spread;
        if (reading.densities) {
            densities.push_back(*reading.densities);
        }
        average.residual = std::max(average.residual, reading.residual);
    }
    average.spectrum = J4Chart::MeanOf(spectra);
    if (!densities.empty()) {
        average.densities = J4Chart::MeanDensities(densities);
    }
    average.spread = average.samples == 0 ? 0.0 : std::sqrt(squares / static_cast<double>(average.samples));
    average.repeatSpread = J4Chart::MeanDifference(colours).ciede2000;
    return average;
}

}  // namespace J4Tool
