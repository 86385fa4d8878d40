// What was measured of one patch, and how.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "chart/colour/Densities.h"
#include "chart/colour/Spectrum.h"

namespace J4Tool {

/// How a row was read.
enum class ReadingWay {
    Recognised,  ///< by the instrument's own patch recognition
    Fitted,      ///< by raw samples and the layout
    Spot,        ///< by single measurements
};

/// As they stand in files, in the order of ReadingWay.
inline constexpr std::array<std::string_view, 3> WayNames = {"RECOGNISED", "FITTED", "SPOT"};

/// For people, in the same order.
inline constexpr std::array<const char*, 3> WayWords = {"by recognition", "by a fit of raw samples", "by spots"};

/// What a file says of the way, for people.
inline std::string WordsOfWay(const std::string& name)
{
    const auto known = std::find(WayNames.begin(), WayNames.end(), name);
    return known == WayNames.end() ? name : WayWords[static_cast<size_t>(known - WayNames.begin())];
}

struct PatchReading {
    J4Chart::Spectrum spectrum{};
    ReadingWay way = ReadingWay::Recognised;
    size_t samples = 0;         ///< that were averaged; 0 where the instrument does not tell
    double spread = 0.0;        ///< of these samples, CIE 1976, root mean square
    double residual = 0.0;      ///< of the row's edges, mm; 0 unless the row was fitted
    double repeatSpread = 0.0;  ///< of the scans that were averaged from their mean, CIEDE2000; 0 for a single one
    std::optional<J4Chart::Densities> densities{};  ///< where they were asked for

    bool operator==(const PatchReading&) const = default;
};

}  // namespace J4Tool
