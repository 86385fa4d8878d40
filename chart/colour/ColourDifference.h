// How far a colour lies from its reference: by the formulas that the trade agrees on, and apart for lightness, chroma
// and hue.
#pragma once

#include <array>
#include <string>

#include "chart/colour/Colorimetry.h"

namespace J4Chart::ColourDifference {

using Colorimetry::Triple;

// All take CIELab. CIE 1994 and CMC weigh by the reference, so that they differ when the two change places.

/// CIE 1976, delta E*ab (CIE 15).
double Cie1976(const Triple& reference, const Triple& sample);

/// CIE 1994 (CIE 116) with the weights of the graphic arts: kL 1, K1 0.045, K2 0.015.
double Cie1994(const Triple& reference, const Triple& sample);

/// CMC(l:c), BS 6923.
/// @param l  by which differences of lightness are divided; 2 for acceptability, 1 for perceptibility
/// @param c  the same for chroma
double Cmc(const Triple& reference, const Triple& sample, double l, double c);

/// CIEDE2000 (CIE 142-2001, in the form of Sharma, Wu and Dalal, Color Research and Application 30, 2005) with all
/// three parametric factors 1. The same in both directions.
double Ciede2000(const Triple& first, const Triple& second);

/// Sample less reference. The squares of the three add up to that of CIE 1976.
struct Parts {
    double lightness = 0.0;  ///< dL*
    double chroma = 0.0;     ///< dC*ab
    double hue = 0.0;        ///< dH*ab, above 0 where the hue angle of the sample is larger
};

Parts PartsOf(const Triple& reference, const Triple& sample);

/// A formula under the name by which people and files choose it.
struct Formula {
    const char* name;
    double (*difference)(const Triple& reference, const Triple& sample);
};

/// The usual one first: "CIEDE2000", "CIE 1976", "CIE 1994", "CMC(2:1)", "CMC(1:1)".
extern const std::array<Formula, 5> Formulas;

/// @return nullptr where there is none of the name
const Formula* FindFormula(const std::string& name);

}  // namespace J4Chart::ColourDifference
