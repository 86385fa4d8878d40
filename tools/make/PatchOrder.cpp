#include "tools/make/PatchOrder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace J4Tool {

namespace {

constexpr double PerUnit = 100.0;

constexpr int64_t WholeSquare(double difference)
{
    return static_cast<int64_t>(difference * PerUnit) * static_cast<int64_t>(difference * PerUnit);
}

/// By how much a square of a difference falls short.
int64_t Lack(int64_t square, double wanted) { return std::max<int64_t>(0, WholeSquare(wanted) - square); }

}  // namespace

PatchOrder::PatchOrder(const std::vector<J4Chart::Colorimetry::Triple>& labs,
                       const J4Chart::Colorimetry::Triple& paperLab, const std::vector<size_t>& rows)
    : paper(Whole(paperLab)), begins(labs.size(), false), order(labs.size())
{
    std::transform(labs.begin(), labs.end(), std::back_inserter(colours), Whole);
    std::iota(order.begin(), order.end(), size_t{0});
    size_t place = 0;
    for (const size_t length : rows) {
        begins.at(place) = true;
        place += length;
    }
}

PatchOrder::Colour PatchOrder::Whole(const J4Chart::Colorimetry::Triple& lab)
{
    return {std::llround(lab[0] * PerUnit), std::llround(lab[1] * PerUnit), std::llround(lab[2] * PerUnit)};
}

int64_t PatchOrder::Square(const Colour& first, const Colour& second)
{
    const int64_t l = first.l - second.l;
    const int64_t a = first.a - second.a;
    const int64_t b = first.b - second.b;
    return l * l + a * a + b * b;
}

int64_t PatchOrder::Fault(size_t place) const
{
    const Colour& here = colours[order[place]];
    const bool isFirst = begins[place];
    const bool isLast = place + 1 == order.size() || begins[place + 1];
    int64_t fault = isFirst || isLast ? Lack(Square(here, paper), WantedFromPaper) : 0;
    fault += isFirst ? 0 : Lack(Square(here, colours[order[place - 1]]), WantedDifference);
    fault += isLast ? 0 : Lack(Square(here, colours[order[place + 1]]), WantedDifference);
    return fault;
}

int64_t PatchOrder::FaultAround(size_t place) const
{
    return Fault(place) + (place > 0 ? Fault(place - 1) : 0) + (place + 1 < order.size() ? Fault(place + 1) : 0);
}

bool PatchOrder::Improve(size_t place, size_t other)
{
    const int64_t before = FaultAround(place) + FaultAround(other);
    std::swap(order[place], order[other]);
    if (FaultAround(place) + FaultAround(other) < before) {
        return true;
    }
    std::swap(order[place], order[other]);
    return false;
}

/// A number below the given one; what the standard's distributions give is each library's own matter.
uint64_t PatchOrder::Random(uint64_t below)
{
    const uint64_t bias = std::numeric_limits<uint64_t>::max() % below;
    uint64_t number = random();
    while (number < bias) {
        number = random();
    }
    return number % below;
}

void PatchOrder::Mix(uint64_t seed)
{
    random.seed(seed);
    for (size_t i = order.size(); i > 1; --i) {
        std::swap(order[i - 1], order[Random(i)]);
    }
    // A list of colours that are all alike can't be parted, and is not tried for ever.
    constexpr size_t triesForPlace = 300;
    constexpr size_t mostTries = 20'000'000;
    size_t tries = 0;
    for (bool improved = true; improved && tries < mostTries;) {
        improved = false;
        for (size_t place = 0; place < order.size(); ++place) {
            // Beginning anywhere, so that the first places are not emptied of what goes everywhere.
            const size_t begin = Random(order.size());
            for (size_t step = 0; step < std::min(triesForPlace, order.size()) && Fault(place) > 0; ++step, ++tries) {
                improved |= Improve(place, (begin + step) % order.size());
            }
        }
    }
}

double PatchOrder::LeastDifference() const
{
    int64_t least = std::numeric_limits<int64_t>::max();
    for (size_t place = 1; place < order.size(); ++place) {
        if (!begins[place]) {
            least = std::min(least, Square(colours[order[place]], colours[order[place - 1]]));
        }
    }
    return least == std::numeric_limits<int64_t>::max() ? 0.0 : std::sqrt(static_cast<double>(least)) / PerUnit;
}

double PatchOrder::LeastFromPaper() const
{
    int64_t least = std::numeric_limits<int64_t>::max();
    for (size_t place = 0; place < order.size(); ++place) {
        if (begins[place] || place + 1 == order.size() || begins[place + 1]) {
            least = std::min(least, Square(colours[order[place]], paper));
        }
    }
    return std::sqrt(static_cast<double>(least)) / PerUnit;
}

}  // namespace J4Tool
