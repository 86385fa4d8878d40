// One motion of the sensor: a straight line on the bed, run along with a speed profile from a moment on. After
// it the sensor stands at the end, before it at the start.
#pragma once

#include <cstdint>

#include "chart/MotionProfile.h"
#include "simulator/ground/Point.h"

namespace J4Bench {

class Motion {
public:
    /// The arm at rest.
    explicit Motion(Point place) : start(place), end(place) {}

    /// @param begin         microseconds of the bench's clock
    /// @param speed         tenths of a millimetre per second, above 0
    /// @param acceleration  tenths of a millimetre per second squared, above 0
    Motion(Point start, Point end, int64_t begin, double speed, double acceleration);

    /// Ends the motion early: from this moment on the sensor stays where it is.
    void StopAt(int64_t moment);

    Point PositionAt(int64_t moment) const;

    /// Way that is gone at a moment, tenths of a millimetre.
    double DistanceAt(int64_t moment) const;

    const J4Chart::MotionProfile& Profile() const { return profile; }
    int64_t Begin() const { return begin; }
    int64_t End() const { return stop; }

private:
    Point start;
    Point end;
    int64_t begin = 0;
    int64_t stop = 0;
    J4Chart::MotionProfile profile;
};

}  // namespace J4Bench
