#include "simulator/ground/BenchClock.h"

#include <chrono>
#include <thread>

namespace J4Bench {

void BenchClock::Advance(int64_t microseconds)
{
    if (microseconds <= 0) {
        return;
    }
    now += microseconds;
    if (timeScale > 0.0) {
        std::this_thread::sleep_for(std::chrono::duration<double, std::micro>(microseconds * timeScale));
    }
}

void BenchClock::AdvanceTo(int64_t moment) { Advance(moment - now); }

}  // namespace J4Bench
