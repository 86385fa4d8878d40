// One virtual spectrophotometer: its serial number, its modes, its own white reference, and for each mode
// what it learnt at the calibration and the correction that it was given.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "simulator/ground/BenchClock.h"
#include "simulator/ground/Spectrum.h"
#include "simulator/instrument/Optics.h"
#include "simulator/instrument/Status.h"

namespace J4Bench {

enum class Mode { SingleReflectance, ScanningReflectance, SingleEmission };

inline constexpr std::array<const char*, 3> ModeNames{"SingleReflectance", "ScanningReflectance", "SingleEmission"};

class Instrument {
public:
    static constexpr int64_t CalibrationTime = 800000;        ///< microseconds
    static constexpr int64_t SingleMeasurementTime = 200000;  ///< microseconds

    /// A calibration and a single measurement are the mean of so many samples.
    static constexpr int AveragedSamples = 100;

    /// Time from the trigger of a counted scan to the begin of its first sample, microseconds: the lamp warms
    /// up. The table's library needs about 30 ms to ask for the ramp data before it triggers, so that with the
    /// table's usual delay of 200 ms the first sample falls on the start of the motion.
    static constexpr int64_t ScanStartUpTime = 170000;

    /// With less light than this in any band the instrument does not believe that it sees a white.
    static constexpr double LeastWhite = 0.5;

    /// @param index  place on the rack; instruments differ a little
    explicit Instrument(size_t index);

    /// Decimal, fits into a signed 32-bit number.
    const std::string& Serial() const { return serial; }

    /// Reflectance of the instrument's own white, which it takes every white for that it calibrates on.
    const Spectrum& WhiteReference() const { return whiteReference; }

    /// Has gone from the bus.
    bool unplugged = false;

    /// The current mode.
    Mode mode = Mode::SingleReflectance;

    /// Microseconds; 0 before the current mode's calibration.
    int64_t IntegrationTime() const { return Current().integrationTime; }

    /// Calibrates the current mode on whatever lies under the aperture.
    Outcome Calibrate(Optics& optics, BenchClock& clock);

    /// One measurement in the current mode. The lamp is on even where the status says that the mode is not
    /// calibrated.
    Outcome Measure(Optics& optics, BenchClock& clock, Spectrum& result);

    /// Whether a counted scan can start in the current mode; ends the preparation with the lamp warm.
    Outcome StartScan(Optics& optics, BenchClock& clock);

    /// The next sample of a scan that StartScan has allowed; takes the integration time.
    Spectrum NextSample(Optics& optics, BenchClock& clock);

    /// Standard deviation of each band of a sample of such a scan; none before the calibration.
    Spectrum SampleNoise(const Optics& optics) const;

    /// Every later result of the current mode is multiplied by the correction.
    void SetCorrection(const std::optional<Spectrum>& correction) { Current().correction = correction; }

    /// Forgets calibrations and corrections.
    void Forget();

private:
    struct ModeState {
        std::optional<Spectrum> whiteLight;  ///< the light at the calibration
        std::optional<Spectrum> correction;
        int64_t integrationTime = 0;
        int64_t calibrated = 0;  ///< end of the calibration, on the bench's clock
    };

    ModeState& Current() { return states[static_cast<size_t>(mode)]; }
    const ModeState& Current() const { return states[static_cast<size_t>(mode)]; }
    Outcome NotCalibrated() const;
    Spectrum Reflectance(const Spectrum& light) const;

    /// With the drift since the calibration.
    Spectrum Drifted(const Spectrum& light, const Optics& optics, const BenchClock& clock) const;

    std::string serial;
    Spectrum whiteReference{};
    int64_t cleanWhiteTime;  ///< integration time on a clean white, microseconds
    std::array<ModeState, ModeNames.size()> states;
};

}  // namespace J4Bench
