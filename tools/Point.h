// A place on the bed, in millimetres.
#pragma once

#include "chart/Point.h"

namespace J4Tool {

using J4Chart::Point;

}  // namespace J4Tool
