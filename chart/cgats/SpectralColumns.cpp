#include "chart/cgats/SpectralColumns.h"

#include <algorithm>
#include <iterator>

#include "chart/cgats/CgatsFields.h"

namespace J4Chart {

namespace {

// Fields beyond these have no part in any band.
constexpr int shortest = FirstWavelength - SpectralColumns::LargestStep;
constexpr int longest = FirstWavelength + WavelengthStep * (SpectrumLength - 1) + SpectralColumns::LargestStep;

constexpr int WavelengthOfBand(size_t band) { return FirstWavelength + WavelengthStep * static_cast<int>(band); }

}  // namespace

SpectralColumns::SpectralColumns(const CgatsTable& table)
{
    for (size_t field = 0; field < table.fields.size(); ++field) {
        const int wavelength = WavelengthOf(table.fields[field]);
        if (wavelength >= shortest && wavelength <= longest) {
            columns.push_back({wavelength, field});
        }
    }
    std::stable_sort(columns.begin(), columns.end(),
                     [](const Column& left, const Column& right) { return left.wavelength < right.wavelength; });
    std::vector<int> wavelengths;
    std::transform(columns.begin(), columns.end(), std::back_inserter(wavelengths),
                   [](const Column& column) { return column.wavelength; });
    for (size_t band = 0; band < terms.size() && missing.empty(); ++band) {
        if (!std::binary_search(wavelengths.begin(), wavelengths.end(), WavelengthOfBand(band))) {
            missing = "the field " + SpectralField(band) + " is missing";
        }
    }
    fault = FindFault();
    for (size_t band = 0; band < terms.size() && fault.empty(); ++band) {
        terms[band] = Interpolation::TermsAt(WavelengthOfBand(band), wavelengths);
    }
}

std::string SpectralColumns::FindFault() const
{
    if (columns.empty()) {
        return missing;
    }
    const auto range = [](int first, int last) {
        return std::to_string(first) + " to " + std::to_string(last) + " nm";
    };
    const auto [first, last] = std::pair(columns.front().wavelength, columns.back().wavelength);
    if (first > LeastFirst || last < LeastLast) {
        return "the spectra have " + range(first, last) + " and do not cover " + range(LeastFirst, LeastLast);
    }
    for (size_t i = 1; i < columns.size(); ++i) {
        const auto [before, behind] = std::pair(columns[i - 1].wavelength, columns[i].wavelength);
        const bool matters = behind > FirstWavelength && before < WavelengthOfBand(SpectrumLength - 1);
        if (matters && behind - before > LargestStep) {
            return "the spectra have nothing between " + std::to_string(before) + " and " + std::to_string(behind) +
                   " nm; steps up to " + std::to_string(LargestStep) + " nm are taken";
        }
    }
    return {};
}

BandRange SpectralColumns::Bands() const
{
    BandRange bands;
    while (WavelengthOfBand(bands.first) < columns.front().wavelength) {
        ++bands.first;
    }
    while (WavelengthOfBand(bands.last) > columns.back().wavelength) {
        --bands.last;
    }
    return bands;
}

Spectrum SpectralColumns::SpectrumOf(const std::vector<double>& values) const
{
    Spectrum spectrum{};
    for (size_t band = 0; band < spectrum.size(); ++band) {
        double sum = 0.0;
        for (const auto& [sample, weight] : terms[band]) {
            sum += weight * values[sample];
        }
        spectrum[band] = static_cast<float>(sum);
    }
    return spectrum;
}

}  // namespace J4Chart
