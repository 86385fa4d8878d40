#include "chart/cgats/CgatsFields.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

namespace J4Chart {

namespace {

/// @param form  general where none is given: the shorter of the two
template <class T, class... Form>
std::string ShortestText(T value, Form... form)
{
    char text[400];
    const auto [end, failure] = std::to_chars(text, text + sizeof text, value, form...);
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

std::string PlainNumberText(double value) { return ShortestText(value, std::chars_format::fixed); }

std::string PlainNumberText(float value) { return ShortestText(value, std::chars_format::fixed); }

int WavelengthOf(const std::string& field)
{
    std::string name = field;
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char character) { return static_cast<char>(std::toupper(character)); });
    for (const char* prefix : {"SPECTRAL_NM_", "SPECTRAL_NM", "SPECTRAL_", "SPEC_", "NM_", "NM"}) {
        const std::string start = prefix;
        double wavelength = 0.0;
        if (name.starts_with(start) && ParseNumber(name.substr(start.size()), wavelength)) {
            const bool usable = wavelength == std::floor(wavelength) && wavelength >= 0.0 && wavelength < 1e6;
            return usable ? static_cast<int>(wavelength) : -1;
        }
    }
    return -1;
}

std::string SpectralField(size_t band, const std::string& prefix)
{
    return prefix + std::to_string(FirstWavelength + WavelengthStep * static_cast<int>(band));
}

std::string RangeText(const BandRange& bands)
{
    return SpectralField(bands.first, "") + " to " + SpectralField(bands.last, "") + " nm";
}

bool IsOneOf(const std::string& name, std::span<const char* const> names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool IsDeviceField(const std::string& field)
{
    const auto starts = [&field](const char* prefix) { return field.starts_with(prefix); };
    const bool manyInks = field.size() > 5 && std::isxdigit(static_cast<unsigned char>(field[0])) != 0 &&
                          field.compare(1, 4, "CLR_") == 0;
    const bool spot = starts("SPOT_") && field.find_first_not_of("0123456789", 5) == std::string::npos;
    return starts("RGB_") || starts("CMY_") || starts("CMYK_") || starts("GRAY") || manyInks || spot;
}

}  // namespace J4Chart
