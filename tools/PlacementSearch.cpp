#include "tools/PlacementSearch.h"

#include <Eigen/SparseCholesky>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

namespace J4Tool {

namespace {

/// How far off a chart is searched for: in patches each way, and in radians. It is promised to be found from half of
/// that; the rest is where its rivals lie.
constexpr double FarthestShift = 1.05;
constexpr double LargestRotation = 0.044;

/// Steps of the search, in patches: of the shifts, and of what a rotation moves the corners.
constexpr double RoughStep = 1.0 / 7.0;

/// Closer than this, in patches at the worst corner, two placements are the same one.
constexpr double SamePlace = 0.35;

/// How many placements are looked at more closely, by the rough measure and by the fine one.
constexpr size_t RoughCandidates = 16;
constexpr size_t FineCandidates = 5;

/// Samples closer together than this tell nothing more, mm.
constexpr double LeastSpacing = 0.9;

/// Behind the instrument's motion, s.
constexpr double LargestLatency = 0.05;

/// A placement explains the samples as well as another when less than so many times as much remains, beside what the
/// instrument's noise may leave, as reflectance.
constexpr double LeastDistinctness = 1.7;
constexpr double UsualNoise = 0.0005;

/// Half a patch, and what the search may be mistaken by, in patches.
constexpr double FarthestPromised = 0.6;

/// Holds the colours of patches that were hardly seen near the mean of all, as a number of samples.
constexpr double Ridge = 0.01;

double Distance(const LineFit::Light& a, const LineFit::Light& b)
{
    double squares = 0.0;
    for (size_t i = 0; i < a.size(); ++i) {
        squares += (a[i] - b[i]) * (a[i] - b[i]);
    }
    return squares;
}

}  // namespace

/// What lies where: a patch, the paper between patches, or what is beyond one of the four sides.
class PlacementSearch::Map {
public:
    static constexpr size_t Papers = 5;

    /// @param unitAlong   of the rows, and across them: the directions of Own()
    Map(const ChartLayout& layout, Point unitAlong, Point unitAcross)
        : layout(layout), unitAlong(unitAlong), unitAcross(unitAcross)
    {
        low = {std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
        high = {-low.x, -low.y};
        for (const J4Chart::Place& patch : layout.Places()) {
            for (const double i : {-1.0, 1.0}) {
                for (const double k : {-1.0, 1.0}) {
                    const Point corner = Own({patch.centre.x + i * patch.along.x + k * patch.across.x,
                                              patch.centre.y + i * patch.along.y + k * patch.across.y});
                    low = {std::min(low.x, corner.x), std::min(low.y, corner.y)};
                    high = {std::max(high.x, corner.x), std::max(high.y, corner.y)};
                }
            }
        }
        constexpr double finest = 0.5;     // mm
        constexpr double mostCells = 2e3;  // in each direction
        cellSize = std::max({finest, (high.x - low.x) / mostCells, (high.y - low.y) / mostCells});
        width = static_cast<size_t>(std::ceil((high.x - low.x) / cellSize)) + 1;
        height = static_cast<size_t>(std::ceil((high.y - low.y) / cellSize)) + 1;
        cells.assign(width * height, 0);
        for (size_t i = 0; i < layout.Places().size(); ++i) {
            const J4Chart::Place& patch = layout.Places()[i];
            const Point centre = Own(patch.centre);
            const double reachX = std::abs(Dot(patch.along, unitAlong)) + std::abs(Dot(patch.across, unitAlong));
            const double reachY = std::abs(Dot(patch.along, unitAcross)) + std::abs(Dot(patch.across, unitAcross));
            const auto cell = [this](double from, double origin, size_t count) {
                return static_cast<size_t>(
                    std::clamp(std::round((from - origin) / cellSize), 0.0, static_cast<double>(count)));
            };
            for (size_t y = cell(centre.y - reachY, low.y, height); y < cell(centre.y + reachY, low.y, height); ++y) {
                for (size_t x = cell(centre.x - reachX, low.x, width); x < cell(centre.x + reachX, low.x, width); ++x) {
                    cells[y * width + x] = static_cast<unsigned>(i + Papers);
                }
            }
        }
    }

    Point Own(Point place) const { return {Dot(place, unitAlong), Dot(place, unitAcross)}; }

    /// What is at a point in the coordinates of Own(): patches count from Papers.
    size_t At(Point own) const
    {
        const double x = (own.x - low.x) / cellSize;
        const double y = (own.y - low.y) / cellSize;
        if (x >= 0.0 && y >= 0.0 && x < static_cast<double>(width) && y < static_cast<double>(height)) {
            const unsigned found = cells[static_cast<size_t>(y) * width + static_cast<size_t>(x)];
            if (found >= Papers) {
                return found;
            }
        }
        return Paper(own);
    }

    /// Which paper is seen beside the patches.
    size_t Paper(Point own) const
    {
        const std::array<double, 4> beyond{low.x - own.x, own.x - high.x, low.y - own.y, own.y - high.y};
        const auto most = std::max_element(beyond.begin(), beyond.end());
        return *most < -0.5 * LineFit::Aperture ? 0 : static_cast<size_t>(most - beyond.begin()) + 1;
    }

    /// How much of each is seen through the aperture.
    struct Share {
        size_t of;
        double share;
    };
    struct Shares {
        std::array<Share, 10> all{};
        size_t count = 0;
    };

    Shares SharesAt(Point own) const
    {
        constexpr double reach = 0.5 * LineFit::Aperture;
        Shares shares;
        double rest = 1.0;
        for (const double dx : {-1.0, 0.0, 1.0}) {
            for (const double dy : {-1.0, 0.0, 1.0}) {
                const double length = dx != 0.0 && dy != 0.0 ? 0.7 * reach : reach;
                const size_t found = At({own.x + dx * length, own.y + dy * length});
                const auto* const last = shares.all.begin() + shares.count;
                if (found < Papers || std::any_of(shares.all.cbegin(), static_cast<decltype(shares.all.cbegin())>(last),
                                                  [&](const Share& other) { return other.of == found; })) {
                    continue;
                }
                const double share = Seen(layout.Places()[found - Papers], own);
                if (share > 0.0) {
                    shares.all[shares.count++] = {found, share};
                    rest -= share;
                }
            }
        }
        constexpr double least = 0.02;
        if (rest > least || shares.count == 0) {
            shares.all[shares.count++] = {Paper(own), std::max(rest, least)};
        }
        return shares;
    }

    Point Low() const { return low; }
    Point High() const { return high; }

private:
    double Seen(const J4Chart::Place& patch, Point own) const
    {
        const Point centre = Own(patch.centre);
        const Point off{own.x - centre.x, own.y - centre.y};
        const auto within = [](double at, double half) {
            return LineFit::ShareBefore((half - at) / LineFit::Aperture) -
                   LineFit::ShareBefore((-half - at) / LineFit::Aperture);
        };
        return within(off.x, Length(patch.along)) * within(off.y, Length(patch.across));
    }

    const ChartLayout& layout;
    Point unitAlong;
    Point unitAcross;
    Point low;
    Point high;
    double cellSize = 0.0;  ///< mm
    size_t width = 0;
    size_t height = 0;
    std::vector<unsigned> cells;
};

PlacementSearch::PlacementSearch(const ChartLayout& layout) : layout(layout)
{
    const J4Chart::Place& first = layout.Places().front();
    const double along = Length(first.along);
    const double across = Length(first.across);
    unitAlong = {first.along.x / along, first.along.y / along};
    unitAcross = {first.across.x / across, first.across.y / across};
    pitchAlong = pitchAcross = std::numeric_limits<double>::max();
    for (const J4Chart::Place& patch : layout.Places()) {
        pitchAlong = std::min(pitchAlong, 2.0 * Length(patch.along));
        pitchAcross = std::min(pitchAcross, 2.0 * Length(patch.across));
    }
    map = std::make_unique<Map>(layout, unitAlong, unitAcross);
    for (const double u : {map->Low().x, map->High().x}) {
        for (const double v : {map->Low().y, map->High().y}) {
            corners.push_back({u * unitAlong.x + v * unitAcross.x, u * unitAlong.y + v * unitAcross.y});
        }
    }
    lever = 0.5 * Distance(map->High(), map->Low());
}

PlacementSearch::~PlacementSearch() = default;

void PlacementSearch::Add(const LineScan::Samples& samples, Point start, Point along, double speed)
{
    Travel travel{start, along, speed, samples.places, {}};
    for (const LineFit::Spectrum& spectrum : samples.spectra) {
        travel.light.push_back(LineFit::LightOf(spectrum));
    }
    travels.push_back(std::move(travel));
}

double PlacementSearch::Apart(const Placement& one, const Placement& other) const
{
    double most = 0.0;
    for (const Point corner : corners) {
        const Point a = one.Of(corner);
        const Point b = other.Of(corner);
        const Point off{a.x - b.x, a.y - b.y};
        most =
            std::max({most, std::abs(Dot(off, unitAlong)) / pitchAlong, std::abs(Dot(off, unitAcross)) / pitchAcross});
    }
    return most;
}

double PlacementSearch::Shift(const Placement& placement, const Placement& expected) const
{
    const Point off{placement.shift.x - expected.shift.x, placement.shift.y - expected.shift.y};
    return std::max(std::abs(Dot(off, unitAlong)) / pitchAlong, std::abs(Dot(off, unitAcross)) / pitchAcross);
}

/// From travels that went the same way back: both must have seen the same at the same place.
double PlacementSearch::Latency() const
{
    constexpr double step = 0.0005;  // s
    double best = 0.0;
    double least = std::numeric_limits<double>::infinity();
    for (double latency = -LargestLatency; latency <= LargestLatency; latency += step) {
        double squares = 0.0;
        size_t count = 0;
        for (size_t i = 0; i + 1 < travels.size(); ++i) {
            const Travel& there = travels[i];
            const Travel& back = travels[i + 1];
            const Point between{back.start.x - there.start.x, back.start.y - there.start.y};
            const double aside = there.along.x * between.y - there.along.y * between.x;
            if (Dot(there.along, back.along) > -0.999999 || std::abs(aside) > 0.1) {
                continue;
            }
            const double length = Dot(between, there.along) - (there.speed + back.speed) * latency;
            for (size_t k = 0; k < there.places.size(); ++k) {
                const double place = length - there.places[k];
                const auto next = std::lower_bound(back.places.begin(), back.places.end(), place);
                if (next == back.places.begin() || next == back.places.end()) {
                    continue;
                }
                const auto index = static_cast<size_t>(next - back.places.begin());
                const double share = (place - back.places[index - 1]) / (back.places[index] - back.places[index - 1]);
                LineFit::Light seen;
                for (size_t channel = 0; channel < seen.size(); ++channel) {
                    seen[channel] = (1.0 - share) * back.light[index - 1][channel] + share * back.light[index][channel];
                }
                squares += Distance(there.light[k], seen);
                ++count;
            }
        }
        if (count > 0 && squares / static_cast<double>(count) < least) {
            least = squares / static_cast<double>(count);
            best = latency;
        }
    }
    return best;
}

/// All that was seen, its mean taken away.
std::vector<PlacementSearch::Sample> PlacementSearch::Samples() const
{
    std::vector<Sample> samples;
    LineFit::Light mean{};
    for (const Travel& travel : travels) {
        double last = -std::numeric_limits<double>::infinity();
        for (size_t i = 0; i < travel.places.size(); ++i) {
            const double place = travel.places[i];
            if (place - last < LeastSpacing) {
                continue;
            }
            last = place;
            samples.push_back({{travel.start.x + place * travel.along.x, travel.start.y + place * travel.along.y},
                               {travel.speed * travel.along.x, travel.speed * travel.along.y},
                               travel.light[i]});
            for (size_t channel = 0; channel < mean.size(); ++channel) {
                mean[channel] += travel.light[i][channel];
            }
        }
    }
    for (Sample& sample : samples) {
        for (size_t channel = 0; channel < mean.size(); ++channel) {
            sample.light[channel] -= mean[channel] / static_cast<double>(samples.size());
        }
    }
    return samples;
}

namespace {

/// From places on the bed to the coordinates of the map.
class Unplaced {
public:
    Unplaced(const Placement& placement, double latency, Point unitAlong, Point unitAcross)
        : middle(placement.middle),
          shift(placement.shift),
          along(placement.Turned(unitAlong)),
          across(placement.Turned(unitAcross)),
          origin{Dot(placement.middle, unitAlong), Dot(placement.middle, unitAcross)},
          latency(latency)
    {}

    Point Of(Point at, Point motion) const
    {
        const Point arm{at.x + latency * motion.x - middle.x - shift.x, at.y + latency * motion.y - middle.y - shift.y};
        return {origin.x + Dot(arm, along), origin.y + Dot(arm, across)};
    }

private:
    Point middle;
    Point shift;
    Point along;
    Point across;
    Point origin;
    double latency;
};

}  // namespace

/// How much the samples differ that have their middle in the same patch.
double PlacementSearch::Rough(const std::vector<Sample>& samples, const Candidate& candidate) const
{
    struct Sum {
        double count = 0.0;
        LineFit::Light light{};
    };
    std::vector<Sum> sums(layout.Places().size() + Map::Papers);
    const Unplaced unplaced(candidate.placement, candidate.latency, unitAlong, unitAcross);
    double squares = 0.0;
    for (const Sample& sample : samples) {
        Sum& sum = sums[map->At(unplaced.Of(sample.at, sample.motion))];
        sum.count += 1.0;
        for (size_t channel = 0; channel < sample.light.size(); ++channel) {
            sum.light[channel] += sample.light[channel];
            squares += sample.light[channel] * sample.light[channel];
        }
    }
    for (const Sum& sum : sums) {
        if (sum.count > 0.0) {
            squares -= Distance(sum.light, {}) / sum.count;
        }
    }
    return squares;
}

/// What remains when each patch has the one colour that suits all samples best, seen through the aperture.
double PlacementSearch::Fine(const std::vector<Sample>& samples, const Candidate& candidate) const
{
    const Unplaced unplaced(candidate.placement, candidate.latency, unitAlong, unitAcross);
    std::vector<int> columns(layout.Places().size() + Map::Papers, -1);
    std::vector<Map::Shares> shares;
    int count = 0;
    shares.reserve(samples.size());
    std::vector<Eigen::Triplet<double>> entries;
    for (const Sample& sample : samples) {
        shares.push_back(map->SharesAt(unplaced.Of(sample.at, sample.motion)));
        const Map::Shares& here = shares.back();
        for (size_t i = 0; i < here.count; ++i) {
            int& column = columns[here.all[i].of];
            column = column < 0 ? count++ : column;
        }
        for (size_t i = 0; i < here.count; ++i) {
            for (size_t k = 0; k < here.count; ++k) {
                entries.emplace_back(columns[here.all[i].of], columns[here.all[k].of],
                                     here.all[i].share * here.all[k].share);
            }
        }
    }
    for (int i = 0; i < count; ++i) {
        entries.emplace_back(i, i, Ridge);
    }
    Eigen::MatrixXd right = Eigen::MatrixXd::Zero(count, static_cast<Eigen::Index>(LineFit::Channels));
    for (size_t s = 0; s < samples.size(); ++s) {
        for (size_t i = 0; i < shares[s].count; ++i) {
            for (size_t channel = 0; channel < LineFit::Channels; ++channel) {
                right(columns[shares[s].all[i].of], static_cast<Eigen::Index>(channel)) +=
                    shares[s].all[i].share * samples[s].light[channel];
            }
        }
    }
    Eigen::SparseMatrix<double> normal(count, count);
    normal.setFromTriplets(entries.begin(), entries.end());
    const Eigen::SimplicialLDLT<Eigen::SparseMatrix<double>> solver(normal);
    const Eigen::MatrixXd colours = solver.solve(right);
    double squares = 0.0;
    for (size_t s = 0; s < samples.size(); ++s) {
        for (size_t channel = 0; channel < LineFit::Channels; ++channel) {
            double left = samples[s].light[channel];
            for (size_t i = 0; i < shares[s].count; ++i) {
                left -=
                    shares[s].all[i].share * colours(columns[shares[s].all[i].of], static_cast<Eigen::Index>(channel));
            }
            squares += left * left;
        }
    }
    return squares;
}

/// Walks downhill with ever smaller steps.
template <typename Cost>
void PlacementSearch::Refine(Candidate& candidate, double step, double last, bool withLatency, const Cost& cost) const
{
    candidate.squares = cost(candidate);
    const double speed = travels.front().speed;
    while (step > last) {
        const double before = candidate.squares;
        for (int way = 0; way < (withLatency ? 4 : 3); ++way) {
            for (const double by : {step, -step}) {
                Candidate moved = candidate;
                switch (way) {
                case 0:
                    moved.placement.shift.x += by;
                    break;
                case 1:
                    moved.placement.shift.y += by;
                    break;
                case 2:
                    moved.placement.rotation += by / lever;
                    break;
                default:
                    moved.latency += by / speed;
                }
                moved.squares = cost(moved);
                if (moved.squares < candidate.squares) {
                    candidate = moved;
                    break;
                }
            }
        }
        if (candidate.squares >= before) {
            step /= 2.0;
        }
    }
}

std::optional<PlacementSearch::Result> PlacementSearch::Best(const Placement& expected) const
{
    const std::vector<Sample> samples = Samples();
    constexpr size_t leastSamples = 20;
    if (samples.size() < leastSamples) {
        return std::nullopt;
    }
    const double latency = Latency();
    const double patch = std::min(pitchAlong, pitchAcross);
    const auto rough = [&](const Candidate& candidate) { return Rough(samples, candidate); };
    const auto fine = [&](const Candidate& candidate) { return Fine(samples, candidate); };

    std::vector<Candidate> all;
    const int shifts = static_cast<int>(std::ceil(FarthestShift / RoughStep));
    const int turns = static_cast<int>(std::ceil(LargestRotation * lever / (RoughStep * patch)));
    for (int turn = -turns; turn <= turns; ++turn) {
        for (int i = -shifts; i <= shifts; ++i) {
            for (int k = -shifts; k <= shifts; ++k) {
                Candidate candidate{expected, latency, 0.0};
                const double along = i * FarthestShift / shifts * pitchAlong;
                const double across = k * FarthestShift / shifts * pitchAcross;
                candidate.placement.shift.x += along * unitAlong.x + across * unitAcross.x;
                candidate.placement.shift.y += along * unitAlong.y + across * unitAcross.y;
                candidate.placement.rotation += turn * LargestRotation / turns;
                candidate.squares = rough(candidate);
                all.push_back(candidate);
            }
        }
    }
    const auto better = [](const Candidate& a, const Candidate& b) { return a.squares < b.squares; };
    const auto separate = [&](std::vector<Candidate>& from, size_t most) {
        std::sort(from.begin(), from.end(), better);
        std::vector<Candidate> chosen;
        for (const Candidate& candidate : from) {
            if (chosen.size() < most && std::none_of(chosen.begin(), chosen.end(), [&](const Candidate& other) {
                    return Apart(candidate.placement, other.placement) < SamePlace;
                })) {
                chosen.push_back(candidate);
            }
        }
        from = std::move(chosen);
    };
    separate(all, RoughCandidates);
    for (Candidate& candidate : all) {
        Refine(candidate, 0.5 * RoughStep * patch, 0.1, false, rough);
        candidate.squares = fine(candidate);
    }
    separate(all, FineCandidates);
    for (Candidate& candidate : all) {
        Refine(candidate, 0.25 * RoughStep * patch, 0.1, true, fine);
    }
    std::sort(all.begin(), all.end(), better);
    all.erase(std::remove_if(all.begin() + 1, all.end(),
                             [&](const Candidate& other) { return other.squares > 10.0 * all.front().squares; }),
              all.end());
    for (Candidate& candidate : all) {
        Refine(candidate, 0.1, 0.01, true, fine);
    }
    separate(all, FineCandidates);

    // What explains the samples as well as the best counts as much. Of those, one as near as charts are promised to lie
    // goes before one farther off, which then is no rival.
    const double floor = static_cast<double>(samples.size() * LineFit::Channels) * UsualNoise * UsualNoise;
    const double limit = LeastDistinctness * (all.front().squares + floor) - floor;
    const auto isNear = [&](const Candidate& candidate) {
        return Shift(candidate.placement, expected) < FarthestPromised;
    };
    all.erase(std::find_if(all.begin(), all.end(), [&](const Candidate& other) { return other.squares > limit; }),
              all.end());
    std::stable_partition(all.begin(), all.end(), isNear);
    return Result{all.front().placement, all.front().latency,
                  all.size() > 1 && (isNear(all[1]) || !isNear(all.front())), !isNear(all.front())};
}

}  // namespace J4Tool
