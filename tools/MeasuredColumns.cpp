#include "tools/MeasuredColumns.h"

#include "chart/cgats/CgatsFields.h"
#include "chart/colour/Colorimetry.h"
#include "tools/FixedText.h"

namespace J4Tool {

namespace Colorimetry = J4Chart::Colorimetry;

void MeasuredColumns::AddPlaceFields(std::vector<std::string>& fields)
{
    fields.insert(fields.end(), {"X", "Y", "WIDTH", "HEIGHT"});
}

void MeasuredColumns::AddPlace(std::vector<std::string>& values, const J4Chart::Place& place)
{
    for (const double length : {place.centre.x, place.centre.y, place.Width(), place.Height()}) {
        values.push_back(FixedText(length, PlaceDigits));
    }
}

void MeasuredColumns::AddRowFields(std::vector<std::string>& fields)
{
    fields.insert(fields.end(), {"SCAN_ROW", "SCAN_COLUMN"});
}

void MeasuredColumns::AddRow(std::vector<std::string>& values, const J4Chart::Chart::RowPlace& place)
{
    values.push_back(std::to_string(place.row));
    values.push_back(std::to_string(place.column));
}

void MeasuredColumns::AddDensityFields(std::vector<std::string>& fields)
{
    fields.insert(fields.end(), J4Chart::DensityFields.begin(), J4Chart::DensityFields.end());
}

void MeasuredColumns::AddDensities(std::vector<std::string>& values, const J4Chart::Densities& densities)
{
    for (const double density : densities) {
        values.push_back(FixedText(density, ColourDigits));
    }
}

void MeasuredColumns::AddColourFields(std::vector<std::string>& fields)
{
    fields.insert(fields.end(), {"XYZ_X", "XYZ_Y", "XYZ_Z", "LAB_L", "LAB_A", "LAB_B"});
    for (size_t band = 0; band < J4Chart::Spectrum().size(); ++band) {
        fields.push_back(J4Chart::SpectralField(band));
    }
}

void MeasuredColumns::AddColour(std::vector<std::string>& values, const J4Chart::Spectrum& spectrum)
{
    const Colorimetry::Triple xyz = Colorimetry::TristimulusValues(spectrum);
    for (const Colorimetry::Triple& triple : {xyz, Colorimetry::LabOfTristimulus(xyz)}) {
        for (const double value : triple) {
            values.push_back(FixedText(value, ColourDigits));
        }
    }
    for (const float value : spectrum) {
        values.push_back(J4Chart::NumberText(value));
    }
}

}  // namespace J4Tool
