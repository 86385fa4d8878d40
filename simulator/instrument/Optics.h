// What falls on an instrument's sensor: the light of its own lamp that comes back from whatever lies under
// the aperture while it integrates.
#pragma once

#include <cstdint>
#include <string>

#include "simulator/chart/PrintedChart.h"
#include "simulator/ground/Faults.h"
#include "simulator/ground/Seats.h"
#include "simulator/ground/Spectrum.h"
#include "simulator/instrument/Noise.h"

namespace J4Bench {

class Optics {
public:
    /// Share of the light that is left when the instrument does not sit tight.
    static constexpr double LooseShare = 0.8;

    /// All of them must live as long as the optics.
    Optics(Seats& seats, const Faults& faults, const PrintedChart& chart, Noise& noise)
        : seats(seats), faults(faults), chart(chart), noise(noise)
    {}

    /// The light that comes back to an instrument, as a share of what the perfect diffuser gives back, mean
    /// over an interval of the bench's clock: the spot is looked at at three moments, so that what a moving
    /// aperture smears is smeared here. Its lamp is seen by the table that it sits in.
    /// @param rest     reflectance under an instrument that sits in no table
    /// @param samples  number of samples that are averaged, which lowers the noise
    Spectrum Light(const std::string& serial, const Spectrum& rest, int64_t begin, int64_t end, int samples);

    /// What a reading is multiplied by, this many microseconds after the calibration.
    double Drift(int64_t elapsed) const;

    /// Standard deviation of each band of the light of one sample.
    double SampleNoise() const { return noise.Deviation(); }

private:
    Spectrum OnTable(Carriage& carriage, int64_t begin, int64_t end) const;

    Seats& seats;
    const Faults& faults;
    const PrintedChart& chart;
    Noise& noise;
};

}  // namespace J4Bench
