#include "tools/MeasurementFile.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "chart/cgats/CgatsFields.h"
#include "chart/cgats/CgatsFile.h"
#include "chart/colour/Colorimetry.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace Colorimetry = J4Chart::Colorimetry;
using J4Chart::CgatsTable;
using J4Chart::Spectrum;

namespace {

std::string Fixed(double value, int digits)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.setf(std::ios::fixed);
    text.precision(digits);
    text << value;
    const std::string zero = "-0." + std::string(static_cast<size_t>(digits), '0');
    return text.str() == zero ? zero.substr(1) : text.str();
}

constexpr int ColourDigits = 4;
constexpr int PlaceDigits = 3;  // mm

double Length(Point half) { return 2.0 * std::hypot(half.x, half.y); }

void AddFields(CgatsTable& table, const ChartLayout& layout)
{
    table.fields = {"SAMPLE_ID", "SAMPLE_NAME"};
    table.fields.insert(table.fields.end(), layout.DeviceFields().begin(), layout.DeviceFields().end());
    for (const char* field : {"X", "Y", "WIDTH", "HEIGHT", "SCAN_ROW", "SCAN_COLUMN", "XYZ_X", "XYZ_Y", "XYZ_Z",
                              "LAB_L", "LAB_A", "LAB_B"}) {
        table.fields.push_back(field);
    }
    for (size_t band = 0; band < Spectrum().size(); ++band) {
        table.fields.push_back(J4Chart::SpectralField(band));
    }
}

struct Place {
    size_t row = 0;
    size_t column = 0;
};

std::vector<Place> PlacesInRows(const ChartLayout& layout)
{
    std::vector<Place> places(layout.Patches().size());
    for (size_t row = 0; row < layout.Rows().size(); ++row) {
        for (size_t column = 0; column < layout.Rows()[row].size(); ++column) {
            places[layout.Rows()[row][column]] = {row + 1, column + 1};
        }
    }
    return places;
}

std::vector<std::string> Values(const ChartLayout::Patch& patch, size_t index, Place place, const Spectrum& spectrum)
{
    std::vector<std::string> values = {std::to_string(index + 1), patch.name};
    values.insert(values.end(), patch.device.begin(), patch.device.end());
    for (const double length : {patch.centre.x, patch.centre.y, Length(patch.half), Length(patch.halfAcross)}) {
        values.push_back(Fixed(length, PlaceDigits));
    }
    values.push_back(std::to_string(place.row));
    values.push_back(std::to_string(place.column));
    const Colorimetry::Triple xyz = Colorimetry::TristimulusValues(spectrum);
    for (const Colorimetry::Triple& triple : {xyz, Colorimetry::LabOfTristimulus(xyz)}) {
        for (const double value : triple) {
            values.push_back(Fixed(value, ColourDigits));
        }
    }
    for (const float value : spectrum) {
        values.push_back(J4Chart::NumberText(value));
    }
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
            row.values = {layout.Patches()[i].name};
            for (const float value : *measurements[i]) {
                row.values.push_back(J4Chart::NumberText(value));
            }
        }
    }
    return table;
}

CgatsTable FullTable(const ChartLayout& layout, const Measurements& measurements,
                     const MeasurementFile::Conditions& conditions)
{
    CgatsTable table;
    table.kind = "CGATS.17";
    for (const auto& [keyword, value] : conditions) {
        table.SetKeyword(keyword, value);
    }
    AddFields(table, layout);
    const std::vector<Place> places = PlacesInRows(layout);
    for (size_t i = 0; i < measurements.size(); ++i) {
        if (measurements[i]) {
            table.rows.push_back({Values(layout.Patches()[i], i, places[i], *measurements[i]), 0});
        }
    }
    return table;
}

[[noreturn]] void Refuse(const std::string& fileName, const std::string& reason)
{
    throw ToolError(
        ExitCode::File, "partial file '" + fileName + "': " + reason,
        "Resume with the layout, table and instrument that it was begun with, or begin anew with --restart.");
}

}  // namespace

std::string MeasurementFile::Text(const ChartLayout& layout, const Measurements& measurements,
                                  const Conditions& conditions, Form form)
{
    J4Chart::CgatsFile file;
    file.Add(form == Form::Spectra ? SpectraSheet(layout, measurements) : FullTable(layout, measurements, conditions));
    std::ostringstream text;
    file.Write(text);
    return text.str();
}

Measurements MeasurementFile::Load(const std::string& fileName, const ChartLayout& layout, const Conditions& conditions)
{
    J4Chart::CgatsFile file;
    J4Chart::CgatsFile::Error error;
    if (!file.Read(fileName, error)) {
        Refuse(fileName, error.Text());
    }
    const CgatsTable& table = file.Tables().front();
    for (const auto& [keyword, value] : conditions) {
        if (keyword.ends_with("_SERIAL") && table.ValueOf(keyword) != value) {
            Refuse(fileName, keyword + " is '" + table.ValueOf(keyword) + "' and not '" + value + "'");
        }
    }
    const int id = table.FindField("SAMPLE_ID");
    const int name = table.FindField("SAMPLE_NAME");
    const auto bands = J4Chart::FindSpectralFields(table);
    if (id < 0 || name < 0 || std::find(bands.begin(), bands.end(), -1) != bands.end()) {
        Refuse(fileName, "it lacks fields of a partial file");
    }
    Measurements measurements(layout.Patches().size());
    for (const CgatsTable::Row& row : table.rows) {
        const auto refuse = [&](const std::string& reason) {
            Refuse(fileName, J4Chart::CgatsFile::Error{row.line, reason}.Text());
        };
        double number = 0.0;
        const std::string& text = row.values[static_cast<size_t>(id)];
        if (!J4Chart::ParseNumber(text, number) || number < 1.0 || number > static_cast<double>(measurements.size()) ||
            layout.Patches()[static_cast<size_t>(number) - 1].name != row.values[static_cast<size_t>(name)]) {
            refuse("patch " + text + " '" + row.values[static_cast<size_t>(name)] + "' is not of this layout");
        }
        Spectrum spectrum{};
        for (size_t band = 0; band < spectrum.size(); ++band) {
            double value = 0.0;
            const std::string& valueText = row.values[static_cast<size_t>(bands[band])];
            if (!J4Chart::ParseNumber(valueText, value)) {
                refuse("'" + valueText + "' is not a number");
            }
            spectrum[band] = static_cast<float>(value);
        }
        measurements[static_cast<size_t>(number) - 1] = spectrum;
    }
    return measurements;
}

}  // namespace J4Tool
