// How a row is driven where nobody says otherwise.
#pragma once

namespace J4Chart::ScanMotion {

/// Bare paper between the ends of the travel and the outer patches, mm.
inline constexpr double UsualMargin = 8.0;

/// Of the virtual table, in both ramps; assumed for a table whose acceleration is not known. mm/s².
inline constexpr double UsualAcceleration = 1600.0;

}  // namespace J4Chart::ScanMotion
