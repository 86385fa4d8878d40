// The bench's time. It is virtual: it moves only when somebody waits, so that a day of measuring takes
// seconds, unless a time scale asks for a real pace.
#pragma once

#include <cstdint>

#include "simulator/ground/BenchApi.h"

namespace J4Bench {

class J4BENCH_API BenchClock {
public:
    /// Microseconds since the bench came to life.
    int64_t Now() const { return now; }

    /// Lets time pass; with a time scale above 0 the calling thread sleeps for microseconds * scale.
    void Advance(int64_t microseconds);

    /// Lets time pass until the given moment; a moment in the past does nothing.
    void AdvanceTo(int64_t moment);

    /// 0: nothing waits (the default). 1: real pace. 2: half speed.
    void SetTimeScale(double scale) { timeScale = scale; }
    double TimeScale() const { return timeScale; }

private:
    int64_t now = 0;
    double timeScale = 0.0;
};

}  // namespace J4Bench
