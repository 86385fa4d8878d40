// Speed over time of one straight motion: a trapezoid with equal ramps of constant acceleration. A motion too
// short to reach its speed becomes a triangle.
#pragma once

namespace J4Chart {

class MotionProfile {
public:
    /// A motion of no length, over at once.
    MotionProfile() = default;

    /// The unit of length is the caller's, the same for all three; times are seconds.
    /// @param distance      0 or more
    /// @param speed         per second, above 0
    /// @param acceleration  per second squared, above 0
    MotionProfile(double distance, double speed, double acceleration);

    /// Seconds from the start of the motion.
    double AccelerationEnd() const { return accelerationEnd; }
    double DecelerationStart() const { return decelerationStart; }
    double Duration() const { return accelerationEnd + decelerationStart; }

    double Distance() const { return distance; }

    /// The highest speed that is reached.
    double PlateauSpeed() const { return plateauSpeed; }

    /// Way gone this many seconds after the start; 0 before it, the whole distance after the end.
    double DistanceAt(double seconds) const;

private:
    double distance = 0.0;
    double plateauSpeed = 0.0;
    double accelerationEnd = 0.0;
    double decelerationStart = 0.0;
};

}  // namespace J4Chart
