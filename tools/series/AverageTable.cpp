#include "tools/series/AverageTable.h"

#include <algorithm>

#include "chart/cgats/CgatsFields.h"
#include "chart/colour/Average.h"
#include "chart/colour/ColourConditions.h"
#include "tools/DateText.h"
#include "tools/FixedText.h"
#include "tools/MeasuredColumns.h"

namespace J4Tool {

namespace {

using J4Chart::CgatsTable;
using J4Chart::Chart;
using Measurement = MeasurementSeries::Measurement;

/// Keywords that tell the form of a file, or are told anew.
bool IsOfOneFile(const std::string& keyword)
{
    return keyword.starts_with("SPECTRAL_") || keyword == "LAYOUT_ORIGIN" || keyword == "REPEATS" ||
           keyword == "DESCRIPTOR" || keyword == "CREATED" || keyword == "WEIGHTING_FUNCTION";
}

/// How many single measurements a file is the average of.
double Repeats(const Chart& chart)
{
    double repeats = 0.0;
    return J4Chart::ParseNumber(chart.Condition("REPEATS"), repeats) && repeats >= 1.0 ? repeats : 1.0;
}

/// CREATED of the latest measurement that tells it; empty where none does, or one of them can't be read.
std::string LatestDate(const MeasurementSeries& series)
{
    std::string latest;
    std::optional<std::time_t> time;
    for (const Measurement& measurement : series.Measurements()) {
        const std::string date = measurement.chart.Condition("CREATED");
        const std::optional<std::time_t> dated = ParseDate(date);
        if (!date.empty() && !dated) {
            return {};
        }
        if (dated && (!time || *dated > *time)) {
            time = dated;
            latest = date;
        }
    }
    return latest;
}

void AddConditions(CgatsTable& table, const MeasurementSeries& series)
{
    double repeats = 0.0;
    for (const Measurement& measurement : series.Measurements()) {
        repeats += Repeats(measurement.chart);
    }
    const std::string created = LatestDate(series);
    table.SetKeyword("DESCRIPTOR", "Average of " + std::to_string(series.Measurements().size()) + " measurements");
    if (!created.empty()) {
        table.SetKeyword("CREATED", created);
    }
    table.SetKeyword("WEIGHTING_FUNCTION", J4Chart::ColourConditions().Text());
    table.SetKeyword("REPEATS", J4Chart::NumberText(repeats));
    for (const auto& [keyword, value] : series.Measurements().front().chart.conditions) {
        const bool agreed = std::all_of(series.Measurements().begin(), series.Measurements().end(),
                                        [&keyword = keyword, &value = value](const Measurement& measurement) {
                                            return measurement.chart.Condition(keyword) == value;
                                        });
        if ((agreed || keyword == "LAYOUT_ROTATION") && !IsOfOneFile(keyword)) {
            table.SetKeyword(keyword, value);
        }
    }
}

/// Densities of one kind, in all measurements.
bool HasDensities(const MeasurementSeries& series)
{
    const std::string status = series.Measurements().front().chart.Condition("DENSITY_STATUS");
    return std::all_of(series.Measurements().begin(), series.Measurements().end(), [&](const Measurement& measurement) {
        return measurement.chart.patches.front().densities && measurement.chart.Condition("DENSITY_STATUS") == status;
    });
}

J4Chart::Densities MeanDensities(const MeasurementSeries& series, size_t patch)
{
    std::vector<J4Chart::Densities> densities;
    for (const Measurement& measurement : series.Measurements()) {
        densities.push_back(*measurement.chart.patches[patch].densities);
    }
    return J4Chart::MeanDensities(densities);
}

}  // namespace

CgatsTable AverageTable(const MeasurementSeries& series)
{
    const Chart& first = series.Measurements().front().chart;
    CgatsTable table;
    table.kind = "CGATS.17";
    AddConditions(table, series);
    table.fields = {"SAMPLE_ID", "SAMPLE_NAME"};
    table.fields.insert(table.fields.end(), first.deviceFields.begin(), first.deviceFields.end());
    if (!first.places.empty()) {
        MeasuredColumns::AddPlaceFields(table.fields);
    }
    if (!first.rowPlaces.empty()) {
        MeasuredColumns::AddRowFields(table.fields);
    }
    table.fields.emplace_back("REPEAT_SPREAD");
    const bool hasDensities = HasDensities(series);
    if (hasDensities) {
        MeasuredColumns::AddDensityFields(table.fields);
    }
    MeasuredColumns::AddColourFields(table.fields);
    for (size_t i = 0; i < first.patches.size(); ++i) {
        const J4Chart::Patch& patch = first.patches[i];
        CgatsTable::Row& row = table.rows.emplace_back();
        row.line = patch.line;
        row.values = {patch.IdAt(i), patch.name};
        row.values.insert(row.values.end(), patch.device.begin(), patch.device.end());
        if (!first.places.empty()) {
            MeasuredColumns::AddPlace(row.values, first.places[i]);
        }
        if (!first.rowPlaces.empty()) {
            MeasuredColumns::AddRow(row.values, first.rowPlaces[i]);
        }
        row.values.push_back(
            FixedText(J4Chart::MeanDifference(series.Colours(i)).ciede2000, MeasuredColumns::ColourDigits));
        if (hasDensities) {
            MeasuredColumns::AddDensities(row.values, MeanDensities(series, i));
        }
        MeasuredColumns::AddColour(row.values, J4Chart::MeanOf(series.Spectra(i)));
    }
    return table;
}

}  // namespace J4Tool
