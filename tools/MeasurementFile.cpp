#include "tools/MeasurementFile.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <sstream>
#include <utility>

#include "chart/ChartReader.h"
#include "chart/cgats/CgatsFields.h"
#include "chart/cgats/CgatsFile.h"
#include "tools/AtomicFile.h"
#include "tools/FixedText.h"
#include "tools/MeasuredColumns.h"
#include "tools/ToolError.h"

namespace J4Tool {

using J4Chart::CgatsTable;

namespace {

/// A column that a file has where this condition announces it.
bool IsAnnounced(const MeasurementFile::Conditions& conditions, const char* keyword)
{
    return std::any_of(conditions.begin(), conditions.end(),
                       [keyword](const auto& condition) { return condition.first == keyword; });
}

void AddFields(CgatsTable& table, const ChartLayout& layout, const MeasurementFile::Conditions& conditions)
{
    table.fields = {"SAMPLE_ID", "SAMPLE_NAME"};
    table.fields.insert(table.fields.end(), layout.DeviceFields().begin(), layout.DeviceFields().end());
    MeasuredColumns::AddPlaceFields(table.fields);
    MeasuredColumns::AddRowFields(table.fields);
    for (const char* field : {"SCAN_WAY", "SCAN_SAMPLES", "SCAN_SPREAD", "SCAN_RESIDUAL"}) {
        table.fields.push_back(field);
    }
    if (IsAnnounced(conditions, "REPEATS")) {
        table.fields.emplace_back("REPEAT_SPREAD");
    }
    if (IsAnnounced(conditions, "DENSITIES")) {
        MeasuredColumns::AddDensityFields(table.fields);
    }
    MeasuredColumns::AddColourFields(table.fields);
}

using RowPlace = J4Chart::Chart::RowPlace;

std::vector<RowPlace> PlacesInRows(const ChartLayout& layout)
{
    std::vector<RowPlace> places(layout.Patches().size());
    for (size_t row = 0; row < layout.Rows().size(); ++row) {
        for (size_t column = 0; column < layout.Rows()[row].size(); ++column) {
            places[layout.Rows()[row][column]] = {row + 1, column + 1};
        }
    }
    return places;
}

std::vector<std::string> Values(const ChartLayout& layout, size_t index, RowPlace rowPlace, const PatchReading& reading,
                                const MeasurementFile::Conditions& conditions)
{
    const J4Chart::Patch& patch = layout.Patches()[index];
    std::vector<std::string> values = {patch.IdAt(index), patch.name};
    values.insert(values.end(), patch.device.begin(), patch.device.end());
    MeasuredColumns::AddPlace(values, layout.Places()[index]);
    MeasuredColumns::AddRow(values, rowPlace);
    values.emplace_back(WayNames[static_cast<size_t>(reading.way)]);
    values.push_back(std::to_string(reading.samples));
    values.push_back(FixedText(reading.spread, MeasuredColumns::ColourDigits));
    values.push_back(FixedText(reading.residual, MeasuredColumns::PlaceDigits));
    if (IsAnnounced(conditions, "REPEATS")) {
        values.push_back(FixedText(reading.repeatSpread, MeasuredColumns::ColourDigits));
    }
    if (IsAnnounced(conditions, "DENSITIES")) {
        MeasuredColumns::AddDensities(values, reading.densities.value());
    }
    MeasuredColumns::AddColour(values, reading.spectrum);
    return values;
}

/// Only spectra: the sheet that colour management programs know by its first line.
CgatsTable SpectraSheet(const ChartLayout& layout, const Measurements& measurements)
{
    using J4Chart::FirstWavelength;
    using J4Chart::SpectrumLength;
    using J4Chart::WavelengthStep;
    CgatsTable table;
    table.kind = "SPECT";
    table.SetKeyword("ORIGINATOR", "j4tavla");
    table.SetKeyword("SPECTRAL_BANDS", std::to_string(SpectrumLength));
    table.SetKeyword("SPECTRAL_START_NM", std::to_string(FirstWavelength));
    table.SetKeyword("SPECTRAL_END_NM", std::to_string(FirstWavelength + WavelengthStep * (SpectrumLength - 1)));
    table.SetKeyword("SPECTRAL_NORM", "1");
    table.fields = {"SAMPLE_ID"};
    for (int band = 0; band < SpectrumLength; ++band) {
        table.fields.push_back("SPEC_" + std::to_string(FirstWavelength + WavelengthStep * band));
    }
    for (size_t i = 0; i < measurements.size(); ++i) {
        if (measurements[i]) {
            CgatsTable::Row& row = table.rows.emplace_back();
            row.line = layout.Patches()[i].line;
            row.values = {layout.Patches()[i].name};
            for (const float value : measurements[i]->spectrum) {
                row.values.push_back(J4Chart::NumberText(value));
            }
        }
    }
    return table;
}

/// Everything but the rows.
CgatsTable FullHead(const ChartLayout& layout, const MeasurementFile::Conditions& conditions)
{
    CgatsTable table;
    table.kind = "CGATS.17";
    for (const auto& [keyword, value] : conditions) {
        table.SetKeyword(keyword, value);
    }
    if (const double turn = layout.Places().front().Rotation(); std::abs(turn) > 1e-9) {
        table.SetKeyword("LAYOUT_ROTATION", FixedText(turn * 180.0 / std::numbers::pi, 4));
    }
    AddFields(table, layout, conditions);
    table.fieldsLine = layout.FieldsLine();
    return table;
}

CgatsTable FullTable(const ChartLayout& layout, const Measurements& measurements,
                     const MeasurementFile::Conditions& conditions)
{
    CgatsTable table = FullHead(layout, conditions);
    const std::vector<RowPlace> places = PlacesInRows(layout);
    for (size_t i = 0; i < measurements.size(); ++i) {
        if (measurements[i]) {
            table.rows.push_back(
                {Values(layout, i, places[i], *measurements[i], conditions), layout.Patches()[i].line});
        }
    }
    return table;
}

/// The text of a partial file. Where the scan had no time to end it, the last line may be cut, and the end is missing.
std::string WholeText(const std::string& fileName)
{
    const std::optional<std::string> content = ContentOf(fileName);
    if (!content) {
        throw J4Chart::CgatsError(0, "the file can't be read");
    }
    std::string text = *content;
    constexpr std::string_view begin = "\nBEGIN_DATA\n";
    constexpr std::string_view end = "END_DATA\n";
    const size_t data = text.find(begin);
    if (data != std::string::npos && text.find("\n" + std::string(end), data) == std::string::npos) {
        text.erase(text.rfind('\n') + 1);
        text += end;
    }
    return text;
}

/// How a patch was read, as its file tells.
PatchReading ReadingOf(const J4Chart::Patch& patch)
{
    PatchReading reading;
    reading.spectrum = *patch.spectrum;
    if (patch.reading) {
        for (size_t way = 0; way < WayNames.size(); ++way) {
            if (patch.reading->way == WayNames[way]) {
                reading.way = static_cast<ReadingWay>(way);
            }
        }
        reading.samples = patch.reading->samples;
        reading.spread = patch.reading->spread;
        reading.residual = patch.reading->residual;
    }
    reading.repeatSpread = patch.repeatSpread.value_or(0.0);
    reading.densities = patch.densities;
    return reading;
}

/// What a layout brings along, no file may be able to hold.
template <class Write>
auto WriteOf(Write write)
{
    try {
        return write();
    } catch (const J4Chart::CgatsError& error) {
        throw ToolError(ExitCode::File, std::string("the layout can't be measured into a file: ") + error.what(),
                        "Correct the layout.");
    }
}

[[noreturn]] void RefusePartial(const std::string& fileName, const std::string& reason)
{
    throw ToolError(
        ExitCode::File, "partial file '" + fileName + "': " + reason,
        "Resume with the layout, options, table and instrument that it was begun with, or begin anew with --restart.");
}

}  // namespace

std::string MeasurementFile::Text(const ChartLayout& layout, const Measurements& measurements,
                                  const Conditions& conditions, Form form)
{
    J4Chart::CgatsFile file;
    file.Add(form == Form::Spectra ? SpectraSheet(layout, measurements) : FullTable(layout, measurements, conditions));
    return WriteOf([&] { return file.Text(); });
}

void MeasurementFile::RequireHolds(const ChartLayout& layout)
{
    Text(layout, Measurements(layout.Patches().size(), PatchReading()), {}, Form::Cgats);
}

std::string MeasurementFile::HeadText(const ChartLayout& layout, const Conditions& conditions)
{
    return WriteOf([&] { return J4Chart::CgatsFile::HeadText(FullHead(layout, conditions)); });
}

std::string MeasurementFile::RowsText(const ChartLayout& layout, const std::vector<size_t>& patches,
                                      const Measurements& measurements, const Conditions& conditions)
{
    const std::vector<RowPlace> places = PlacesInRows(layout);
    std::string text;
    for (const size_t patch : patches) {
        if (measurements[patch]) {
            const CgatsTable::Row row = {Values(layout, patch, places[patch], *measurements[patch], conditions),
                                         layout.Patches()[patch].line};
            text += WriteOf([&] { return J4Chart::CgatsFile::RowText(row); });
        }
    }
    return text;
}

Measurements MeasurementFile::Load(const std::string& fileName, const ChartLayout& layout, const Conditions& conditions)
{
    J4Chart::Chart partial;
    try {
        J4Chart::ChartReader::Wanted wanted;
        wanted.spectra = true;
        std::istringstream text(WholeText(fileName));
        partial = J4Chart::ChartReader::Read(J4Chart::CgatsFile::Read(text), wanted);
    } catch (const J4Chart::CgatsError& error) {
        RefusePartial(fileName, error.what());
    }
    for (const auto& [keyword, value] : conditions) {
        if (keyword.ends_with("_SERIAL") && partial.Condition(keyword) != value) {
            RefusePartial(fileName, keyword + " is '" + partial.Condition(keyword) + "' and not '" + value + "'");
        }
    }
    // Rows that were scanned otherwise do not go into one file with those of this scan.
    J4Chart::Chart wanted;
    wanted.conditions = conditions;
    for (const char* keyword : {"REPEATS", "DENSITIES"}) {
        if (partial.Condition(keyword) != wanted.Condition(keyword)) {
            RefusePartial(fileName, std::string(keyword) + " is '" + partial.Condition(keyword) + "' and not '" +
                                        wanted.Condition(keyword) + "'");
        }
    }
    Measurements measurements(layout.Patches().size());
    std::map<std::pair<std::string, std::string>, size_t> places;
    for (size_t i = 0; i < measurements.size(); ++i) {
        places.emplace(std::pair(layout.Patches()[i].IdAt(i), layout.Patches()[i].name), i);
    }
    for (const J4Chart::Patch& patch : partial.patches) {
        const auto found = places.find({patch.id, patch.name});
        if (found == places.end()) {
            const std::string reason = "patch " + patch.id + " '" + patch.name + "' is not of this layout";
            RefusePartial(fileName, J4Chart::CgatsError(patch.line, reason).what());
        }
        measurements[found->second] = ReadingOf(patch);
    }
    return measurements;
}

}  // namespace J4Tool
