#include "chart/colour/Average.h"

#include <numeric>

#include "chart/colour/ColourDifference.h"

namespace J4Chart {

namespace {

/// Sums are taken in double, whatever the values are.
template <class Values>
Values MeanOfEach(const std::vector<Values>& list)
{
    Values mean{};
    for (size_t i = 0; i < mean.size(); ++i) {
        const double sum = std::accumulate(list.begin(), list.end(), 0.0, [i](double before, const Values& values) {
            return before + static_cast<double>(values[i]);
        });
        mean[i] = static_cast<typename Values::value_type>(sum / static_cast<double>(list.size()));
    }
    return mean;
}

}  // namespace

Spectrum MeanOf(const std::vector<Spectrum>& spectra) { return MeanOfEach(spectra); }

Colorimetry::Triple MeanOf(const std::vector<Colorimetry::Triple>& colours) { return MeanOfEach(colours); }

MeanDifference::MeanDifference(const std::vector<Colorimetry::Triple>& colours)
{
    const Colorimetry::Triple mean = MeanOf(colours);
    const auto count = static_cast<double>(colours.size());
    for (const Colorimetry::Triple& colour : colours) {
        ciede2000 += ColourDifference::Ciede2000(mean, colour) / count;
        cie1976 += Colorimetry::Distance(mean, colour) / count;
    }
}

}  // namespace J4Chart
