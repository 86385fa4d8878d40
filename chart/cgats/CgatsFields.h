// What the fields of a CGATS table are called, and the texts of numbers in it.
#pragma once

#include <array>
#include <string>

#include "chart/cgats/CgatsTable.h"
#include "chart/colour/Spectrum.h"

namespace J4Chart {

/// A finite number that is the whole of a text, in whatever locale.
bool ParseNumber(const std::string& text, double& value);

/// The shortest text that reads back as the same number.
std::string NumberText(double value);
std::string NumberText(float value);

/// The wavelength in nanometres that a field name such as "SPECTRAL_NM380", "NM_380" or "SPEC_380" stands for;
/// -1 for any other field.
int WavelengthOf(const std::string& field);

/// Name of the field for a band, "SPECTRAL_NM380" for 0.
std::string SpectralField(size_t band);

/// The field of each band of the spectrum; -1 where the table has none.
std::array<int, SpectrumLength> FindSpectralFields(const CgatsTable& table);

}  // namespace J4Chart
