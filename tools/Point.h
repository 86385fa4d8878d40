// A place on the bed, in millimetres.
#pragma once

namespace J4Tool {

struct Point {
    double x = 0.0;
    double y = 0.0;
};

}  // namespace J4Tool
