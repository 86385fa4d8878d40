// Times two ways of doing the same thing in alternation, so that both see the same machine.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>

/// One sample is `repeats` runs of each; the counters give nanoseconds per run and their ratio.
template <class First, class Second>
void SideBySide(benchmark::State& state, int repeats, const char* firstName, First first, const char* secondName,
                Second second)
{
    using Clock = std::chrono::steady_clock;
    std::chrono::duration<double, std::nano> firstTime{};
    std::chrono::duration<double, std::nano> secondTime{};
    for (auto unused : state) {
        (void)unused;
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < repeats; ++i) {
            first();
        }
        const Clock::time_point middle = Clock::now();
        for (int i = 0; i < repeats; ++i) {
            second();
        }
        const Clock::time_point end = Clock::now();
        firstTime += middle - start;
        secondTime += end - middle;
        state.SetIterationTime(std::chrono::duration<double>(end - start).count());
    }
    const double runs = static_cast<double>(state.iterations()) * repeats;
    state.counters[std::string(firstName) + "_ns"] = firstTime.count() / runs;
    state.counters[std::string(secondName) + "_ns"] = secondTime.count() / runs;
    state.counters["difference_ns"] = (secondTime - firstTime).count() / runs;
    state.counters["ratio"] = secondTime / firstTime;
}
