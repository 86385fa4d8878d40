// The columns that files of measured data have in common, as they are written: places, rows, colours and spectra.
#pragma once

#include <string>
#include <vector>

#include "chart/Chart.h"

namespace J4Tool {

namespace MeasuredColumns {

inline constexpr int ColourDigits = 4;
inline constexpr int PlaceDigits = 3;  ///< of mm

/// X, Y, WIDTH, HEIGHT.
void AddPlaceFields(std::vector<std::string>& fields);
void AddPlace(std::vector<std::string>& values, const J4Chart::Place& place);

/// SCAN_ROW, SCAN_COLUMN.
void AddRowFields(std::vector<std::string>& fields);
void AddRow(std::vector<std::string>& values, const J4Chart::Chart::RowPlace& place);

/// D_RED, D_GREEN, D_BLUE, D_VIS.
void AddDensityFields(std::vector<std::string>& fields);
void AddDensities(std::vector<std::string>& values, const J4Chart::Densities& densities);

/// XYZ, Lab and the spectrum.
void AddColourFields(std::vector<std::string>& fields);
void AddColour(std::vector<std::string>& values, const J4Chart::Spectrum& spectrum);

}  // namespace MeasuredColumns

}  // namespace J4Tool
