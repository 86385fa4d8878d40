#include "chart/colour/ColourConditions.h"

#include <algorithm>
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

/// What a file tells of its colours, in capitals; empty where it does not.
struct Stated {
    std::string illuminant;
    std::string observer;
};

Stated StatedIn(const Chart::Conditions& conditions)
{
    Stated stated;
    for (const auto& [keyword, value] : conditions) {
        const std::vector<std::string> words =
            keyword == "WEIGHTING_FUNCTION" ? WordsOf(value) : std::vector<std::string>();
        for (size_t i = 0; i + 1 < words.size(); ++i) {
            if (words[i] == "ILLUMINANT") {
                stated.illuminant = words[i + 1];
            } else if (words[i] == "OBSERVER") {
                stated.observer = Degrees(words[i + 1]);
            }
        }
    }
    return stated;
}

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
    const Stated stated = StatedIn(conditions);
    const auto indexOf = [](const std::string& name, const auto& names) {
        return static_cast<size_t>(std::find(names.begin(), names.end(), name) - names.begin());
    };
    const size_t illuminant = indexOf(stated.illuminant, IlluminantNames);
    const size_t observer = indexOf(stated.observer, ObserverNames);
    if (illuminant == IlluminantNames.size() || observer == ObserverNames.size()) {
        return std::nullopt;
    }
    return ColourConditions(static_cast<Illuminant>(illuminant), static_cast<Observer>(observer));
}

bool ColourConditions::AreStatedOtherwise(const Chart::Conditions& conditions) const
{
    const Stated stated = StatedIn(conditions);
    return (!stated.illuminant.empty() && stated.illuminant != IlluminantName()) ||
           (!stated.observer.empty() && stated.observer != ObserverName());
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
