// A place on the bed, in millimetres.
#pragma once

#include "chart/Point.h"

namespace J4Tool {

using J4Chart::Distance;
using J4Chart::Dot;
using J4Chart::Length;
using J4Chart::Minus;
using J4Chart::Plus;
using J4Chart::Point;
using J4Chart::Times;
using J4Chart::Unit;

}  // namespace J4Tool
