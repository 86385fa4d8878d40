// The light of a measurement, as ISO 13655 counts them: M0 to M3 tell how much of a paper's brightener shows.
#pragma once

#include <string>

namespace J4Chart {

/// "M0" to "M3", as one of the two keywords tells it; empty where neither does.
/// @param source     value of MEASUREMENT_SOURCE
/// @param condition  value of MEASUREMENT_CONDITION
inline std::string MeasuringCondition(const std::string& source, const std::string& condition)
{
    for (const char* name : {"M0", "M1", "M2", "M3"}) {
        if (source.find(name) != std::string::npos || condition.find(name) != std::string::npos) {
            return name;
        }
    }
    return {};
}

}  // namespace J4Chart
