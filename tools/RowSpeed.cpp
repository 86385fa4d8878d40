#include "tools/RowSpeed.h"

#include <algorithm>
#include <cmath>

#include "tools/LineFit.h"
#include "tools/LineScan.h"

namespace J4Tool {

int RowSpeed::For(double patch) const
{
    if (chosen > 0) {
        return chosen;
    }
    // What is left of a patch beside aperture and blur holds the samples; the blur is the way of one sample.
    const double flat = patch - LineFit::Aperture - 2.0 * LineFit::Guard;
    const double fastest = flat / ((LeastSamples + 1) * integrationTime);
    constexpr double slowest = 10.0;
    return static_cast<int>(std::floor(std::clamp(fastest, slowest, static_cast<double>(Fastest))));
}

double RowSpeed::Margin(int speed)
{
    constexpr double room = 3.0;  // mm, for a chart that does not lie quite where it should
    return LineScan::Ramp(speed) + 0.5 * LineFit::Aperture + room;
}

}  // namespace J4Tool
