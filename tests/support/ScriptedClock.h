// The library's clock in the hands of a test: time stands still unless something moves it, and every pause
// is written down instead of waited for.
#pragma once

#include <cstdint>
#include <vector>

namespace J4Test {

struct ScriptedClock {
    static inline uint32_t now = 0;              ///< milliseconds
    static inline std::vector<uint32_t> sleeps;  ///< of the library, in milliseconds

    static void Advance(uint32_t milliseconds) { now += milliseconds; }
    static void Reset(uint32_t start = 0)
    {
        now = start;
        sleeps.clear();
    }
};

}  // namespace J4Test
