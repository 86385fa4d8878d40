#include "tools/series/MeasurementSeries.h"

#include <algorithm>
#include <map>
#include <utility>

#include "chart/cgats/CgatsError.h"
#include "chart/colour/MeasuringCondition.h"
#include "tools/ColourFile.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

using J4Chart::CgatsError;
using J4Chart::Chart;
using J4Chart::Patch;

using Index = std::map<std::string, size_t>;

Index IndexOf(const Chart& chart)
{
    Index index;
    for (size_t i = 0; i < chart.patches.size(); ++i) {
        if (!index.emplace(chart.patches[i].name, i).second) {
            throw CgatsError(chart.patches[i].line, "the patch '" + chart.patches[i].name + "' stands there twice");
        }
    }
    return index;
}

/// Brighteners show under one light and not under another: such spectra have no mean.
void RequireSameCondition(const Chart& first, const Chart& other)
{
    const auto conditionOf = [](const Chart& chart) {
        return J4Chart::MeasuringCondition(chart.Condition("MEASUREMENT_SOURCE"),
                                           chart.Condition("MEASUREMENT_CONDITION"));
    };
    const std::string wanted = conditionOf(first);
    const std::string found = conditionOf(other);
    if (!wanted.empty() && !found.empty() && wanted != found) {
        throw CgatsError(0, "it was measured by " + found + " and not by " + wanted);
    }
}

bool HasSameValues(const Chart& first, const Chart& other)
{
    return std::equal(first.patches.begin(), first.patches.end(), other.patches.begin(), other.patches.end(),
                      [](const Patch& one, const Patch& another) {
                          return one.spectrum && another.spectrum ? *one.spectrum == *another.spectrum
                                                                  : one.Colour() == another.Colour();
                      });
}

template <class List>
void Rearrange(List& list, const std::vector<size_t>& order)
{
    List arranged;
    for (size_t i = 0; i < list.size(); ++i) {
        arranged.push_back(std::move(list[order[i]]));
    }
    list = std::move(arranged);
}

/// Brings the patches into the order of the first measurement.
void Match(const Chart& first, Chart& other)
{
    Index index = IndexOf(other);
    std::vector<size_t> order;
    PatchMatch match;
    for (const Patch& wanted : first.patches) {
        const auto found = index.find(wanted.name);
        if (found == index.end()) {
            throw CgatsError(0, "the patch '" + wanted.name + "' is missing");
        }
        order.push_back(found->second);
        match.emplace_back(found->second);
        index.erase(found);
    }
    if (!index.empty()) {
        const Patch& patch = other.patches[index.begin()->second];
        throw CgatsError(patch.line, "the patch '" + patch.name + "' is one more");
    }
    if (const auto found = FindContradiction(first, other, match)) {
        const Patch& patch = other.patches[found->otherPatch];
        throw CgatsError(patch.line, "patch '" + patch.name + "' has " + found->field + " " + found->otherValue +
                                         " and not " + found->value);
    }
    Rearrange(other.patches, order);
    Rearrange(other.places, order);
    Rearrange(other.rowPlaces, order);
}

}  // namespace

MeasurementSeries::MeasurementSeries(const std::vector<std::string>& files, bool spectra)
{
    for (const std::string& file : files) {
        ColourFile read = ColourFile::Load(file);
        if (spectra && !read.chart.patches.front().spectrum) {
            throw ToolError(ExitCode::File, file + ": the patches have no spectra", "Colours can't be averaged alone.");
        }
        try {
            if (spectra && !measurements.empty()) {
                RequireSameCondition(measurements.front().chart, read.chart);
            }
            Add({file, read.name, std::move(read.chart)});
        } catch (const CgatsError& error) {
            throw ToolError(ExitCode::File,
                            file + ": " + error.what() + (measurements.empty() ? "" : ", unlike in " + files.front()),
                            "Give measurements of the same chart, made alike.");
        }
    }
}

void MeasurementSeries::Add(Measurement measurement)
{
    if (measurements.empty()) {
        IndexOf(measurement.chart);
    } else {
        Match(measurements.front().chart, measurement.chart);
    }
    measurements.push_back(std::move(measurement));
}

std::string MeasurementSeries::Notice() const
{
    constexpr size_t shown = 3;
    std::string names;
    size_t count = 0;
    for (auto later = measurements.begin(); later != measurements.end(); ++later) {
        const auto same = std::find_if(measurements.begin(), later, [later](const Measurement& earlier) {
            return HasSameValues(earlier.chart, later->chart);
        });
        if (same != later && ++count <= shown) {
            names += (names.empty() ? "" : ", ") + later->name + " as in " + same->name;
        }
    }
    return count == 0 ? ""
                      : "The same values: in " + names +
                            (count > shown ? ", and in " + std::to_string(count - shown) + " more" : "") +
                            ". Was one measurement given several times?";
}

std::vector<J4Chart::Colorimetry::Triple> MeasurementSeries::Colours(size_t patch) const
{
    std::vector<J4Chart::Colorimetry::Triple> colours;
    for (const Measurement& measurement : measurements) {
        colours.push_back(*measurement.chart.patches[patch].Colour());
    }
    return colours;
}

std::vector<J4Chart::Spectrum> MeasurementSeries::Spectra(size_t patch) const
{
    std::vector<J4Chart::Spectrum> spectra;
    for (const Measurement& measurement : measurements) {
        spectra.push_back(*measurement.chart.patches[patch].spectrum);
    }
    return spectra;
}

}  // namespace J4Tool
