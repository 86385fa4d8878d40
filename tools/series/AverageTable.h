// Several measurements of one chart as the file of one, whose patches tell how far the measurements lay apart.
#pragma once

#include "chart/cgats/CgatsTable.h"
#include "tools/series/MeasurementSeries.h"

namespace J4Tool {

/// What the measurements agree in is kept; places are those of the first. CREATED is that of the latest, as far as dates can be read, REPEATS how many
/// measurements there are, and REPEAT_SPREAD of a patch their mean difference (CIEDE2000) from their mean.
/// @param series  with spectra
J4Chart::CgatsTable AverageTable(const MeasurementSeries& series);

}  // namespace J4Tool
