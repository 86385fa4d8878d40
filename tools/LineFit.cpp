#include "tools/LineFit.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <utility>

#include "tools/Agreement.h"

namespace J4Tool {

namespace {

/// Paper narrower than this leaves no trace between two patches, mm.
constexpr double NarrowestGap = 0.2;

/// Steps of the search for the place, mm and as a share.
constexpr double OffsetStep = 0.25;
constexpr double StretchStep = 0.0025;

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// An instrument is never steadier than this, as reflectance.
constexpr double LeastNoise = 0.0003;

/// Charts and tables are made to this: standard deviation of the stretch, as a share. It decides where the edges don't.
constexpr double UsualStretch = 0.003;

/// Edges are visible when their place can be told so well, and the series is located when its own can, mm.
constexpr double LargestEdgeError = 0.1;
constexpr double LargestOffsetError = 0.2;

/// Light that the layout explains leaves no more than one of these.
constexpr double LargestRemainder = 0.01;    // reflectance
constexpr double LargestUnexplained = 0.15;  // share of what the line shows at all

}  // namespace

LineFit::Light LineFit::LightOf(const Spectrum& spectrum)
{
    Light light;
    const size_t width = spectrum.size() / Channels;
    for (size_t channel = 0; channel < Channels; ++channel) {
        double sum = 0.0;
        for (size_t band = channel * width; band < (channel + 1) * width; ++band) {
            sum += static_cast<double>(spectrum[band]);
        }
        light[channel] = sum / static_cast<double>(width);
    }
    return light;
}

double LineFit::ShareBefore(double distance)
{
    const double u = std::clamp(2.0 * distance, -1.0, 1.0);
    return 0.5 + (u * std::sqrt(1.0 - u * u) + std::asin(u)) / std::numbers::pi;
}

/// What the layout says the samples should look like: a stretch of one colour after the other, seen through the
/// aperture. The colours are whatever fits best.
class LineFit::Model {
public:
    Model(const std::vector<Spectrum>& samples, const std::vector<double>& places, const std::vector<Stretch>& patches,
          const Settings& settings)
        : settings(settings)
    {
        AddStretches(patches);
        const double reach = settings.aperture + settings.largestOffset;
        std::vector<size_t> used;
        for (size_t i = 0; i < samples.size(); ++i) {
            if (places[i] > patches.front().begin - reach - settings.aperture &&
                places[i] < patches.back().end + reach + settings.aperture) {
                used.push_back(i);
            }
        }
        at.resize(used.size());
        light.resize(static_cast<Eigen::Index>(used.size()), Channels);
        for (size_t row = 0; row < used.size(); ++row) {
            at[row] = places[used[row]];
            const Light channels = LightOf(samples[used[row]]);
            light.row(static_cast<Eigen::Index>(row)) =
                Eigen::Map<const Eigen::RowVectorXd>(channels.data(), Eigen::Index{Channels});
        }
    }

    struct Fit {
        double squares = std::numeric_limits<double>::infinity();
        Eigen::MatrixXd colours;   ///< stretch by channel
        Eigen::MatrixXd leftOver;  ///< sample by channel
    };

    bool Usable() const { return at.size() > 4; }
    size_t Samples() const { return at.size(); }
    double Middle() const { return 0.5 * (edges.front() + edges.back()); }
    /// All edges between stretches, in order.
    const std::vector<double>& Edges() const { return edges; }

    /// How much the samples differ: root mean square about their mean.
    double Variation() const
    {
        return std::sqrt((light.rowwise() - light.colwise().mean()).squaredNorm() / static_cast<double>(light.size()));
    }

    double PlaceOf(size_t sample, double offset, double scale) const
    {
        return Middle() + offset + scale * (at[sample] - Middle());
    }

    Fit At(double offset, double scale, bool whole = false) const
    {
        const auto count = static_cast<Eigen::Index>(colourCount);
        Eigen::MatrixXd normal = Eigen::MatrixXd::Identity(count, count) * 1e-6;
        Eigen::MatrixXd right = Eigen::MatrixXd::Zero(count, Channels);
        std::vector<Weights> weights(at.size());
        for (size_t i = 0; i < at.size(); ++i) {
            const Weights& row = weights[i] = WeightsOf(PlaceOf(i, offset, scale));
            for (const auto& [a, wa] : row) {
                for (const auto& [b, wb] : row) {
                    normal(a, b) += wa * wb;
                }
                right.row(a) += wa * light.row(static_cast<Eigen::Index>(i));
            }
        }
        Fit fit;
        fit.colours = normal.ldlt().solve(right);
        Eigen::MatrixXd left = light;
        for (size_t i = 0; i < at.size(); ++i) {
            for (const auto& [column, weight] : weights[i]) {
                left.row(static_cast<Eigen::Index>(i)) -= weight * fit.colours.row(column);
            }
        }
        const double unusual = (scale - 1.0) / UsualStretch * LeastNoise;
        fit.squares = left.squaredNorm() + unusual * unusual;
        if (whole) {
            fit.leftOver = std::move(left);
        }
        return fit;
    }

    /// What of a sample is seen of a patch, 0 to 1.
    double ShareOf(size_t sample, size_t patch, double offset, double scale) const
    {
        double share = 0.0;
        for (const auto& [colour, weight] : WeightsOf(PlaceOf(sample, offset, scale))) {
            share += static_cast<size_t>(colour) == patchColours[patch] ? weight : 0.0;
        }
        return share;
    }

    /// A sample of these colours.
    Eigen::RowVectorXd Expected(size_t sample, double offset, double scale, const Eigen::MatrixXd& colours) const
    {
        Eigen::RowVectorXd sum = Eigen::RowVectorXd::Zero(Channels);
        for (const auto& [colour, weight] : WeightsOf(PlaceOf(sample, offset, scale))) {
            sum += weight * colours.row(colour);
        }
        return sum;
    }

    /// Which colour is that of a patch.
    size_t ColourOf(size_t patch) const { return patchColours[patch]; }

    /// Colours on both sides of an edge.
    std::pair<size_t, size_t> Sides(size_t edge) const { return {colourOf[edge], colourOf[edge + 1]}; }

    /// How the share of what lies before an edge changes when the edge moves on by a millimetre.
    double Slope(double distance) const { return (Share(distance + 0.05) - Share(distance - 0.05)) / 0.1; }

private:
    using Weights = std::vector<std::pair<Eigen::Index, double>>;

    /// Which colours are seen from a place, and how much of each.
    Weights WeightsOf(double place) const
    {
        Weights weights;
        double before = 0.0;
        const double reach = 0.5 * (settings.aperture + settings.blur);
        const auto first =
            static_cast<size_t>(std::lower_bound(edges.begin(), edges.end(), place - reach) - edges.begin());
        for (size_t edge = first; edge <= edges.size(); ++edge) {
            const double share = edge < edges.size() ? Share(edges[edge] - place) : 1.0;
            if (share > before) {
                weights.emplace_back(static_cast<Eigen::Index>(colourOf[edge]), share - before);
                before = share;
            }
            if (share >= 1.0) {
                break;
            }
        }
        return weights;
    }

    double Share(double distance) const
    {
        const double a = settings.aperture;
        const double third = settings.blur / 3.0;
        return (ShareBefore((distance - third) / a) + ShareBefore(distance / a) + ShareBefore((distance + third) / a)) /
               3.0;
    }

    void AddStretches(const std::vector<Stretch>& patches)
    {
        // The paper before, behind and between may differ: the first two can be the bed, or another chart.
        constexpr size_t lead = 0;
        size_t next = 1;
        size_t between = 0;
        colourOf.push_back(lead);
        for (size_t i = 0; i < patches.size(); ++i) {
            if (i > 0 && patches[i].begin - patches[i - 1].end > NarrowestGap) {
                if (between == 0) {
                    between = next++;
                }
                edges.push_back(patches[i - 1].end);
                colourOf.push_back(between);
            }
            edges.push_back(patches[i].begin);
            patchColours.push_back(next);
            colourOf.push_back(next++);
        }
        edges.push_back(patches.back().end);
        colourOf.push_back(next++);
        colourCount = next;
    }

    Settings settings;
    std::vector<double> edges;
    std::vector<size_t> colourOf;  ///< of the stretch before each edge, and behind the last
    std::vector<size_t> patchColours;
    size_t colourCount = 0;
    std::vector<double> at;
    Eigen::MatrixXd light;
};

LineFit::LineFit(const std::vector<Spectrum>& samples, const std::vector<double>& places,
                 const std::vector<Stretch>& patches, const Settings& settings)
{
    if (patches.empty() || samples.size() != places.size()) {
        return;
    }
    const Model model(samples, places, patches, settings);
    pivot = model.Middle();
    if (model.Usable()) {
        Locate(model, settings);
    }
    const double noise = Read(samples, places, patches, settings);
    if (located) {
        Compare(model, noise);
    }
}

void LineFit::Locate(const Model& model, const Settings& settings)
{
    struct Candidate {
        double offset;
        double scale;
        double squares;
    };
    // The valleys along the offset, each at its best scale.
    std::vector<Candidate> course;
    const int offsets = static_cast<int>(std::ceil(settings.largestOffset / OffsetStep));
    const int stretches = static_cast<int>(std::ceil(settings.largestStretch / StretchStep));
    for (int i = -offsets; i <= offsets; ++i) {
        Candidate best{0.0, 1.0, std::numeric_limits<double>::infinity()};
        for (int k = -stretches; k <= stretches; ++k) {
            const Candidate here{i * OffsetStep, 1.0 + k * StretchStep, 0.0};
            const double squares = model.At(here.offset, here.scale).squares;
            if (squares < best.squares) {
                best = {here.offset, here.scale, squares};
            }
        }
        course.push_back(best);
    }
    std::vector<Candidate> valleys;
    for (size_t i = 0; i < course.size(); ++i) {
        if ((i == 0 || course[i].squares <= course[i - 1].squares) &&
            (i + 1 == course.size() || course[i].squares < course[i + 1].squares)) {
            valleys.push_back(course[i]);
        }
    }
    const double halfLength = 0.5 * (model.Edges().back() - model.Edges().front());
    for (Candidate& valley : valleys) {
        double offsetStep = OffsetStep / 2.0;
        double scaleStep = StretchStep / 2.0;
        while (offsetStep > 0.005) {
            const Candidate before = valley;
            // Also about either end: a rim that shows far better than all other edges holds it fast.
            const double end = scaleStep * halfLength;
            for (const auto& [byOffset, byScale] : {std::pair(offsetStep, 0.0),
                                                    {-offsetStep, 0.0},
                                                    {0.0, scaleStep},
                                                    {0.0, -scaleStep},
                                                    {end, scaleStep},
                                                    {end, -scaleStep},
                                                    {-end, scaleStep},
                                                    {-end, -scaleStep}}) {
                const double at = before.offset + byOffset;
                const double stretched = before.scale + byScale;
                if (std::abs(at) > settings.largestOffset || std::abs(stretched - 1.0) > settings.largestStretch) {
                    continue;
                }
                const double squares = model.At(at, stretched).squares;
                if (squares < valley.squares) {
                    valley = {at, stretched, squares};
                }
            }
            if (valley.squares >= before.squares) {
                offsetStep /= 2.0;
                scaleStep /= 2.0;
            }
        }
    }
    std::sort(valleys.begin(), valleys.end(),
              [](const Candidate& a, const Candidate& b) { return a.squares < b.squares; });
    offset = valleys.front().offset;
    scale = valleys.front().scale;

    const auto values = static_cast<double>(model.Samples() * Channels);
    const double floor = values * LeastNoise * LeastNoise;
    distinctness = std::numeric_limits<double>::infinity();
    for (const Candidate& other : valleys) {
        if (std::abs(other.offset - offset) > 1.0) {
            distinctness = (other.squares + floor) / (valleys.front().squares + floor);
            break;
        }
    }
    MeasureEdges(model);
    located = visibleEdges > 0 && offsetError < LargestOffsetError;
    if (!located) {
        offset = 0.0;
        scale = 1.0;
    }
}

void LineFit::MeasureEdges(const Model& model)
{
    const Model::Fit fit = model.At(offset, scale, true);
    std::vector<double> squares;
    for (Eigen::Index i = 0; i < fit.leftOver.rows(); ++i) {
        squares.push_back(fit.leftOver.row(i).squaredNorm());
    }
    std::sort(squares.begin(), squares.end());
    squares.resize(std::max<size_t>(1, squares.size() * 4 / 5));
    remainder = std::sqrt(std::accumulate(squares.begin(), squares.end(), 0.0) /
                          static_cast<double>(squares.size() * Channels));
    unexplained = remainder / std::max(LeastNoise, model.Variation());
    const double noise = std::max(LeastNoise, remainder);
    double sum = 0.0;
    // How much the edges hold the offset, the stretch, and both together.
    double holdOffset = 0.0;
    double holdBoth = 0.0;
    double holdStretch = noise * noise / (UsualStretch * UsualStretch);
    for (size_t edge = 0; edge < model.Edges().size(); ++edge) {
        const auto [before, behind] = model.Sides(edge);
        const Eigen::RowVectorXd step =
            fit.colours.row(static_cast<Eigen::Index>(before)) - fit.colours.row(static_cast<Eigen::Index>(behind));
        double steepness = 0.0;
        double pull = 0.0;
        for (size_t i = 0; i < model.Samples(); ++i) {
            const double slope = model.Slope(model.Edges()[edge] - model.PlaceOf(i, offset, scale));
            if (slope > 0.0) {
                steepness += slope * slope * step.squaredNorm();
                pull += slope * fit.leftOver.row(static_cast<Eigen::Index>(i)).dot(step);
            }
        }
        const double lever = model.Edges()[edge] - model.Middle();
        holdOffset += steepness;
        holdBoth += steepness * lever;
        holdStretch += steepness * lever * lever;
        if (steepness > 0.0 && noise / std::sqrt(steepness) < LargestEdgeError) {
            const double shift = pull / steepness;
            sum += shift * shift;
            worstEdge = std::max(worstEdge, std::abs(shift));
            ++visibleEdges;
        }
    }
    residual = visibleEdges > 0 ? std::sqrt(sum / static_cast<double>(visibleEdges)) : 0.0;
    const double held = holdOffset * holdStretch - holdBoth * holdBoth;
    offsetError = held > 0.0 ? noise * std::sqrt(holdStretch / held) : std::numeric_limits<double>::infinity();
}

double LineFit::Read(const std::vector<Spectrum>& samples, const std::vector<double>& places,
                     const std::vector<Stretch>& patches, const Settings& settings)
{
    const double rim = 0.5 * (settings.aperture + settings.blur) + Guard;
    const auto between = [&](double begin, double end) {
        std::vector<size_t> inside;
        for (size_t i = 0; i < samples.size(); ++i) {
            const double place = Place(places[i]);
            if (place >= begin + rim && place <= end - rim) {
                inside.push_back(i);
            }
        }
        return inside;
    };
    std::vector<double> noises;
    std::vector<std::vector<size_t>> allInside;
    for (const Stretch& patch : patches) {
        const std::vector<size_t>& inside = allInside.emplace_back(between(patch.begin, patch.end));
        for (size_t i = 1; i < inside.size(); ++i) {
            noises.push_back(Agreement::Noise(samples[inside[i - 1]], samples[inside[i]]));
        }
    }
    const double noise = noises.empty() ? 0.0 : Median(noises);
    for (const std::vector<size_t>& inside : allInside) {
        std::vector<Spectrum> seen;
        for (const size_t sample : inside) {
            seen.push_back(samples[sample]);
        }
        Reading& reading = readings.emplace_back();
        if (!seen.empty()) {
            const Agreement::Group group = Agreement::Largest(seen, noise);
            reading = {group.mean, seen.size(), group.members.size(), group.spread, 0.0, {}};
            for (const size_t member : group.members) {
                reading.used.push_back(inside[member]);
            }
        }
    }
    return noise;
}

void LineFit::Compare(const Model& model, double noise)
{
    constexpr double leastShare = 0.75;      // of a sample, for which it says something of a patch
    constexpr double noiseFactor = 2.5;      // of the root mean square over all channels
    constexpr double usualPlaceError = 0.1;  // mm
    constexpr double rimError = 0.01;  // share of a sample by which the aperture's rim may be another than thought
    const Model::Fit fit = model.At(offset, scale, true);
    const double placeError = usualPlaceError + residual;
    const double rim = rimError * model.Variation();
    const double noiseOfChannels =
        noiseFactor * noise / std::sqrt(static_cast<double>(J4Chart::SpectrumLength / Channels));
    for (size_t patch = 0; patch < readings.size(); ++patch) {
        const auto own = static_cast<Eigen::Index>(model.ColourOf(patch));
        // The lightness by the mean of all channels: what a difference of 0.5 of it is in reflectance.
        const double level = std::max(0.01, fit.colours.row(own).mean());
        const double uneven = Agreement::Limit / (116.0 / 3.0) * std::cbrt(level * level);
        for (size_t sample = 0; sample < model.Samples(); ++sample) {
            const double share = model.ShareOf(sample, patch, offset, scale);
            if (share < leastShare) {
                continue;
            }
            const double moved = (model.Expected(sample, offset + placeError, scale, fit.colours) -
                                  model.Expected(sample, offset - placeError, scale, fit.colours))
                                     .norm() /
                                 (2.0 * std::sqrt(static_cast<double>(Channels)));
            const double explained = std::hypot(std::hypot(uneven, noiseOfChannels), std::hypot(moved, rim));
            const double left =
                fit.leftOver.row(static_cast<Eigen::Index>(sample)).norm() / std::sqrt(static_cast<double>(Channels));
            readings[patch].deviation = std::max(readings[patch].deviation, left / explained);
        }
    }
}

bool LineFit::IsOfOthers() const { return remainder > LargestRemainder && unexplained > LargestUnexplained; }

double LineFit::UsualDeviation() const
{
    std::vector<double> deviations;
    for (const Reading& reading : readings) {
        deviations.push_back(reading.deviation);
    }
    return deviations.empty() ? 0.0 : Median(deviations);
}

}  // namespace J4Tool
