// What the fields of a CGATS table are called, and the texts of numbers in it.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "chart/colour/Spectrum.h"

namespace J4Chart {

/// A finite number that is the whole of a text, in whatever locale.
bool ParseNumber(const std::string& text, double& value);

/// The shortest text that reads back as the same number.
std::string NumberText(double value);
std::string NumberText(float value);

/// The same without an exponent, which not every reader takes.
std::string PlainNumberText(double value);
std::string PlainNumberText(float value);

/// The wavelength in nanometres that a field name such as "SPECTRAL_NM380", "nm380" or "SPEC_380" stands for, in
/// capitals or not; -1 for any other field.
int WavelengthOf(const std::string& field);

/// Name of the field for a band, "SPECTRAL_NM380" for 0.
std::string SpectralField(size_t band, const std::string& prefix = "SPECTRAL_NM");

/// For people: "400 to 700 nm".
std::string RangeText(const BandRange& bands);

/// Whether a field or keyword has one of these names.
bool IsOneOf(const std::string& name, std::span<const char* const> names);

/// Whether a field holds an ink or screen value, for instance "CMYK_C" or "6CLR_1".
bool IsDeviceField(const std::string& field);

}  // namespace J4Chart
