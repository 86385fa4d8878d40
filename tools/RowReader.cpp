#include "tools/RowReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "chart/colour/Colorimetry.h"
#include "tools/Agreement.h"
#include "tools/CrossedPatches.h"
#include "tools/Formatted.h"
#include "tools/LineFit.h"
#include "tools/RowSpeed.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace Colorimetry = J4Chart::Colorimetry;

namespace {

/// Limits of a fitted row.
constexpr double LargestRowResidual = 0.4;  // mm
constexpr double LargestOfEdges = 1.2;      // mm
constexpr double LeastRowDistinctness = 1.5;
constexpr size_t LeastSamples = 3;
constexpr double LargestDeviation = 1.5;
constexpr double LargestLag = 0.02;  // s

/// A measurement nearer to the row's line sees the same, mm.
constexpr double LeastBeside = 0.3;

/// Of the nine places on a patch so many have to agree where not all do, and not all of them nearer to one another than
/// that, mm: a speck that is seen whole looks alike from places nearer than the aperture's diameter less its own.
constexpr size_t LeastSpots = 4;
constexpr double LeastSpan = 3.9;

/// Instruments are steadier than that, in reflectance: a single measurement, and a mean of samples.
constexpr double LargestSpotNoise = 0.0005;
constexpr double LargestMeanNoise = 0.005;

/// Of what is measured again: how many patches, and how much of a difference (CIE 1976) a print that dries and an
/// instrument that was calibrated anew may make.
constexpr size_t Rechecked = 4;
constexpr double LargestRecheck = 5.0;

/// The densities of what several samples make together; nothing where none were read.
std::optional<J4Chart::Densities> DensitiesOf(const std::vector<J4Chart::Densities>& samples,
                                              const std::vector<size_t>& used)
{
    if (samples.empty()) {
        return std::nullopt;
    }
    std::vector<J4Chart::Densities> members;
    for (const size_t sample : used) {
        members.push_back(samples[sample]);
    }
    return J4Chart::MeanDensities(members);
}

/// How far from the middle a measurement may be taken towards a side, as a share of the way to its edge. Not farther than
/// to where it sees nothing of what it sees in the middle: so the chart may lie a little wrong.
double Reach(Point side)
{
    const double free = std::max(0.0, Length(side) - 0.5 * LineFit::Aperture - LineFit::Guard);
    return std::min(free, LineFit::Aperture) / Length(side);
}

}  // namespace

RowReader::RowReader(Session& session, const ChartLayout& layout)
    : session(session), layout(layout), check(layout), scan(session)
{}

void RowReader::PrepareRecognition(int carried)
{
    session.SetOption("MeasurementMode", "ScanningReflectance");
    session.SetOption("J4TRecognitionAlgorithm", "2");
    session.SetOption("J4TScanSpeed", std::to_string(carried));
}

std::string RowReader::Fit(const RowPlan::Pass& pass, int carried, Readings& readings)
{
    const RowPlan::Pass wide = RowPlan::Along(layout, pass.row, RowSpeed::Margin(carried), pass.reversed);
    const CrossedPatches crossed(layout, wide.start, wide.end);
    LineScan::Samples samples;
    try {
        samples = scan.Take(wide.start, wide.end, carried);
    } catch (const ToolError& error) {
        if (error.status == J4_ResultIllegalPosition) {
            return "there is no room before or behind the row to scan it evenly";
        }
        throw;
    }

    // Where the chart was found, the row has to be found too.
    const double length = Distance(wide.start, wide.end);
    const Point along{(wide.end.x - wide.start.x) / length, (wide.end.y - wide.start.y) / length};
    const Point middle{0.5 * (wide.start.x + wide.end.x), 0.5 * (wide.start.y + wide.end.y)};
    const Point found = expected.placement.Of(middle);
    const double shift = along.x * (found.x - middle.x) + along.y * (found.y - middle.y);
    for (double& place : samples.places) {
        place += carried * expected.latency - shift;
    }
    double shortest = std::numeric_limits<double>::infinity();
    for (const LineFit::Stretch& stretch : crossed.stretches) {
        shortest = std::min(shortest, stretch.end - stretch.begin);
    }
    LineFit::Settings settings;
    settings.blur = samples.blur;
    settings.largestOffset = 0.4 * shortest + (expected.isSure ? 0.0 : carried * LargestLag);
    const LineFit fit(samples.spectra, samples.places, crossed.stretches, settings);

    const ChartLayout::Row& row = layout.Rows()[pass.row];
    if (!fit.Located() && fit.VisibleEdges() > 0) {
        return "the edges of the patches can't be found";
    }
    if (fit.IsOfOthers()) {
        return "what was seen does not look like the row: " + Formatted("%.0f %%", 100.0 * fit.Unexplained()) +
               " of it is not explained";
    }
    if (fit.Residual() > LargestRowResidual || fit.WorstEdge() > LargestOfEdges) {
        return "the edges of the patches are " + Formatted("%.2f mm", fit.Residual()) + " off, the worst " +
               Formatted("%.2f mm", fit.WorstEdge());
    }
    if (fit.Located() && fit.Distinctness() < LeastRowDistinctness) {
        return "it can't be told which of two places along the row is right";
    }
    readings.assign(row.size(), std::nullopt);
    std::vector<J4Chart::Spectrum> spectra(row.size());
    size_t missing = row.size();
    const double limit = LargestDeviation * std::max(1.0, fit.UsualDeviation());
    for (size_t i = 0; i < crossed.patches.size(); ++i) {
        const auto place = std::find(row.begin(), row.end(), crossed.patches[i]);
        const LineFit::Reading& reading = fit.Readings()[i];
        if (place != row.end() && reading.samples >= LeastSamples && reading.samples == reading.inside &&
            reading.deviation <= limit) {
            const auto index = static_cast<size_t>(place - row.begin());
            spectra[index] = reading.mean;
            readings[index] = PatchReading{reading.mean,
                                           ReadingWay::Fitted,
                                           reading.samples,
                                           reading.spread,
                                           fit.Residual(),
                                           0.0,
                                           DensitiesOf(samples.densities, reading.used)};
            --missing;
        }
    }
    if (missing > 0) {
        return std::to_string(missing) + (missing == 1 ? " patch is" : " patches are") +
               " not of one colour in the middle, or too short for samples of their own";
    }
    const std::string fault = check.Fault(pass.row, spectra);
    if (!fault.empty()) {
        readings.clear();
    }
    return fault;
}

std::string RowReader::Measure(size_t row, Readings& readings)
{
    const ChartLayout::Row& patches = layout.Rows()[row];
    readings.resize(patches.size());
    if (const std::string fault = MeasureMissing(patches, readings); !fault.empty()) {
        return fault;
    }
    // What the other patches were read by has not been looked at yet where some of them failed.
    if (!Confirm(RowPlan::Along(layout, row, 0.0, false), readings).empty()) {
        if (const std::string fault = MeasureMissing(patches, readings); !fault.empty()) {
            return fault;
        }
    }
    std::vector<J4Chart::Spectrum> spectra;
    for (const auto& reading : readings) {
        spectra.push_back(reading->spectrum);
    }
    const std::string fault = check.Fault(row, spectra);
    if (!fault.empty()) {
        readings.clear();
    }
    return fault;
}

std::string RowReader::MeasureMissing(const ChartLayout::Row& row, Readings& readings)
{
    std::vector<size_t> missing;
    for (size_t i = readings.size(); i-- > 0;) {
        if (!readings[i]) {
            missing.push_back(i);
        }
    }
    while (!missing.empty()) {
        const size_t i = missing.back();
        missing.pop_back();
        readings[i] = MeasureOne(row[i]);
        if (!readings[i]) {
            return "patch " + layout.Patches()[row[i]].name +
                   " is not of one colour: too few of the measurements on it agree";
        }
        // What lies on this patch may go on to the next ones, evenly enough to be taken for their colour.
        for (const size_t beside : {i + 1, i - 1}) {
            if (beside < readings.size() && readings[beside] && !IsConfirmed(row[beside], *readings[beside])) {
                readings[beside].reset();
                missing.push_back(beside);
            }
        }
    }
    return {};
}

std::string RowReader::Confirm(const RowPlan::Pass& pass, Readings& readings)
{
    const ChartLayout::Row& row = layout.Rows()[pass.row];
    std::vector<J4Chart::Spectrum> spectra;
    for (const auto& reading : readings) {
        spectra.push_back(reading->spectrum);
    }
    std::vector<size_t> doubtful = check.Outliers(pass.row, spectra);
    const size_t last = pass.reversed ? 0 : row.size() - 1;
    if (std::find(doubtful.begin(), doubtful.end(), last) == doubtful.end()) {
        doubtful.push_back(last);
    }
    std::string names;
    for (const size_t i : doubtful) {
        if (!IsConfirmed(row[i], *readings[i])) {
            readings[i].reset();
            names += (names.empty() ? "" : ", ") + layout.Patches()[row[i]].name;
        }
    }
    return names.empty() ? "" : "a single measurement contradicts what was read of " + names;
}

bool RowReader::IsConfirmed(size_t patch, const PatchReading& reading)
{
    const J4Chart::Place& place = layout.Places()[patch];
    const double beside = Reach(place.across);
    if (reading.way == ReadingWay::Spot || beside * Length(place.across) < LeastBeside) {
        return true;
    }
    session.Move(
        expected.placement.Of({place.centre.x + beside * place.across.x, place.centre.y + beside * place.across.y}));
    const J4Chart::Spectrum seen = session.Measure();
    const double noise = std::sqrt(2.0) * std::min(LargestMeanNoise, Agreement::Noise(seen, reading.spectrum));
    return Colorimetry::Distance(Colorimetry::Lab(seen), Colorimetry::Lab(reading.spectrum)) <=
           Agreement::LimitOf(reading.spectrum, noise);
}

std::string RowReader::Recheck(const Measurements& earlier)
{
    struct Known {
        size_t patch;
        Colorimetry::Triple colour;
        double apart;  ///< from the nearest one chosen
    };
    std::vector<Known> known;
    for (size_t patch = 0; patch < earlier.size(); ++patch) {
        if (earlier[patch]) {
            // The first choice is the patch that differs most from the perfect diffuser.
            const Colorimetry::Triple colour = Colorimetry::Lab(earlier[patch]->spectrum);
            known.push_back({patch, colour, Colorimetry::Distance(colour, {100.0, 0.0, 0.0})});
        }
    }
    for (size_t i = 0; i < std::min(Rechecked, known.size()); ++i) {
        const Known chosen = *std::max_element(known.begin(), known.end(),
                                               [](const Known& a, const Known& b) { return a.apart < b.apart; });
        session.Move(expected.placement.Of(layout.Places()[chosen.patch].centre));
        const double off = Colorimetry::Distance(Colorimetry::Lab(session.Measure()), chosen.colour);
        if (off > LargestRecheck) {
            return "patch " + layout.Patches()[chosen.patch].name + " now differs by " + Formatted("%.1f", off) +
                   " from what was measured of it before: another chart, or it lies otherwise";
        }
        for (Known& other : known) {
            const double distance = Colorimetry::Distance(other.colour, chosen.colour);
            other.apart = i == 0 ? distance : std::min(other.apart, distance);
        }
    }
    return {};
}

std::array<Point, RowReader::SpotsOfPatch> RowReader::Spots(const J4Chart::Place& place)
{
    const double along = Reach(place.along);
    const double across = Reach(place.across);
    const auto at = [&](double u, double v) {
        return Point{place.centre.x + u * place.along.x + v * place.across.x,
                     place.centre.y + u * place.along.y + v * place.across.y};
    };
    return {at(-along, -across), at(-along, across), at(along, across), at(along, 0.0), at(along, -across),
            at(0.0, -across),    at(0.0, 0.0),       at(0.0, across),   at(-along, 0.0)};
}

std::optional<PatchReading> RowReader::MeasureOne(size_t patch)
{
    const auto spots = Spots(layout.Places()[patch]);
    std::vector<J4Chart::Spectrum> spectra;
    std::vector<J4Chart::Densities> densities;
    std::vector<double> noises;
    Agreement::Group group;
    for (const Point& spot : spots) {
        session.Move(expected.placement.Of(spot));
        spectra.push_back(session.Measure());
        densities.insert(densities.end(), session.SampleDensities().begin(), session.SampleDensities().end());
        for (size_t i = 0; i + 1 < spectra.size(); ++i) {
            noises.push_back(Agreement::Noise(spectra[i], spectra.back()));
        }
        if (spectra.size() == FirstSpots || spectra.size() == SpotsOfPatch) {
            std::sort(noises.begin(), noises.end());
            group = Agreement::Largest(spectra, std::min(LargestSpotNoise, noises[noises.size() / 2]));
            if (group.members.size() == spectra.size()) {
                break;
            }
        }
    }
    double span = 0.0;
    for (const size_t i : group.members) {
        for (const size_t k : group.members) {
            span = std::max(span, Distance(spots[k], spots[i]));
        }
    }
    if (group.members.size() < spectra.size() &&
        (group.members.size() < LeastSpots || span < LeastSpan || !group.isAtTheEnd)) {
        return std::nullopt;
    }
    return PatchReading{group.mean,
                        ReadingWay::Spot,
                        group.members.size(),
                        group.spread,
                        0.0,
                        0.0,
                        DensitiesOf(densities, group.members)};
}

}  // namespace J4Tool
