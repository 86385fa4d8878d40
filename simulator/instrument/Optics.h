// What falls on an instrument's sensor: the light of its own lamp that comes back from whatever lies under
// the aperture while it integrates.
#pragma once

#include <cstdint>
#include <random>
#include <string>

#include "simulator/chart/Chart.h"
#include "simulator/ground/Spectrum.h"

namespace J4Bench {

class Bench;

class Optics {
public:
    /// Share of the light that is left when the instrument does not sit tight.
    static constexpr double LooseShare = 0.8;

    explicit Optics(Bench& bench) : bench(bench) {}

    /// The light that comes back to an instrument, as a share of what the perfect diffuser gives back, mean
    /// over an interval of the bench's clock: the spot is looked at at three moments, so that what a moving
    /// aperture smears is smeared here. Its lamp is seen by the table that it sits in.
    /// @param rest  reflectance under an instrument that sits in no table
    Spectrum Light(const std::string& serial, const Spectrum& rest, int64_t begin, int64_t end);

    Chart& GetChart() { return chart; }

    /// Standard deviation of each band of each measurement, as a reflectance; 0: none.
    double Noise() const { return noise; }
    void SetNoise(double deviation) { noise = deviation; }

    /// Starts the noise anew.
    uint32_t NoiseSeed() const { return seed; }
    void SetNoiseSeed(uint32_t value);

private:
    /// One value of the standard normal distribution, by Box and Muller's formula: the same on all platforms.
    double NormalDeviate();

    Bench& bench;
    Chart chart;
    double noise = 0.0;
    uint32_t seed = 1;
    std::mt19937 generator{seed};
};

}  // namespace J4Bench
