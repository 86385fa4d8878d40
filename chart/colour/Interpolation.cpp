#include "chart/colour/Interpolation.h"

#include <algorithm>

namespace J4Chart::Interpolation {

std::vector<Term> TermsAt(int place, const std::vector<int>& places)
{
    const auto above = std::lower_bound(places.begin(), places.end(), place);
    const size_t upper = static_cast<size_t>(above - places.begin());
    if (above == places.end() || *above == place || upper == 0) {
        return {{std::min(upper, places.size() - 1), 1.0}};
    }
    const size_t first = upper < 2 ? 0 : upper - 2;
    const size_t last = std::min(upper + 1, places.size() - 1);
    std::vector<Term> terms;
    for (size_t i = first; i <= last; ++i) {
        double weight = 1.0;
        for (size_t k = first; k <= last; ++k) {
            if (k != i) {
                weight *= static_cast<double>(place - places[k]) / static_cast<double>(places[i] - places[k]);
            }
        }
        terms.push_back({i, weight});
    }
    return terms;
}

}  // namespace J4Chart::Interpolation
