#include "chart/cgats/CgatsFields.h"

#include <charconv>
#include <cmath>

namespace J4Chart {

namespace {

template <class T>
std::string ShortestText(T value)
{
    char text[64];
    const auto [end, failure] = std::to_chars(text, text + sizeof text, value);
    return failure == std::errc() ? std::string(text, end) : std::string();
}

}  // namespace

bool ParseNumber(const std::string& text, double& value)
{
    const char* const first = text.data() + (text.starts_with('+') && !text.starts_with("+-") ? 1 : 0);
    const char* const last = text.data() + text.size();
    const auto [end, failure] = std::from_chars(first, last, value);
    return failure == std::errc() && end == last && std::isfinite(value);
}

std::string NumberText(double value) { return ShortestText(value); }

std::string NumberText(float value) { return ShortestText(value); }

int WavelengthOf(const std::string& field)
{
    for (const char* prefix : {"SPECTRAL_NM_", "SPECTRAL_NM", "SPECTRAL_", "SPEC_", "NM_", "NM"}) {
        const std::string start = prefix;
        double wavelength = 0.0;
        if (field.starts_with(start) && ParseNumber(field.substr(start.size()), wavelength)) {
            const bool usable = wavelength == std::floor(wavelength) && wavelength >= 0.0 && wavelength < 1e6;
            return usable ? static_cast<int>(wavelength) : -1;
        }
    }
    return -1;
}

std::string SpectralField(size_t band)
{
    return "SPECTRAL_NM" + std::to_string(FirstWavelength + WavelengthStep * static_cast<int>(band));
}

std::array<int, SpectrumLength> FindSpectralFields(const CgatsTable& table)
{
    std::array<int, SpectrumLength> bands;
    bands.fill(-1);
    for (size_t i = 0; i < table.fields.size(); ++i) {
        const int fromFirst = WavelengthOf(table.fields[i]) - FirstWavelength;
        if (fromFirst >= 0 && fromFirst % WavelengthStep == 0 && fromFirst / WavelengthStep < SpectrumLength) {
            bands[static_cast<size_t>(fromFirst / WavelengthStep)] = static_cast<int>(i);
        }
    }
    return bands;
}

}  // namespace J4Chart
