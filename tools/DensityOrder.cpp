#include "tools/DensityOrder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "chart/colour/Colorimetry.h"

namespace J4Tool {

namespace {

using J4Chart::Densities;
constexpr size_t Filters = std::tuple_size_v<Densities>;

/// Which density of the instrument is taken for each of the filters.
using Order = std::array<size_t, Filters>;

/// Roughly what any red, green, blue and visual filter sees: enough to tell them apart.
Densities RoughDensities(const J4Chart::Spectrum& spectrum)
{
    constexpr double darkest = 1e-4;
    constexpr std::array<std::array<int, 2>, 3> bands = {{{600, 700}, {500, 590}, {400, 490}}};  // nm
    Densities densities{};
    for (size_t filter = 0; filter < bands.size(); ++filter) {
        double sum = 0.0;
        const auto [first, last] = bands[filter];
        for (int wavelength = first; wavelength <= last; wavelength += J4Chart::WavelengthStep) {
            sum += static_cast<double>(
                spectrum[static_cast<size_t>((wavelength - J4Chart::FirstWavelength) / J4Chart::WavelengthStep)]);
        }
        const int count = (last - first) / J4Chart::WavelengthStep + 1;
        densities[filter] = -std::log10(std::max(darkest, sum / count));
    }
    densities.back() = -std::log10(std::max(darkest, J4Chart::Colorimetry::TristimulusValues(spectrum)[1] / 100.0));
    return densities;
}

}  // namespace

std::string DensityOrderDoubt(const Measurements& measurements)
{
    // How far each of the instrument's densities is from each rough one, root mean square.
    std::array<Densities, Filters> squares{};
    double count = 0.0;
    for (const auto& reading : measurements) {
        if (reading && reading->densities) {
            const Densities rough = RoughDensities(reading->spectrum);
            for (size_t told = 0; told < Filters; ++told) {
                for (size_t filter = 0; filter < Filters; ++filter) {
                    squares[told][filter] += std::pow((*reading->densities)[told] - rough[filter], 2.0);
                }
            }
            ++count;
        }
    }
    const auto distance = [&](const Order& order) {
        double sum = 0.0;
        for (size_t filter = 0; filter < Filters; ++filter) {
            sum += squares[order[filter]][filter];
        }
        return std::sqrt(sum / (count * Filters));
    };
    constexpr Order taken = {0, 1, 2, 3};
    constexpr double usual = 0.15;  // between filters of different standards
    constexpr double clearlyBetter = 0.5;
    if (count == 0.0 || distance(taken) < usual) {
        return {};
    }
    Order order = taken;
    Order best = taken;
    while (std::next_permutation(order.begin(), order.end())) {
        best = distance(order) < distance(best) ? order : best;
    }
    if (distance(best) > clearlyBetter * distance(taken)) {
        return {};
    }
    std::string names;
    for (const size_t told : best) {
        names += (names.empty() ? "" : ", ") + std::to_string(told + 1);
    }
    return "by the spectra the instrument tells its densities in another order: red, green, blue and visual are its "
           "numbers " +
           names + "; the file has them as 1, 2, 3, 4";
}

}  // namespace J4Tool
