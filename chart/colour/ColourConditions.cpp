#include "chart/colour/ColourConditions.h"

#include <cctype>
#include <cmath>
#include <vector>

#include "chart/colour/Interpolation.h"

namespace J4Chart {

namespace {

using Colorimetry::Triple;

/// The relative power of illuminant A, CIE 15.
double PowerOfA(int wavelength)
{
    constexpr double exponent = 1.435e7 / 2848.0;
    const double ratio = 560.0 / wavelength;
    return std::pow(ratio, 5.0) * std::expm1(exponent / 560.0) / std::expm1(exponent / wavelength);
}

double PowerOf(ColourConditions::Illuminant illuminant, int row)
{
    switch (illuminant) {
    case ColourConditions::Illuminant::D50:
        return cieTable[row].d50;
    case ColourConditions::Illuminant::D65:
        return cieTable[row].d65;
    case ColourConditions::Illuminant::F11:
        return cieTable[row].f11;
    default:
        return PowerOfA(CieFirstWavelength + CieRowStep * row);
    }
}

/// The words of a text in capitals: letters, digits, everything else is between them.
std::vector<std::string> WordsOf(const std::string& text)
{
    std::vector<std::string> words;
    bool inWord = false;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (std::isalnum(code) == 0) {
            inWord = false;
            continue;
        }
        if (!inWord) {
            words.emplace_back();
        }
        words.back() += static_cast<char>(std::toupper(code));
        inWord = true;
    }
    return words;
}

/// The digits that a word such as "2" or "10DEG" begins with.
std::string Degrees(const std::string& word) { return word.substr(0, word.find_first_not_of("0123456789")); }

}  // namespace

ColourConditions::ColourConditions(Illuminant illuminant, Observer observer)
    : illuminant(illuminant), observer(observer)
{
    if (AreUsual()) {
        white = Colorimetry::White();
        return;
    }
    std::vector<int> bands;
    for (int band = 0; band < SpectrumLength; ++band) {
        bands.push_back(FirstWavelength + WavelengthStep * band);
    }
    double diffuser = 0.0;
    for (int row = 0; row < CieRows; ++row) {
        const CieRow& cie = cieTable[row];
        const double power = PowerOf(illuminant, row);
        const Triple functions =
            observer == Observer::Degrees2 ? Triple{cie.x, cie.y, cie.z} : Triple{cie.x10, cie.y10, cie.z10};
        diffuser += power * functions[1];
        for (const auto& [band, weight] : Interpolation::TermsAt(CieFirstWavelength + CieRowStep * row, bands)) {
            for (size_t k = 0; k < functions.size(); ++k) {
                weights[band][k] += weight * power * functions[k];
            }
        }
    }
    for (Triple& weight : weights) {
        for (size_t k = 0; k < weight.size(); ++k) {
            weight[k] *= 100.0 / diffuser;
            white[k] += weight[k];
        }
    }
}

std::optional<ColourConditions> ColourConditions::StatedBy(const Chart::Conditions& conditions)
{
    std::optional<size_t> illuminant;
    std::optional<size_t> observer;
    for (const auto& [keyword, value] : conditions) {
        if (keyword != "WEIGHTING_FUNCTION") {
            continue;
        }
        const std::vector<std::string> words = WordsOf(value);
        for (size_t i = 0; i + 1 < words.size(); ++i) {
            for (size_t name = 0; words[i] == "ILLUMINANT" && name < IlluminantNames.size(); ++name) {
                illuminant = words[i + 1] == IlluminantNames[name] ? std::optional(name) : illuminant;
            }
            for (size_t name = 0; words[i] == "OBSERVER" && name < ObserverNames.size(); ++name) {
                observer = Degrees(words[i + 1]) == ObserverNames[name] ? std::optional(name) : observer;
            }
        }
    }
    if (!illuminant || !observer) {
        return std::nullopt;
    }
    return ColourConditions(static_cast<Illuminant>(*illuminant), static_cast<Observer>(*observer));
}

std::string ColourConditions::Text() const
{
    return "ILLUMINANT," + IlluminantName() + ";OBSERVER," + ObserverName() + " degree";
}

Triple ColourConditions::TristimulusValues(const Spectrum& reflectance) const
{
    if (AreUsual()) {
        return Colorimetry::TristimulusValues(reflectance);
    }
    Triple sums{};
    for (size_t band = 0; band < reflectance.size(); ++band) {
        for (size_t k = 0; k < sums.size(); ++k) {
            sums[k] += weights[band][k] * static_cast<double>(reflectance[band]);
        }
    }
    return sums;
}

Triple ColourConditions::LabOfTristimulus(const Triple& values) const
{
    return Colorimetry::LabOfTristimulus(values, white);
}

Triple ColourConditions::Lab(const Spectrum& reflectance) const
{
    return LabOfTristimulus(TristimulusValues(reflectance));
}

}  // namespace J4Chart
