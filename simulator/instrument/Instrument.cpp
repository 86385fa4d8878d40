#include "simulator/instrument/Instrument.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace J4Bench {

namespace {

constexpr size_t FirstSerial = 240117;
constexpr int64_t FirstCleanWhiteTime = 5000;  // microseconds
constexpr double CleanWhite = 0.91;            // mean reflectance on which the integration time is set

double Mean(const Spectrum& spectrum)
{
    return std::accumulate(spectrum.begin(), spectrum.end(), 0.0) / static_cast<double>(spectrum.size());
}

}  // namespace

Instrument::Instrument(size_t index)
    : serial(std::to_string(FirstSerial + index)),
      cleanWhiteTime(FirstCleanWhiteTime + 40 * static_cast<int64_t>(index % 8))
{
    const double level = 0.945 - 0.002 * static_cast<double>(index % 8);
    for (int band = 0; band < SpectrumLength; ++band) {
        // Opal glass: falls off gently towards the violet. Four decimals, as the option shows it.
        const double value = level - 0.05 * std::exp(-WavelengthStep * band / 80.0);
        whiteReference[static_cast<size_t>(band)] = static_cast<float>(std::round(value * 10000.0) / 10000.0);
    }
}

Outcome Instrument::Calibrate(Optics& optics, BenchClock& clock)
{
    const int64_t begin = clock.Now();
    clock.Advance(CalibrationTime);
    if (mode == Mode::SingleEmission) {
        Current().integrationTime = cleanWhiteTime;  // a dark measurement, no white needed
        return {};
    }
    const Spectrum light = optics.Light(serial, whiteReference, begin, clock.Now(), AveragedSamples);
    if (*std::min_element(light.begin(), light.end()) < LeastWhite) {
        return {Status::CalibrationFailed, "There is no white under the instrument."};
    }
    Current().whiteLight = light;
    Current().calibrated = clock.Now();
    Current().integrationTime = std::llround(static_cast<double>(cleanWhiteTime) * CleanWhite / Mean(light));
    return {};
}

Outcome Instrument::Measure(Optics& optics, BenchClock& clock, Spectrum& result)
{
    const int64_t begin = clock.Now();
    clock.Advance(SingleMeasurementTime);
    if (mode == Mode::SingleEmission) {
        result.fill(0.0f);  // nothing on the bench shines by itself
        return {};
    }
    const Spectrum light = optics.Light(serial, whiteReference, begin, clock.Now(), AveragedSamples);
    if (!Current().whiteLight) {
        return NotCalibrated();
    }
    result = Drifted(light, optics, clock);
    return {};
}

Outcome Instrument::StartScan(Optics& optics, BenchClock& clock)
{
    if (mode == Mode::SingleEmission) {
        return {Status::NotInThisMode, "A counted scan needs a reflectance mode."};
    }
    const int64_t begin = clock.Now();
    clock.Advance(ScanStartUpTime);
    optics.Light(serial, whiteReference, begin, clock.Now(), 1);
    return Current().whiteLight ? Outcome() : NotCalibrated();
}

Spectrum Instrument::NextSample(Optics& optics, BenchClock& clock)
{
    const int64_t begin = clock.Now();
    clock.Advance(Current().integrationTime);
    return Drifted(optics.Light(serial, whiteReference, begin, clock.Now(), 1), optics, clock);
}

Spectrum Instrument::SampleNoise(const Optics& optics) const
{
    Spectrum light{};
    if (!Current().whiteLight) {
        return light;
    }
    light.fill(static_cast<float>(optics.SampleNoise()));
    return Reflectance(light);
}

void Instrument::Forget() { states = {}; }

Outcome Instrument::NotCalibrated() const
{
    return {Status::NotCalibrated,
            "Instrument " + serial + " is not calibrated in the mode " + ModeNames[static_cast<size_t>(mode)] + "."};
}

Spectrum Instrument::Reflectance(const Spectrum& light) const
{
    const ModeState& state = Current();
    Spectrum result{};
    for (size_t band = 0; band < result.size(); ++band) {
        result[band] = light[band] / (*state.whiteLight)[band] * whiteReference[band];
        if (state.correction) {
            result[band] *= (*state.correction)[band];
        }
    }
    return result;
}

Spectrum Instrument::Drifted(const Spectrum& light, const Optics& optics, const BenchClock& clock) const
{
    Spectrum result = Reflectance(light);
    const double drift = optics.Drift(clock.Now() - Current().calibrated);
    for (float& value : result) {
        value = static_cast<float>(value * drift);
    }
    return result;
}

}  // namespace J4Bench
