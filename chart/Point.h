// A place in the plane of the bed or of a chart, in millimetres.
#pragma once

namespace J4Chart {

struct Point {
    double x = 0.0;
    double y = 0.0;
};

}  // namespace J4Chart
