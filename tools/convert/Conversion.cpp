#include "tools/convert/Conversion.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

#include "chart/cgats/CgatsError.h"
#include "chart/cgats/CgatsFields.h"
#include "tools/FixedText.h"
#include "tools/MeasuredColumns.h"

namespace J4Tool {

namespace {

using J4Chart::BandRange;
using J4Chart::CgatsError;
using J4Chart::CgatsTable;
using J4Chart::Chart;
using J4Chart::ColourConditions;
using J4Chart::Colorimetry::Triple;

constexpr std::array colourFields = {"XYZ_X", "XYZ_Y", "XYZ_Z", "LAB_L", "LAB_A", "LAB_B"};

/// A reflectance factor that reads back as the same.
std::string FactorText(float factor, int scale)
{
    if (scale == 1) {
        return J4Chart::PlainNumberText(factor);
    }
    // The point is moved in the text that the factor has; what binary fractions make of that is rounded away.
    constexpr int digits = 9;
    char text[64];
    double rounded = 0.0;
    J4Chart::ParseNumber(J4Chart::NumberText(factor), rounded);
    const auto [end, failure] =
        std::to_chars(text, text + sizeof text, rounded * scale, std::chars_format::general, digits);
    std::from_chars(text, end, rounded);
    return J4Chart::PlainNumberText(rounded);
}

/// One conversion: what becomes of the keywords, the fields, and each row.
class Converter {
public:
    Converter(const Conversion& wanted, const CgatsTable& source, const Chart& chart)
        : wanted(wanted),
          source(source),
          chart(chart),
          hasSpectra(!chart.patches.empty() && chart.patches.front().spectrum.has_value()),
          bands(wanted.bands.value_or(chart.bands)),
          conditions(
              wanted.conditions.value_or(ColourConditions::StatedBy(chart.conditions).value_or(ColourConditions())))
    {
        const bool hasColours = std::all_of(colourFields.begin(), colourFields.end(),
                                            [&source](const char* field) { return source.FindField(field) >= 0; });
        computes = hasSpectra && (wanted.conditions || !hasColours);
        RequirePossible();
    }

    CgatsTable Table()
    {
        CgatsTable table;
        table.kind = J4Chart::IsOneOf(source.kind, std::array{"", "SPECT"}) ? "CGATS.17" : source.kind;
        table.fieldsLine = source.fieldsLine;
        TakeKeywords(table);
        TakeFields(table);
        for (size_t i = 0; i < source.rows.size(); ++i) {
            table.rows.push_back(Row(i));
        }
        return table;
    }

private:
    void RequirePossible() const
    {
        if (hasSpectra && (bands.first < chart.bands.first || bands.last > chart.bands.last)) {
            throw CgatsError(source.fieldsLine, "the spectra have " + J4Chart::RangeText(chart.bands) + "; " +
                                                    J4Chart::RangeText(bands) + " can't be made of them");
        }
        if (!hasSpectra && (wanted.bands || wanted.conditions)) {
            throw CgatsError(source.fieldsLine, wanted.bands ? "there are no spectra whose bands could be chosen"
                                                             : "there are no spectra to compute colours of");
        }
    }

    void TakeKeywords(CgatsTable& table) const
    {
        for (const CgatsTable::Keyword& keyword : source.keywords) {
            const bool ofSpectra = keyword.name.starts_with("SPECTRAL_");
            const bool ofColours = computes && keyword.name == "WEIGHTING_FUNCTION";
            const bool ofPlaces = keyword.name.starts_with("LAYOUT_") || keyword.name.starts_with("PATCH_");
            if (!ofSpectra && !ofColours && !(wanted.plain && ofPlaces)) {
                table.keywords.push_back(keyword);
            }
        }
        if (computes) {
            table.SetKeyword("WEIGHTING_FUNCTION", conditions.Text());
        }
        if (!wanted.densityStatus.empty()) {
            table.SetKeyword("DENSITY_STATUS", wanted.densityStatus);
        }
        if (hasSpectra && wanted.spectralScale != 1) {
            table.SetKeyword("SPECTRAL_NORM", std::to_string(wanted.spectralScale));
        }
    }

    void TakeFields(CgatsTable& table)
    {
        needsId = source.FindField("SAMPLE_ID") < 0;
        if (needsId) {
            table.fields.emplace_back("SAMPLE_ID");
        }
        for (size_t field = 0; field < source.fields.size(); ++field) {
            const std::string& name = source.fields[field];
            const bool ofSpectra = hasSpectra && J4Chart::WavelengthOf(name) >= 0;
            const bool ofColours = computes && J4Chart::IsOneOf(name, colourFields);
            const bool ofScan = J4Chart::IsOneOf(name, std::array{"X", "Y", "WIDTH", "HEIGHT"}) ||
                                name.starts_with("SCAN_") || name.starts_with("REPEAT_");
            if (!ofSpectra && !ofColours && !(wanted.plain && ofScan)) {
                kept.push_back(field);
                table.fields.push_back(name);
            }
        }
        if (computes) {
            table.fields.insert(table.fields.end(), colourFields.begin(), colourFields.end());
        }
        for (size_t band = bands.first; hasSpectra && band <= bands.last; ++band) {
            table.fields.push_back(J4Chart::SpectralField(band, wanted.spectralPrefix));
        }
    }

    CgatsTable::Row Row(size_t index) const
    {
        const CgatsTable::Row& from = source.rows[index];
        CgatsTable::Row row;
        row.line = from.line;
        if (needsId) {
            row.values.push_back(std::to_string(index + 1));
        }
        for (const size_t field : kept) {
            double number = 0.0;
            if (J4Chart::IsDeviceField(source.fields[field]) && !J4Chart::ParseNumber(from.values[field], number)) {
                throw CgatsError(row.line, source.fields[field] + " '" + from.values[field] + "' is not a number");
            }
            row.values.push_back(from.values[field]);
        }
        if (!hasSpectra) {
            return row;
        }
        const J4Chart::Spectrum& spectrum = *chart.patches[index].spectrum;
        if (computes) {
            const Triple xyz = conditions.TristimulusValues(spectrum);
            for (const Triple& triple : {xyz, conditions.LabOfTristimulus(xyz)}) {
                for (const double value : triple) {
                    row.values.push_back(FixedText(value, MeasuredColumns::ColourDigits));
                }
            }
        }
        for (size_t band = bands.first; band <= bands.last; ++band) {
            row.values.push_back(FactorText(spectrum[band], wanted.spectralScale));
        }
        return row;
    }

    const Conversion& wanted;
    const CgatsTable& source;
    const Chart& chart;
    bool hasSpectra;
    BandRange bands;
    ColourConditions conditions;
    bool computes = false;     ///< the colours, of the spectra
    bool needsId = false;      ///< there is no SAMPLE_ID, without which few readers take a table
    std::vector<size_t> kept;  ///< fields of the source that stay as they are
};

}  // namespace

CgatsTable Conversion::Of(const CgatsTable& source, const Chart& chart) const
{
    return Converter(*this, source, chart).Table();
}

}  // namespace J4Tool
