#include "tools/Units.h"

#include <cstdio>

namespace J4Tool {

std::string Units::Text(double millimetres) const
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*f %s", unit == Unit::Inch ? 3 : 1, FromMillimetres(millimetres), Name());
    return text;
}

}  // namespace J4Tool
