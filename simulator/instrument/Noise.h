// The noise of every measurement on the bench: none until it is asked for, and the same for the same seed on
// all platforms.
#pragma once

#include <cstdint>
#include <random>

#include "simulator/ground/Spectrum.h"

namespace J4Bench {

class Noise {
public:
    /// Standard deviation of each band of one sample, as a reflectance; 0: none.
    double Deviation() const { return deviation; }
    void SetDeviation(double value) { deviation = value; }

    /// Starts the noise anew.
    uint32_t Seed() const { return seed; }
    void SetSeed(uint32_t value);

    /// @param samples  number of samples whose mean the light is
    void AddTo(Spectrum& light, int samples);

private:
    /// One value of the standard normal distribution, by Box and Muller's formula.
    double NormalDeviate();

    double deviation = 0.0;
    uint32_t seed = 1;
    std::mt19937 generator{seed};
};

}  // namespace J4Bench
