#include "tools/Agreement.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "chart/colour/Average.h"
#include "chart/colour/Colorimetry.h"

namespace J4Tool {

namespace Colorimetry = J4Chart::Colorimetry;

namespace {

J4Chart::Spectrum MeanOfMembers(const std::vector<J4Chart::Spectrum>& readings, const std::vector<size_t>& members)
{
    std::vector<J4Chart::Spectrum> spectra;
    for (const size_t member : members) {
        spectra.push_back(readings[member]);
    }
    return J4Chart::MeanOf(spectra);
}

/// How far noise puts a reading from its colour, CIE 1976, root mean square.
double NoiseDistance(const J4Chart::Spectrum& colour, double noise)
{
    constexpr float step = 1e-3f;
    const Colorimetry::Triple lab = Colorimetry::Lab(colour);
    double squares = 0.0;
    for (size_t band = 0; band < colour.size(); ++band) {
        J4Chart::Spectrum other = colour;
        other[band] += step;
        const double slope = Colorimetry::Distance(Colorimetry::Lab(other), lab) / static_cast<double>(step);
        squares += slope * slope;
    }
    return noise * std::sqrt(squares);
}

}  // namespace

double Agreement::Noise(const Spectrum& first, const Spectrum& second)
{
    std::array<double, std::tuple_size_v<Spectrum> - 2> leaps{};
    const auto difference = [&](size_t band) {
        return static_cast<double>(first[band]) - static_cast<double>(second[band]);
    };
    for (size_t band = 0; band < leaps.size(); ++band) {
        leaps[band] = std::abs(difference(band) - 2.0 * difference(band + 1) + difference(band + 2));
    }
    // The median, since the colours themselves may leap in a few bands.
    const auto middle = leaps.begin() + leaps.size() / 2;
    std::nth_element(leaps.begin(), middle, leaps.end());
    constexpr double normal = 0.6745;  // median of what is normally distributed, without its sign
    return *middle / (normal * std::sqrt(6.0) * std::sqrt(2.0));
}

double Agreement::LimitOf(const Spectrum& colour, double noise)
{
    return noise > 0.0 ? std::hypot(Limit, NoiseFactor * NoiseDistance(colour, noise)) : Limit;
}

Agreement::Group Agreement::Largest(const std::vector<Spectrum>& readings, double noise)
{
    std::vector<Colorimetry::Triple> colours;
    for (const Spectrum& reading : readings) {
        colours.push_back(Colorimetry::Lab(reading));
    }
    const auto within = [&](const Colorimetry::Triple& colour, double limit) {
        std::vector<size_t> members;
        for (size_t i = 0; i < colours.size(); ++i) {
            if (Colorimetry::Distance(colours[i], colour) <= limit) {
                members.push_back(i);
            }
        }
        return members;
    };
    const auto limitAt = [&](const Spectrum& colour, double share) { return LimitOf(colour, share * noise); };
    Group group;
    double nearest = 0.0;
    for (size_t i = 0; i < readings.size(); ++i) {
        const std::vector<size_t> members = within(colours[i], limitAt(readings[i], std::sqrt(2.0)));
        const double distance = std::accumulate(members.begin(), members.end(), 0.0, [&](double sum, size_t other) {
            return sum + Colorimetry::Distance(colours[i], colours[other]);
        });
        if (members.size() > group.members.size() || (members.size() == group.members.size() && distance < nearest)) {
            group.members = members;
            nearest = distance;
        }
    }
    // A mean of several is a better middle than the one that they were found by.
    group.mean = MeanOfMembers(readings, group.members);
    const std::vector<size_t> members = within(Colorimetry::Lab(group.mean), limitAt(group.mean, 1.0));
    if (!members.empty()) {
        group.members = members;
        group.mean = MeanOfMembers(readings, members);
    }
    const Colorimetry::Triple middle = Colorimetry::Lab(group.mean);
    double squares = 0.0;
    for (const size_t member : group.members) {
        squares += std::pow(Colorimetry::Distance(colours[member], middle), 2.0);
    }
    group.spread = std::sqrt(squares / static_cast<double>(group.members.size()));
    const auto awayFrom = [&](size_t reading, const Colorimetry::Triple& other) {
        double product = 0.0;
        for (size_t i = 0; i < middle.size(); ++i) {
            product += (colours[reading][i] - middle[i]) * (other[i] - middle[i]);
        }
        return product;
    };
    for (size_t i = 0; i < colours.size(); ++i) {
        for (size_t k = 0; k < i; ++k) {
            const bool areOthers = !std::binary_search(group.members.begin(), group.members.end(), i) &&
                                   !std::binary_search(group.members.begin(), group.members.end(), k);
            group.isAtTheEnd = group.isAtTheEnd && (!areOthers || awayFrom(i, colours[k]) >= 0.0);
        }
    }
    return group;
}

}  // namespace J4Tool
