// Makes of a chart's table the one that other software wants: names, scale and bands of the spectra, colours for other
// illuminants and observers, nothing but what is measured.
#pragma once

#include <optional>
#include <string>

#include "chart/Chart.h"
#include "chart/cgats/CgatsTable.h"
#include "chart/colour/ColourConditions.h"

namespace J4Tool {

struct Conversion {
    std::string spectralPrefix = "SPECTRAL_NM";  ///< of the spectral fields' names, before the wavelength
    int spectralScale = 1;                       ///< of the perfect diffuser, 1 or 100
    std::optional<J4Chart::BandRange> bands;     ///< those of the file where it is not given

    /// Colours are computed anew for these; without them the file's own stay, and those that it lacks are computed.
    std::optional<J4Chart::ColourConditions> conditions;

    std::string densityStatus;  ///< what the instrument's densities are (DENSITY_STATUS), empty where nobody says it

    /// Leaves out where patches lie and how they were read.
    bool plain = false;

    /// @param source  the table that the chart was read from
    /// @throws J4Chart::CgatsError, with the line, for what can't be made of it
    J4Chart::CgatsTable Of(const J4Chart::CgatsTable& source, const J4Chart::Chart& chart) const;
};

}  // namespace J4Tool
