#include "chart/colour/Densities.h"

#include <cmath>

namespace J4Chart {

Densities MeanDensities(const std::vector<Densities>& samples)
{
    Densities mean{};
    for (size_t filter = 0; filter < mean.size(); ++filter) {
        double sum = 0.0;
        for (const Densities& sample : samples) {
            sum += std::pow(10.0, -sample[filter]);
        }
        mean[filter] = -std::log10(sum / static_cast<double>(samples.size()));
    }
    return mean;
}

}  // namespace J4Chart
