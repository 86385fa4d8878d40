// A point on the table's bed, in tenths of a millimetre from the tower's axis, as the table counts.
#pragma once

namespace J4Bench {

/// Charts and people count in millimetres.
inline constexpr double TenthsPerMillimetre = 10.0;

struct Point {
    double x = 0.0;
    double y = 0.0;
};

}  // namespace J4Bench
