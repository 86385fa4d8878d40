#include "simulator/instrument/PatchRecognition.h"

#include <algorithm>
#include <array>

#include "chart/colour/Colorimetry.h"

namespace J4Bench {

namespace Colorimetry = J4Chart::Colorimetry;

namespace {

double MeanSquare(const Spectrum& values)
{
    double sum = 0.0;
    for (const float value : values) {
        sum += static_cast<double>(value) * static_cast<double>(value);
    }
    return sum / static_cast<double>(values.size());
}

using Sums = std::array<double, SpectrumLength>;

void AddTo(Sums& sums, const Spectrum& sample)
{
    for (size_t band = 0; band < sums.size(); ++band) {
        sums[band] += static_cast<double>(sample[band]);
    }
}

/// Samples first to last, both included, of one colour.
struct Run {
    size_t first;
    size_t last;
};

class Row {
public:
    Row(const std::vector<Spectrum>& samples, const std::vector<uint16_t>& positions, const Spectrum& noise)
        : samples(samples), byTravel(!positions.empty()), noiseSquare(MeanSquare(noise))
    {
        // The position list falls again behind the end of the travel, where the table stands still; on a short row
        // below 0, which leaves large numbers.
        double reached = 0.0;
        size_t told = 0;
        while (told < positions.size() && (told == 0 || positions[told] >= positions[told - 1])) {
            ++told;
        }
        for (size_t i = 0; i < samples.size(); ++i) {
            if (!byTravel) {
                reached = static_cast<double>(i);
            } else if (i < told) {
                reached = static_cast<double>(positions[i]);
            }
            travel.push_back(reached);
            colours.push_back(Colorimetry::Lab(samples[i]));
        }
    }

    std::vector<Run> RunsOfOneColour() const
    {
        std::vector<Run> runs;
        Sums sums{};  // of the samples of the last run
        for (size_t i = 0; i < samples.size(); ++i) {
            if (runs.empty() ||
                (Colorimetry::Distance(colours[runs.back().first], colours[i]) >= PatchRecognition::ColourTolerance &&
                 !IsNoise(samples[i], sums, static_cast<double>(i - runs.back().first)))) {
                runs.push_back({i, i});
                sums.fill(0.0);
            }
            runs.back().last = i;
            AddTo(sums, samples[i]);
        }
        return runs;
    }

    /// On the way from one colour to the next every short stretch is a run of its own: those go. A row may
    /// begin and end in the middle of a patch, so half the length does at its ends.
    void DropShortRuns(std::vector<Run>& runs) const
    {
        const double least = LeastLength(runs);
        std::erase_if(runs, [&](const Run& run) {
            const bool atEnd = run.first == 0 || run.last + 1 == samples.size();
            return Length(run) < (atEnd ? least / 2 : least);
        });
    }

    /// A single stray sample cuts a patch in two; the halves belong together.
    void JoinHalves(std::vector<Run>& runs) const
    {
        for (size_t i = 1; i < runs.size();) {
            Run& left = runs[i - 1];
            const Run& right = runs[i];
            if (right.first - left.last <= 2 &&
                Colorimetry::Distance(Colorimetry::Lab(MeanOfMiddle(left)), Colorimetry::Lab(MeanOfMiddle(right))) <
                    PatchRecognition::ColourTolerance) {
                left.last = right.last;
                runs.erase(runs.begin() + static_cast<std::ptrdiff_t>(i));
            } else {
                ++i;
            }
        }
    }

    bool IsPaper(const Run& run) const
    {
        const Colorimetry::Triple lab = Colorimetry::Lab(MeanOfMiddle(run));
        return lab[0] > PatchRecognition::PaperLightness &&
               Colorimetry::Distance({lab[0], 0.0, 0.0}, lab) < PatchRecognition::PaperChroma;
    }

    /// Mean of the samples in the middle half of the run's travel: the ends may still see the neighbours.
    Spectrum MeanOfMiddle(const Run& run) const
    {
        const double from = travel[run.first] + (travel[run.last] - travel[run.first]) * 0.25;
        const double to = travel[run.first] + (travel[run.last] - travel[run.first]) * 0.75;
        Sums sums{};
        size_t count = 0;
        const auto add = [&](size_t sample) {
            ++count;
            AddTo(sums, samples[sample]);
        };
        for (size_t i = run.first; i <= run.last; ++i) {
            if (travel[i] >= from && travel[i] <= to) {
                add(i);
            }
        }
        if (count == 0) {  // so few samples that none lies in the middle half
            add(run.first + (run.last - run.first) / 2);
        }
        Spectrum mean{};
        for (size_t band = 0; band < mean.size(); ++band) {
            mean[band] = static_cast<float>(sums[band] / static_cast<double>(count));
        }
        return mean;
    }

private:
    /// Whether noise alone explains how a sample differs from the mean of the samples before it.
    bool IsNoise(const Spectrum& sample, const Sums& sums, double count) const
    {
        Spectrum difference{};
        for (size_t band = 0; band < sample.size(); ++band) {
            difference[band] = static_cast<float>(static_cast<double>(sample[band]) - sums[band] / count);
        }
        return MeanSquare(difference) < PatchRecognition::NoiseAllowance * noiseSquare * (1.0 + 1.0 / count);
    }

    double Length(const Run& run) const { return travel[run.last] - travel[run.first] + (byTravel ? 0.0 : 1.0); }

    double LeastLength(const std::vector<Run>& runs) const
    {
        if (byTravel || runs.size() < 3) {
            return byTravel ? PatchRecognition::LeastTravel : PatchRecognition::LeastSamples;
        }
        // The speed is not known, so a typical patch is the measure: half of all samples lie in runs at least
        // as long. The first and the last run don't count, the instrument may have stood still there.
        std::vector<double> lengths;
        double all = 0.0;
        for (size_t i = 1; i + 1 < runs.size(); ++i) {
            lengths.push_back(Length(runs[i]));
            all += lengths.back();
        }
        std::sort(lengths.rbegin(), lengths.rend());
        double sum = 0.0;
        double typical = 0.0;
        for (size_t i = 0; i < lengths.size() && sum < all / 2; ++i) {
            typical = lengths[i];
            sum += typical;
        }
        return std::max(PatchRecognition::LeastSamples, typical * PatchRecognition::LeastShare);
    }

    const std::vector<Spectrum>& samples;
    bool byTravel;
    double noiseSquare;
    std::vector<double> travel;
    std::vector<Colorimetry::Triple> colours;
};

}  // namespace

std::vector<Spectrum> PatchRecognition::Reduce(const std::vector<Spectrum>& samples,
                                               const std::vector<uint16_t>& positions, const Spectrum& noise)
{
    const Row row(samples, positions, noise);
    std::vector<Run> runs = row.RunsOfOneColour();
    row.JoinHalves(runs);  // each may be too short by itself
    row.DropShortRuns(runs);
    row.JoinHalves(runs);
    if (!runs.empty() && row.IsPaper(runs.front())) {
        runs.erase(runs.begin());
    }
    if (!runs.empty() && row.IsPaper(runs.back())) {
        runs.pop_back();
    }
    std::vector<Spectrum> patches;
    for (const Run& run : runs) {
        patches.push_back(row.MeanOfMiddle(run));
    }
    return patches;
}

}  // namespace J4Bench
