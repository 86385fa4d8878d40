#include "tools/report/ReportData.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>

#include "chart/ScanMotion.h"
#include "chart/cgats/CgatsFields.h"
#include "chart/colour/ColourDifference.h"
#include "tools/PatchReading.h"
#include "tools/Plural.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

namespace ColourDifference = J4Chart::ColourDifference;
namespace Colorimetry = J4Chart::Colorimetry;

/// @param bands  that the patch's file has
ReportData::Side SideOf(const J4Chart::Patch& patch, const J4Chart::BandRange& bands)
{
    const Colorimetry::Triple lab = *patch.Colour();
    ReportData::Side side = {lab, J4Chart::ScreenColourOf(lab), patch.spectrum};
    for (size_t band = 0; side.spectrum && band < side.spectrum->size(); ++band) {
        if (band < bands.first || band > bands.last) {
            (*side.spectrum)[band] = std::numeric_limits<float>::quiet_NaN();
        }
    }
    return side;
}

/// The two usual ones, and those of the tolerances.
std::vector<ColourDifference::Formula> FormulasOf(const Tolerances* tolerances)
{
    std::vector<ColourDifference::Formula> formulas(ColourDifference::Formulas.begin(),
                                                    ColourDifference::Formulas.begin() + 2);
    for (const Tolerances::Rule& rule : tolerances == nullptr ? std::vector<Tolerances::Rule>() : tolerances->rules) {
        if (std::none_of(formulas.begin(), formulas.end(),
                         [&](const auto& formula) { return formula.name == rule.formula->name; })) {
            formulas.push_back(*rule.formula);
        }
    }
    return formulas;
}

std::string Counted(size_t count, const char* one, const char* several)
{
    return std::to_string(count) + " " + (count == 1 ? one : several);
}

/// A condition of the scan as a number; nothing where it is none, as an instrument may tell its own in words.
std::optional<double> NumberOf(const J4Chart::Chart& chart, const char* keyword, double low)
{
    constexpr double largest = 1e6;  // mm, mm/s or s: more is none of them
    double number = 0.0;
    const bool usable = J4Chart::ParseNumber(chart.Condition(keyword), number) && number >= low && number <= largest;
    return usable ? std::optional(number) : std::nullopt;
}

/// The way along a row, from the middle of its first patch to that of its last.
class Direction {
public:
    Direction(const ReportData::Rectangle& first, const ReportData::Rectangle& last)
        : first(first), x(last.x - first.x), y(last.y - first.y)
    {
        const double length = std::hypot(x, y);
        x = length > 0.0 ? x / length : 1.0;
        y = length > 0.0 ? y / length : 0.0;
    }

    /// Way from the middle of the first patch, mm.
    double Along(const ReportData::Rectangle& place) const { return (place.x - first.x) * x + (place.y - first.y) * y; }

    /// True when the row lies along y rather than along x.
    bool IsUpright() const { return std::abs(y) > std::abs(x); }

private:
    ReportData::Rectangle first;
    double x;
    double y;
};

}  // namespace

ReportData::ReportData(const ColourFile& measured, const ColourFile* reference, const Tolerances* tolerances)
    : measuredName(measured.name),
      referenceName(reference == nullptr ? "" : reference->name),
      conditions(measured.chart.conditions)
{
    TakePatches(measured.chart, reference == nullptr ? nullptr : &reference->chart, tolerances);
    if (tolerances != nullptr && reference != nullptr) {
        verdict.emplace(*tolerances, measured.chart, reference->chart);
    }
    TakeReadings(measured.chart);
    TakeRows(measured.chart);
    TellWays();
}

/// How the patches were read, and how well they agree with themselves and the layout.
void ReportData::TellWays()
{
    for (size_t way = 0; way < WayNames.size(); ++way) {
        size_t count = 0;
        double spread = 0.0;
        double residual = 0.0;
        for (const Patch& patch : patches) {
            if (patch.reading && patch.reading->way == WayNames[way]) {
                ++count;
                spread = std::max(spread, patch.reading->spread);
                residual = std::max(residual, patch.reading->residual);
            }
        }
        if (count == 0) {
            continue;
        }
        std::string notice = Plural(count, "patch") + (count == 1 ? " was" : " were") + " read " + WayWords[way];
        char measures[96] = "";
        if (spread > 0.0) {
            std::snprintf(measures, sizeof measures, "; samples of one patch agree within %.2f (CIE 1976)", spread);
            notice += measures;
        }
        if (residual > 0.0) {
            std::snprintf(measures, sizeof measures, ", the edges of a row within %.2f mm", residual);
            notice += measures;
        }
        notices.push_back(notice + ".");
    }
}

void ReportData::TakeReadings(const J4Chart::Chart& measured)
{
    std::map<std::pair<size_t, std::string>, RowReading> found;  // by row and way
    for (size_t i = 0; i < patches.size(); ++i) {
        const Patch& patch = patches[i];
        if (!patch.reading) {
            continue;
        }
        const size_t row = measured.rowPlaces.empty() ? 0 : measured.rowPlaces[i].row;
        const auto [entry, isNew] = found.try_emplace({row, patch.reading->way});
        RowReading& reading = entry->second;
        if (isNew) {
            reading.row = row == 0 ? "all" : std::to_string(row);
            reading.way = WordsOfWay(patch.reading->way);
            reading.fewestSamples = patch.reading->samples;
        }
        ++reading.patches;
        reading.fewestSamples = std::min(reading.fewestSamples, patch.reading->samples);
        reading.spread = std::max(reading.spread, patch.reading->spread);
        reading.residual = std::max(reading.residual, patch.reading->residual);
        reading.repeatSpread = std::max(reading.repeatSpread, patch.repeatSpread.value_or(0.0));
    }
    for (auto& [key, reading] : found) {
        readings.push_back(std::move(reading));
    }
}

void ReportData::TakePatches(const J4Chart::Chart& measured, const J4Chart::Chart* reference,
                             const Tolerances* tolerances)
{
    const size_t count = measured.patches.size();
    const PatchMatch references = reference == nullptr ? PatchMatch(count) : MatchPatches(measured, *reference);
    const std::vector<ColourDifference::Formula> kinds = FormulasOf(tolerances);
    std::vector<std::vector<double>> differences(kinds.size());
    size_t missing = 0;
    size_t outside = 0;
    patches.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        const J4Chart::Patch& source = measured.patches[i];
        Patch patch;
        patch.name = source.name;
        patch.measured = SideOf(source, measured.bands);
        patch.reading = source.reading;
        patch.densities = source.densities;
        patch.repeatSpread = source.repeatSpread;
        outside += patch.measured.colour.inGamut ? 0 : 1;
        if (references[i]) {
            patch.reference = SideOf(reference->patches[*references[i]], reference->bands);
            patch.parts = ColourDifference::PartsOf(patch.reference->lab, patch.measured.lab);
        } else {
            ++missing;
        }
        for (size_t kind = 0; kind < kinds.size(); ++kind) {
            if (patch.reference) {
                patch.differences.push_back(kinds[kind].difference(patch.reference->lab, patch.measured.lab));
            }
            differences[kind].push_back(patch.reference ? patch.differences.back()
                                                        : std::numeric_limits<double>::quiet_NaN());
        }
        patches.push_back(std::move(patch));
    }
    TakePlaces(measured, reference, references);
    ramps = InkRamp::Find(measured, reference, references);
    if (outside > 0) {
        notices.push_back(Counted(outside, "measured colour lies", "measured colours lie") +
                          " outside what an sRGB screen can show; the nearest is shown.");
    }
    if (reference == nullptr) {
        return;
    }
    for (size_t kind = 0; kind < kinds.size(); ++kind) {
        formulas.push_back({kinds[kind].name, J4Chart::DifferenceSummary(differences[kind])});
    }
    if (missing > 0) {
        notices.push_back(Counted(missing, "measured patch has", "measured patches have") +
                          " no reference and no difference.");
    }
    const size_t unused = reference->patches.size() - std::min(reference->patches.size(), count - missing);
    if (unused > 0) {
        notices.push_back(Counted(unused, "patch of the reference was", "patches of the reference were") +
                          " not measured.");
    }
    for (const auto& [chart, which] : {std::pair(&measured, "measured file"), {reference, "reference"}}) {
        if (!(chart->bands == J4Chart::BandRange())) {
            notices.push_back(std::string("The spectra of the ") + which + " are of " +
                              J4Chart::RangeText(chart->bands) +
                              ": beyond that its colours are computed with their last values.");
        }
    }
    if (measured.patches.front().spectrum.has_value() != reference->patches.front().spectrum.has_value()) {
        notices.push_back(
            "One side has spectra and the other only colour values: make sure that those are for D50 "
            "and the 2 degree observer.");
    }
}

void ReportData::TakePlaces(const J4Chart::Chart& measured, const J4Chart::Chart* reference,
                            const PatchMatch& references)
{
    const bool placedByReference =
        reference != nullptr && !reference->places.empty() &&
        std::all_of(references.begin(), references.end(), [](const auto& patch) { return patch.has_value(); });
    placed = !measured.places.empty() || placedByReference;
    for (size_t i = 0; placed && i < patches.size(); ++i) {
        const J4Chart::Place& place = measured.places.empty() ? reference->places[*references[i]] : measured.places[i];
        patches[i].place = {place.centre.x, place.centre.y, place.Width(), place.Height()};
    }
    if (!placed) {
        // A field somewhat wider than high, as a screen is.
        const size_t columns = static_cast<size_t>(std::ceil(std::sqrt(1.6 * static_cast<double>(patches.size()))));
        for (size_t i = 0; i < patches.size(); ++i) {
            patches[i].place = {static_cast<double>(i % columns), static_cast<double>(i / columns), 0.95, 0.95};
        }
    }
}

void ReportData::TakeRows(const J4Chart::Chart& measured)
{
    constexpr double slowest = 0.001;      // mm/s
    constexpr double shortestTime = 1e-6;  // s
    const std::optional<double> speed = NumberOf(measured, "SCAN_SPEED", slowest);
    if (!placed || !speed) {
        return;
    }
    std::map<size_t, std::map<size_t, size_t>> order;  // rows, and in each the patches, by their numbers
    for (size_t i = 0; i < measured.rowPlaces.size(); ++i) {
        order[measured.rowPlaces[i].row][measured.rowPlaces[i].column] = i;
    }
    const std::optional<double> margin = NumberOf(measured, "SCAN_MARGIN", 0.0);
    for (const auto& [number, row] : order) {
        const Patch& first = patches[row.begin()->second];
        const Patch& last = patches[row.rbegin()->second];
        const Direction direction(first.place, last.place);
        const double before = first.place.width / 2.0 + margin.value_or(J4Chart::ScanMotion::UsualMargin);
        const double behind = last.place.width / 2.0 + margin.value_or(J4Chart::ScanMotion::UsualMargin);
        RowTravel::Scan scan;
        scan.name = "row " + std::to_string(number) + ", " + first.name + " to " + last.name;
        scan.distance = before + direction.Along(last.place) + behind;
        scan.speed = *speed;
        scan.integrationTime = NumberOf(measured, "INTEGRATION_TIME", shortestTime);
        for (const auto& [column, index] : row) {
            Patch& patch = patches[index];
            const double middle = before + direction.Along(patch.place);
            scan.fields.push_back({index, middle - patch.place.width / 2.0, middle + patch.place.width / 2.0});
        }
        scan.notes.push_back(
            "Scan speed " + J4Chart::NumberText(*speed) +
            " mm/s from the file; drawn from the first patch to the last, whichever way it was driven.");
        if (!margin) {
            scan.notes.push_back("Assumed: the travel begins and ends " +
                                 J4Chart::NumberText(J4Chart::ScanMotion::UsualMargin) +
                                 " mm beside the outer patches.");
        }
        rows.emplace_back(std::move(scan));
        if (direction.IsUpright()) {
            for (const auto& [column, index] : row) {
                std::swap(patches[index].place.width, patches[index].place.height);
            }
        }
    }
}

}  // namespace J4Tool
