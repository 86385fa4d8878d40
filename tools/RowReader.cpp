#include "tools/RowReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

#include "chart/colour/Colorimetry.h"
#include "tools/CrossedPatches.h"
#include "tools/LineFit.h"
#include "tools/RowSpeed.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace Colorimetry = J4Chart::Colorimetry;

namespace {

/// Limits of a fitted row.
constexpr double LargestResidual = 0.4;      // mm
constexpr double LargestEdgeError = 1.2;     // mm
constexpr double LargestRemainder = 0.01;    // reflectance
constexpr double LargestUnexplained = 0.15;  // share of what the samples differ
constexpr double LeastDistinctness = 1.5;
constexpr size_t LeastSamples = 3;
constexpr double LeastShareKept = 0.6;
constexpr double LargestSpread = 1.5;  // CIE 1976
constexpr double LargestLag = 0.02;    // s

double Length(Point vector) { return std::hypot(vector.x, vector.y); }

std::string Text(const char* format, double value)
{
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

J4Chart::Spectrum Mean(J4Chart::Spectrum first, const J4Chart::Spectrum& second)
{
    for (size_t band = 0; band < first.size(); ++band) {
        first[band] = 0.5f * (first[band] + second[band]);
    }
    return first;
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
    const double length = Length({wide.end.x - wide.start.x, wide.end.y - wide.start.y});
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
    if (fit.Remainder() > LargestRemainder && fit.Unexplained() > LargestUnexplained) {
        return "what was seen does not look like the row: " + Text("%.0f %%", 100.0 * fit.Unexplained()) +
               " of it is not explained";
    }
    if (fit.Residual() > LargestResidual || fit.WorstEdge() > LargestEdgeError) {
        return "the edges of the patches are " + Text("%.2f mm", fit.Residual()) + " off, the worst " +
               Text("%.2f mm", fit.WorstEdge());
    }
    if (fit.Located() && fit.Distinctness() < LeastDistinctness) {
        return "it can't be told which of two places along the row is right";
    }
    readings.assign(row.size(), std::nullopt);
    std::vector<J4Chart::Spectrum> spectra(row.size());
    size_t missing = row.size();
    for (size_t i = 0; i < crossed.patches.size(); ++i) {
        const auto place = std::find(row.begin(), row.end(), crossed.patches[i]);
        const LineFit::Reading& reading = fit.Readings()[i];
        if (place != row.end() && reading.samples >= LeastSamples && reading.spread <= LargestSpread &&
            static_cast<double>(reading.samples) >= LeastShareKept * static_cast<double>(reading.inside)) {
            const auto index = static_cast<size_t>(place - row.begin());
            spectra[index] = reading.mean;
            readings[index] =
                PatchReading{reading.mean, ReadingWay::Fitted, reading.samples, reading.spread, fit.Residual()};
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
    readings.resize(layout.Rows()[row].size());
    std::vector<J4Chart::Spectrum> spectra;
    for (size_t i = 0; i < readings.size(); ++i) {
        const size_t patch = layout.Rows()[row][i];
        if (!readings[i]) {
            readings[i] = MeasureOne(patch);
        }
        if (!readings[i]) {
            return "patch " + layout.Patches()[patch].name +
                   " is not of one colour: no two of three measurements on it agree";
        }
        spectra.push_back(readings[i]->spectrum);
    }
    const std::string fault = check.Fault(row, spectra);
    if (!fault.empty()) {
        readings.clear();
    }
    return fault;
}

std::array<Point, RowReader::SpotsOfPatch> RowReader::Spots(const J4Chart::Place& place)
{
    const double free = std::max(0.0, Length(place.across) - 0.5 * LineFit::Aperture - LineFit::Guard);
    const double step = std::min(free, 0.5 * LineFit::Aperture) / Length(place.across);
    std::array<Point, SpotsOfPatch> spots;
    for (size_t i = 0; i < spots.size(); ++i) {
        const double by = (static_cast<double>(i) - 1.0) * step;
        spots[i] = {place.centre.x + by * place.across.x, place.centre.y + by * place.across.y};
    }
    return spots;
}

std::optional<PatchReading> RowReader::MeasureOne(size_t patch)
{
    const auto spots = Spots(layout.Places()[patch]);
    std::array<J4Chart::Spectrum, SpotsOfPatch> spectra{};
    std::array<Colorimetry::Triple, SpotsOfPatch> colours{};
    for (size_t i = 0; i < spectra.size(); ++i) {
        session.Move(spots[i]);
        spectra[i] = session.Measure();
        colours[i] = Colorimetry::Lab(spectra[i]);
    }
    double nearest = std::numeric_limits<double>::infinity();
    PatchReading reading;
    for (size_t i = 0; i < spectra.size(); ++i) {
        for (size_t k = i + 1; k < spectra.size(); ++k) {
            const double distance = Colorimetry::Distance(colours[i], colours[k]);
            if (distance < nearest) {
                nearest = distance;
                reading = {Mean(spectra[i], spectra[k]), ReadingWay::Spot, 2, 0.5 * distance, 0.0};
            }
        }
    }
    return nearest <= LargestSpread ? std::optional(reading) : std::nullopt;
}

}  // namespace J4Tool
