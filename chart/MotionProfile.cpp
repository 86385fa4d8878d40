#include "chart/MotionProfile.h"

#include <algorithm>
#include <cmath>

namespace J4Chart {

MotionProfile::MotionProfile(double distance, double speed, double acceleration) : distance(distance)
{
    if (distance <= 0.0) {
        return;
    }
    plateauSpeed = std::min(speed, std::sqrt(distance * acceleration));
    accelerationEnd = plateauSpeed / acceleration;
    // Two equal ramps cover what one of them would at full speed, so the whole way takes distance / speed plus
    // one ramp, and the second ramp starts one ramp before that.
    decelerationStart = distance / plateauSpeed;
}

double MotionProfile::DistanceAt(double seconds) const
{
    if (seconds <= 0.0) {
        return 0.0;
    }
    if (seconds >= Duration()) {
        return distance;
    }
    if (seconds <= accelerationEnd) {
        return 0.5 * seconds * seconds * plateauSpeed / accelerationEnd;
    }
    if (seconds <= decelerationStart) {
        return (seconds - 0.5 * accelerationEnd) * plateauSpeed;
    }
    const double left = Duration() - seconds;
    return distance - 0.5 * left * left * plateauSpeed / accelerationEnd;
}

}  // namespace J4Chart
