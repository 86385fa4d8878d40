// A point on the table's bed, in tenths of a millimetre from the tower's axis, as the table counts.
#pragma once

#include "src/TableFacts.h"

namespace J4Bench {

using Kestrelon::DeviceDriver::J4T::TenthsPerMillimetre;

struct Point {
    double x = 0.0;
    double y = 0.0;
};

}  // namespace J4Bench
