#include "tools/report/RowTravel.h"

#include <algorithm>
#include <utility>

#include "chart/MotionProfile.h"
#include "chart/ScanMotion.h"
#include "chart/cgats/CgatsFields.h"

namespace J4Tool {

namespace {

constexpr size_t curvePoints = 201;

// Fewer or more samples are no row's: a wrong integration time must not empty or fill the plot.
constexpr double fewestSamples = 2.0;
constexpr double mostSamples = 20000.0;

}  // namespace

RowTravel::RowTravel(Scan scanned) : scan(std::move(scanned))
{
    const J4Chart::MotionProfile profile(scan.distance, scan.speed,
                                         scan.acceleration.value_or(J4Chart::ScanMotion::UsualAcceleration));
    rampEnd = profile.AccelerationEnd();
    duration = profile.Duration();
    if (scan.integrationTime) {
        const double samples = duration / *scan.integrationTime;
        if (samples < fewestSamples || samples > mostSamples) {
            scan.integrationTime.reset();
        }
    }
    step = scan.integrationTime.value_or(duration / static_cast<double>(curvePoints - 1));
    const size_t count = HasSamples() ? static_cast<size_t>(duration / step) + 1 : curvePoints;
    positions.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        positions.push_back(profile.DistanceAt(static_cast<double>(i) * step));
    }
    scan.notes.push_back("The curve is computed, not recorded: a trapezoid of speed with equal ramps.");
    if (!scan.acceleration) {
        scan.notes.push_back("Assumed acceleration: " + J4Chart::NumberText(J4Chart::ScanMotion::UsualAcceleration) +
                             " mm/s², that of the virtual table; the file does not tell it.");
    }
    scan.notes.push_back(HasSamples() ? "Each mark is where a sample begins, one integration time after the other, "
                                        "the first one at the start of the motion."
                                      : "No samples are marked: their integration time is not known.");
}

}  // namespace J4Tool
