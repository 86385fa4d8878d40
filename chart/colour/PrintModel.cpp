#include "chart/colour/PrintModel.h"

#include <cmath>
#include <functional>

namespace J4Chart {

namespace {

/// Spreading of light in the paper: solids as they are, middle tones some 15 % darker than their coverage.
constexpr double Spreading = 1.8;

/// From 0 well below a wavelength to 1 well above it; both in nm.
double Above(double wavelength, double edge, double width)
{
    return 1.0 / (1.0 + std::exp((edge - wavelength) / width));
}

double Below(double wavelength, double edge, double width) { return 1.0 - Above(wavelength, edge, width); }

Spectrum Bands(const std::function<double(double)>& value)
{
    Spectrum spectrum{};
    for (size_t band = 0; band < spectrum.size(); ++band) {
        const int wavelength = FirstWavelength + WavelengthStep * static_cast<int>(band);
        spectrum[band] = static_cast<float>(value(wavelength));
    }
    return spectrum;
}

// Densities of solids. On the paper below they come near the usual colours of offset inks: cyan 56/-37/-50, magenta
// 48/73/-4, yellow 90/-5/91 and black 18/0/0 (CIELab, D50).
double CyanDensity(double at) { return 0.044 + 1.53 * Above(at, 563.0, 23.2) + 0.455 * Below(at, 431.0, 6.2); }

double MagentaDensity(double at)
{
    return 1.5 * Above(at, 495.0, 30.0) * Below(at, 597.0, 5.9) + 0.42 * Below(at, 495.0, 30.0);
}

double YellowDensity(double at) { return 0.016 + 1.09 * Below(at, 501.0, 6.8); }

double BlackDensity(double) { return 1.55; }

}  // namespace

const Spectrum& PrintModel::Paper()
{
    static const Spectrum paper = Bands([](double at) { return 0.78 + 0.10 * Above(at, 415.0, 10.0); });
    return paper;
}

PrintModel::PrintModel(const std::vector<ProcessInks>& spots)
{
    for (double (*const density)(double) : {CyanDensity, MagentaDensity, YellowDensity, BlackDensity}) {
        inks.push_back(Bands([density](double at) { return std::pow(10.0, -density(at)); }));
    }
    for (const ProcessInks& spot : spots) {
        Spectrum ink = Print({spot.begin(), spot.end()});
        for (size_t band = 0; band < ink.size(); ++band) {
            ink[band] /= Paper()[band];
        }
        inks.push_back(ink);
    }
}

Spectrum PrintModel::Print(const std::vector<double>& values) const
{
    std::vector<double> coverages = values;
    if (values.size() == 3) {
        coverages = {1.0 - values[0], 1.0 - values[1], 1.0 - values[2]};
    }
    Spectrum print = Paper();
    for (size_t ink = 0; ink < coverages.size(); ++ink) {
        for (size_t band = 0; band < print.size(); ++band) {
            const double solid = std::pow(static_cast<double>(inks[ink][band]), 1.0 / Spreading);
            print[band] *= static_cast<float>(std::pow(1.0 - coverages[ink] * (1.0 - solid), Spreading));
        }
    }
    return print;
}

}  // namespace J4Chart
