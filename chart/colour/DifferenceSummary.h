// What many colour differences have in common: mean, 95th percentile and maximum, how they spread, and which are
// the worst.
#pragma once

#include <cstddef>
#include <vector>

namespace J4Chart {

class DifferenceSummary {
public:
    /// @param differences  in the order of the patches, not a number for a patch without a reference; at least one
    ///                     is a number
    explicit DifferenceSummary(const std::vector<double>& differences);

    size_t Count() const { return count; }
    double Mean() const { return mean; }

    /// Between the two differences next to 95 percent of the way from the least to the largest, in proportion.
    double Percentile95() const { return percentile95; }

    double Maximum() const { return maximum; }

    /// The patches with the ten largest differences, largest first; of equal ones the first in the file.
    const std::vector<size_t>& Worst() const { return worst; }

    /// Width of the histogram's classes: 1, 2 or 5 times a power of ten.
    double BinWidth() const { return binWidth; }

    /// Differences in each class from 0 on. A class holds its lower edge, the last its upper one too.
    const std::vector<size_t>& Bins() const { return bins; }

private:
    size_t count = 0;
    double mean = 0.0;
    double percentile95 = 0.0;
    double maximum = 0.0;
    std::vector<size_t> worst;
    double binWidth = 0.0;
    std::vector<size_t> bins;
};

}  // namespace J4Chart
