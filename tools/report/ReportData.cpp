#include "tools/report/ReportData.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "chart/cgats/CgatsFields.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

using namespace J4Chart;

// A row is taken to begin and end on bare paper, this far beside its outer patches, mm.
constexpr double usualMargin = 8.0;

struct FormulaKind {
    const char* name;
    double (*difference)(const Colorimetry::Triple&, const Colorimetry::Triple&);
};
constexpr FormulaKind formulaKinds[] = {{"CIEDE2000", Colorimetry::Ciede2000}, {"CIE 1976", Colorimetry::Distance}};

ReportData::Side SideOf(const ColourTable::Patch& patch)
{
    return {*patch.lab, ScreenColourOf(*patch.lab), patch.spectrum};
}

using TextOfPatch = std::string ColourTable::Patch::*;
using Index = std::map<std::string, const ColourTable::Patch*>;

/// False when a text is empty or stands for two patches.
bool MakeIndex(const ColourTable& table, TextOfPatch text, Index& index)
{
    index.clear();
    return std::all_of(table.Patches().begin(), table.Patches().end(), [&](const ColourTable::Patch& patch) {
        return !(patch.*text).empty() && index.emplace(patch.*text, &patch).second;
    });
}

/// The reference of each measured patch; null pointers for those without one.
std::vector<const ColourTable::Patch*> Match(const ColourTable& measured, const ColourTable& reference)
{
    for (const TextOfPatch text : {&ColourTable::Patch::name, &ColourTable::Patch::id}) {
        Index index;
        if (!MakeIndex(reference, text, index)) {
            continue;
        }
        std::vector<const ColourTable::Patch*> references;
        references.reserve(measured.Patches().size());
        for (const ColourTable::Patch& patch : measured.Patches()) {
            const auto found = index.find(patch.*text);
            references.push_back(found == index.end() ? nullptr : found->second);
        }
        if (std::any_of(references.begin(), references.end(), [](const auto* patch) { return patch != nullptr; })) {
            return references;
        }
    }
    throw ToolError(ExitCode::File, "no patch of the measured file has a reference",
                    "Both files need the same SAMPLE_NAME or SAMPLE_ID for a patch, each only once in the reference.");
}

std::string Counted(size_t count, const char* one, const char* several)
{
    return std::to_string(count) + " " + (count == 1 ? one : several);
}

std::optional<double> PositiveKeyword(const J4Chart::CgatsTable& table, const char* name)
{
    double number = 0.0;
    if (J4Chart::ParseNumber(table.ValueOf(name), number) && number > 0.0) {
        return number;
    }
    return std::nullopt;
}

/// The way along a row, from the middle of its first patch to that of its last.
class Direction {
public:
    Direction(const ColourTable::Place& first, const ColourTable::Place& last)
        : first(first), x(last.x - first.x), y(last.y - first.y)
    {
        const double length = std::hypot(x, y);
        x = length > 0.0 ? x / length : 1.0;
        y = length > 0.0 ? y / length : 0.0;
    }

    /// Way from the middle of the first patch, mm.
    double Along(const ColourTable::Place& place) const { return (place.x - first.x) * x + (place.y - first.y) * y; }

    /// True when the row lies along y rather than along x.
    bool IsUpright() const { return std::abs(y) > std::abs(x); }

private:
    ColourTable::Place first;
    double x;
    double y;
};

}  // namespace

ReportData::ReportData(const Source& measured, const Source* reference)
    : measuredName(measured.name), referenceName(reference == nullptr ? "" : reference->name)
{
    for (const J4Chart::CgatsTable::Keyword& keyword : measured.table.Source().keywords) {
        conditions.emplace_back(keyword.name, keyword.value);
    }
    TakePatches(measured.table, reference == nullptr ? nullptr : &reference->table);
    TakeRows(measured.table);
}

void ReportData::TakePatches(const ColourTable& measured, const ColourTable* reference)
{
    const size_t count = measured.Patches().size();
    const std::vector<const ColourTable::Patch*> references =
        reference == nullptr ? std::vector<const ColourTable::Patch*>(count) : Match(measured, *reference);
    std::vector<double> differences[std::size(formulaKinds)];
    size_t missing = 0;
    size_t outside = 0;
    patches.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        const ColourTable::Patch& source = measured.Patches()[i];
        Patch patch;
        patch.name = source.name;
        patch.measured = SideOf(source);
        outside += patch.measured.colour.inGamut ? 0 : 1;
        if (references[i] != nullptr) {
            patch.reference = SideOf(*references[i]);
        } else {
            ++missing;
        }
        for (size_t kind = 0; kind < std::size(formulaKinds); ++kind) {
            if (patch.reference) {
                patch.differences.push_back(formulaKinds[kind].difference(patch.reference->lab, patch.measured.lab));
            }
            differences[kind].push_back(patch.reference ? patch.differences.back()
                                                        : std::numeric_limits<double>::quiet_NaN());
        }
        patches.push_back(std::move(patch));
    }
    TakePlaces(measured, references);
    if (outside > 0) {
        notices.push_back(Counted(outside, "measured colour lies", "measured colours lie") +
                          " outside what an sRGB screen can show; the nearest is shown.");
    }
    if (reference == nullptr) {
        return;
    }
    for (size_t kind = 0; kind < std::size(formulaKinds); ++kind) {
        formulas.push_back({formulaKinds[kind].name, DifferenceSummary(differences[kind])});
    }
    if (missing > 0) {
        notices.push_back(Counted(missing, "measured patch has", "measured patches have") +
                          " no reference and no difference.");
    }
    const size_t unused = reference->Patches().size() - std::min(reference->Patches().size(), count - missing);
    if (unused > 0) {
        notices.push_back(Counted(unused, "patch of the reference was", "patches of the reference were") +
                          " not measured.");
    }
    if (measured.Patches().front().spectrum.has_value() != reference->Patches().front().spectrum.has_value()) {
        notices.push_back(
            "One side has spectra and the other only colour values: make sure that those are for D50 "
            "and the 2 degree observer.");
    }
}

void ReportData::TakePlaces(const ColourTable& measured, const std::vector<const ColourTable::Patch*>& references)
{
    const auto take = [this](const auto& placeOf) {
        for (size_t i = 0; i < patches.size(); ++i) {
            const std::optional<ColourTable::Place> place = placeOf(i);
            if (!place) {
                return false;
            }
            patches[i].place = *place;
        }
        return true;
    };
    placed = take([&](size_t i) { return measured.Patches()[i].place; }) ||
             take([&](size_t i) { return references[i] == nullptr ? std::nullopt : references[i]->place; });
    if (!placed) {
        // A field somewhat wider than high, as a screen is.
        const size_t columns = static_cast<size_t>(std::ceil(std::sqrt(1.6 * static_cast<double>(patches.size()))));
        for (size_t i = 0; i < patches.size(); ++i) {
            patches[i].place = {static_cast<double>(i % columns), static_cast<double>(i / columns), 0.95, 0.95};
        }
    }
}

void ReportData::TakeRows(const ColourTable& measured)
{
    const std::optional<double> speed = PositiveKeyword(measured.Source(), "SCAN_SPEED");
    if (!placed || !speed) {
        return;
    }
    std::map<double, std::map<double, size_t>> order;  // rows, and in each the patches, by their numbers
    for (size_t i = 0; i < patches.size(); ++i) {
        if (const auto& scan = measured.Patches()[i].scan) {
            order[(*scan)[0]][(*scan)[1]] = i;
        }
    }
    const std::optional<double> margin = PositiveKeyword(measured.Source(), "SCAN_MARGIN");
    for (const auto& [number, row] : order) {
        const Patch& first = patches[row.begin()->second];
        const Patch& last = patches[row.rbegin()->second];
        const Direction direction(first.place, last.place);
        const double before = first.place.width / 2.0 + margin.value_or(usualMargin);
        const double behind = last.place.width / 2.0 + margin.value_or(usualMargin);
        RowTravel::Scan scan;
        scan.name = "row " + J4Chart::NumberText(number) + ", " + first.name + " to " + last.name;
        scan.distance = before + direction.Along(last.place) + behind;
        scan.speed = *speed;
        scan.integrationTime = PositiveKeyword(measured.Source(), "INTEGRATION_TIME");
        for (const auto& [column, index] : row) {
            Patch& patch = patches[index];
            const double middle = before + direction.Along(patch.place);
            scan.fields.push_back({index, middle - patch.place.width / 2.0, middle + patch.place.width / 2.0});
        }
        scan.notes.push_back(
            "Scan speed " + J4Chart::NumberText(*speed) +
            " mm/s from the file; drawn from the first patch to the last, whichever way it was driven.");
        if (!margin) {
            scan.notes.push_back("Assumed: the travel begins and ends 8 mm beside the outer patches.");
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
