// The colour in which a screen shows a measured patch.
#pragma once

#include <string>

#include "chart/colour/Colorimetry.h"

namespace J4Chart {

struct ScreenColour {
    std::string code;     ///< "#rrggbb", sRGB
    bool inGamut = true;  ///< false: the nearest value of each channel stands for a colour that no sRGB screen shows
};

/// From CIELab under D50 to sRGB (IEC 61966-2-1, D65), adapted with the Bradford matrix of ICC.1.
ScreenColour ScreenColourOf(const Colorimetry::Triple& lab);

}  // namespace J4Chart
