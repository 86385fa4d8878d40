#include "chart/cxf/CxfFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "chart/Chart.h"
#include "chart/DeviceValues.h"
#include "chart/cgats/CgatsError.h"
#include "chart/cgats/CgatsFields.h"
#include "chart/colour/ColourConditions.h"
#include "chart/colour/Densities.h"
#include "chart/colour/MeasuringCondition.h"
#include "chart/cxf/CxfReader.h"
#include "chart/cxf/XmlText.h"

namespace J4Chart {

namespace {

/// All colours of the file were measured and computed alike.
constexpr const char* specification = "measurement";

constexpr double lowestFactor = -0.1;
constexpr double highestFactor = 3.0;
constexpr int firstStart = 360;  // nm
constexpr int lastStart = 400;   // nm

constexpr std::array<std::string_view, 7> statuses = {"A", "E", "I", "M", "T", "DIN", "Spectral"};

/// Screen values are whole numbers: their first four decimals are kept in a larger range.
constexpr int largestFactor = 10000;

/// The elements of the file, one in the other, with their texts escaped.
class Writer {
public:
    Writer() { text << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"; }

    /// For instance Attributes({{"Name", "A1"}}).
    using Attributes = std::vector<std::pair<const char*, std::string>>;

    /// @param line  of the table, from which texts come
    void Open(const char* name, const Attributes& attributes = {}, int line = 0)
    {
        Tag(name, attributes, line, ">\n");
        open.push_back(name);
    }

    void Close()
    {
        const std::string name = open.back();
        open.pop_back();
        text << Indent() << "</cc:" << name << ">\n";
    }

    void Empty(const char* name, const Attributes& attributes, int line = 0) { Tag(name, attributes, line, "/>\n"); }

    void Leaf(const char* name, const std::string& content, int line = 0, const Attributes& attributes = {})
    {
        Tag(name, attributes, line, ">");
        text << XmlText(content, line) << "</cc:" << name << ">\n";
    }

    std::string Text() const { return text.str(); }

private:
    void Tag(const char* name, const Attributes& attributes, int line, const char* end)
    {
        text << Indent() << "<cc:" << name;
        for (const auto& [attribute, value] : attributes) {
            text << " " << attribute << "=\"" << XmlText(value, line) << "\"";
        }
        text << end;
    }

    std::string Indent() const { return std::string(open.size(), ' '); }

    std::ostringstream text;
    std::vector<std::string> open;
};

/// A date as XML wants it ("2026-03-01T12:00:00Z"), of a text that is one or has a blank for the T.
std::optional<std::string> DateTime(std::string text)
{
    if (text.size() > 10 && text[10] == ' ') {
        text[10] = 'T';
    }
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, length = 0;
    const int found =
        std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d%n", &year, &month, &day, &hour, &minute, &second, &length);
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    const int days = month == 2 ? (leap ? 29 : 28) : month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
    const std::string zone = found == 6 ? text.substr(static_cast<size_t>(length)) : "";
    int zoneHours = 0, zoneMinutes = 0, zoneLength = 0;
    const bool offset = zone.size() == 6 && (zone[0] == '+' || zone[0] == '-') &&
                        std::sscanf(zone.c_str() + 1, "%2d:%2d%n", &zoneHours, &zoneMinutes, &zoneLength) == 2 &&
                        zoneLength == 5 && zoneHours >= 0 && zoneHours < 14 && zoneMinutes >= 0 && zoneMinutes < 60;
    const bool fits = found == 6 && length == 19 && text.find_first_of("+ ") >= 19 && year > 0 && month >= 1 &&
                      month <= 12 && day >= 1 && day <= days && hour >= 0 && hour < 24 && minute >= 0 && minute < 60 &&
                      second >= 0 && second < 60 && (zone.empty() || zone == "Z" || offset);
    return fits ? std::optional(text) : std::nullopt;
}

/// What device values have in full.
struct Maxima {
    int screen = 255;
    int ink = 100;

    Maxima(const CgatsTable& table, const CxfFile::Origin& origin)
    {
        if (const CgatsTable::Keyword* const told = table.FindKeyword(DeviceValues::MaximumKeyword)) {
            double maximum = 0.0;
            if (!ParseNumber(told->value, maximum) || maximum < 1.0 || maximum > 65535.0 ||
                maximum != std::floor(maximum)) {
                throw CgatsError(told->line,
                                 told->name + " '" + told->value + "' is not a whole number from 1 to 65535");
            }
            screen = ink = static_cast<int>(maximum);
        }
        screen = origin.screenMaximum.value_or(screen);
    }
};

/// What densities are, by the name that the format has for it; empty where the table does not tell.
std::string StatusOf(const CgatsTable& table)
{
    const std::string told = table.ValueOf("DENSITY_STATUS");
    const bool isKnown = std::find(statuses.begin(), statuses.end(), told) != statuses.end();
    return isKnown ? told : std::string();
}

/// Fields that say something only together.
template <size_t Count>
class Fields {
public:
    Fields() = default;
    Fields(const CgatsTable& table, const std::array<const char*, Count>& names, std::set<size_t>& taken)
    {
        for (size_t i = 0; i < Count; ++i) {
            const int field = table.FindField(names[i]);
            if (field < 0) {
                return;
            }
            fields[i] = static_cast<size_t>(field);
        }
        present = true;
        taken.insert(fields.begin(), fields.end());
    }

    explicit operator bool() const { return present; }
    size_t operator[](size_t i) const { return fields[i]; }

private:
    std::array<size_t, Count> fields{};
    bool present = false;
};

class TableWriter {
public:
    TableWriter(const CgatsTable& table, const CxfFile::Origin& origin)
        : table(table),
          origin(origin),
          lab(table, {"LAB_L", "LAB_A", "LAB_B"}, taken),
          xyz(table, {"XYZ_X", "XYZ_Y", "XYZ_Z"}, taken),
          cmyk(table, {"CMYK_C", "CMYK_M", "CMYK_Y", "CMYK_K"}, taken),
          rgb(cmyk ? Fields<3>() : Fields<3>(table, {"RGB_R", "RGB_G", "RGB_B"}, taken)),
          maxima(table, origin),
          status(StatusOf(table))
    {
        const int named = table.FindField("SAMPLE_NAME");
        const int identified = table.FindField("SAMPLE_ID");
        if (named < 0 && identified < 0) {
            throw CgatsError(table.fieldsLine, "the field SAMPLE_NAME or SAMPLE_ID is missing");
        }
        name = static_cast<size_t>(named < 0 ? identified : named);
        taken.insert(name);
        for (size_t i = 0; i < DensityFields.size() && !status.empty(); ++i) {
            const int field = table.FindField(DensityFields[i]);
            if (field >= 0) {
                densities.emplace_back(static_cast<size_t>(field), CxfFile::DensityFilters[i]);
                taken.insert(static_cast<size_t>(field));
            }
        }
        FindSpectra();
        FindScreenFactor();
        for (const CgatsTable::Keyword& keyword : table.keywords) {
            conditions.emplace_back(keyword.name, keyword.value);
        }
    }

    std::string Text()
    {
        writer.Open("CxF", {{"xmlns:cc", CxfFile::Namespace}});
        WriteInformation();
        writer.Open("Resources");
        writer.Open("ObjectCollection");
        for (size_t i = 0; i < table.rows.size(); ++i) {
            WriteObject(i);
        }
        writer.Close();
        writer.Open("ColorSpecificationCollection");
        WriteSpecification();
        writer.Close();
        writer.Close();
        writer.Close();
        return writer.Text();
    }

private:
    struct Band {
        int wavelength;
        size_t field;
    };

    [[noreturn]] void Refuse(const CgatsTable::Row& row, size_t field, const std::string& reason) const
    {
        throw CgatsError(row.line, table.fields[field] + " '" + row.values[field] + "' " + reason);
    }

    /// The text of a number that has been looked at, without an exponent.
    std::string PlainText(const CgatsTable::Row& row, size_t field) const
    {
        const std::string& text = row.values[field];
        return text.find_first_of("eE+") == std::string::npos ? text : PlainNumberText(Number(row, field));
    }

    double Number(const CgatsTable::Row& row, size_t field) const
    {
        double number = 0.0;
        if (!ParseNumber(row.values[field], number)) {
            Refuse(row, field, "is not a number");
        }
        return number;
    }

    void FindSpectra()
    {
        for (size_t field = 0; field < table.fields.size(); ++field) {
            if (const int wavelength = WavelengthOf(table.fields[field]); wavelength >= 0) {
                bands.push_back({wavelength, field});
                taken.insert(field);
            }
        }
        std::sort(bands.begin(), bands.end(),
                  [](const Band& left, const Band& right) { return left.wavelength < right.wavelength; });
        if (bands.empty()) {
            return;
        }
        step = bands.size() > 1 ? bands[1].wavelength - bands[0].wavelength : 0;
        for (size_t i = 1; i < bands.size(); ++i) {
            if (step <= 0 || bands[i].wavelength - bands[i - 1].wavelength != step) {
                throw CgatsError(table.fieldsLine, "CxF3 has spectra in an even step only, and " +
                                                       table.fields[bands[i].field] + " is out of step");
            }
        }
        if (bands[0].wavelength < firstStart || bands[0].wavelength > lastStart) {
            throw CgatsError(table.fieldsLine, "CxF3 has spectra that begin at 360 to 400 nm, these begin at " +
                                                   std::to_string(bands[0].wavelength) + " nm");
        }
    }

    /// Values with decimals become whole numbers of a larger range.
    void FindScreenFactor()
    {
        for (size_t i = 0; rgb && i < table.rows.size(); ++i) {
            for (size_t k = 0; k < 3; ++k) {
                const double value = Number(table.rows[i], rgb[k]);
                if (value < 0.0 || value > maxima.screen) {
                    Refuse(table.rows[i], rgb[k], "is not a screen value from 0 to " + std::to_string(maxima.screen));
                }
                for (; factor < largestFactor && !IsWhole(value * factor); factor *= 10) {}
            }
        }
    }

    static bool IsWhole(double value) { return std::abs(value - std::round(value)) < 1e-6; }

    void WriteInformation()
    {
        writer.Open("FileInformation");
        writer.Leaf("Creator", origin.creator);
        writer.Leaf("CreationDate", origin.date);
        if (const CgatsTable::Keyword* const descriptor = table.FindKeyword("DESCRIPTOR")) {
            writer.Leaf("Description", descriptor->value, descriptor->line);
        }
        for (const CgatsTable::Keyword& keyword : table.keywords) {
            writer.Empty("Tag", {{"Name", keyword.name}, {"Value", keyword.value}}, keyword.line);
        }
        writer.Close();
    }

    void WriteObject(size_t index)
    {
        const CgatsTable::Row& row = table.rows[index];
        writer.Open("Object",
                    {{"ObjectType", "Target"}, {"Name", row.values[name]}, {"Id", "p" + std::to_string(index + 1)}},
                    row.line);
        writer.Leaf("CreationDate", DateTime(table.ValueOf("CREATED")).value_or(origin.date));
        if (!bands.empty() || lab || xyz || !densities.empty()) {
            writer.Open("ColorValues");
            WriteSpectrum(row);
            WriteColours(row);
            WriteDensities(row);
            writer.Close();
        }
        if (cmyk || rgb) {
            writer.Open("DeviceColorValues");
            WriteDeviceValues(row);
            writer.Close();
        }
        if (taken.size() < table.fields.size()) {
            writer.Open("TagCollection", {{"Name", CxfFile::FieldTags}});
            for (size_t field = 0; field < table.fields.size(); ++field) {
                if (taken.count(field) == 0) {
                    writer.Empty("Tag", {{"Name", table.fields[field]}, {"Value", row.values[field]}}, row.line);
                }
            }
            writer.Close();
        }
        writer.Close();
    }

    void WriteSpectrum(const CgatsTable::Row& row)
    {
        std::string values;
        for (const Band& band : bands) {
            const double value = Number(row, band.field);
            if (!(value > lowestFactor && value < highestFactor)) {
                Refuse(row, band.field, "is no reflectance factor of CxF3, which are above -0.1 and below 3");
            }
            values += (values.empty() ? "" : " ") + PlainText(row, band.field);
        }
        if (!bands.empty()) {
            writer.Leaf("ReflectanceSpectrum", values, row.line,
                        {{"ColorSpecification", specification}, {"StartWL", std::to_string(bands[0].wavelength)}});
        }
    }

    /// A value that the format does not have below 0, where noise may bring it.
    std::string NotBelowZero(const CgatsTable::Row& row, size_t field, double lowest) const
    {
        const double value = Number(row, field);
        if (value < lowest) {
            Refuse(row, field, "is below 0, which CxF3 does not have, and by more than noise");
        }
        return value > 0.0 ? PlainText(row, field) : "0";
    }

    void WriteColours(const CgatsTable::Row& row)
    {
        if (lab) {
            writer.Open("ColorCIELab", {{"ColorSpecification", specification}});
            writer.Leaf("L", NotBelowZero(row, lab[0], CxfFile::LowestLightness));
            for (const size_t k : {1u, 2u}) {
                Number(row, lab[k]);
                writer.Leaf(k == 1 ? "A" : "B", PlainText(row, lab[k]));
            }
            writer.Close();
        }
        if (xyz) {
            writer.Open("ColorCIEXYZ", {{"ColorSpecification", specification}});
            constexpr const char* names[] = {"X", "Y", "Z"};
            for (size_t k = 0; k < 3; ++k) {
                writer.Leaf(names[k], NotBelowZero(row, xyz[k], CxfFile::LowestTristimulus));
            }
            writer.Close();
        }
    }

    void WriteDensities(const CgatsTable::Row& row)
    {
        for (const auto& [field, filter] : densities) {
            Number(row, field);
            writer.Open("ColorDensity", {{"ColorSpecification", specification}});
            writer.Leaf("Density", PlainText(row, field));
            writer.Leaf("Status", status);
            writer.Leaf("Filter", filter);
            writer.Close();
        }
    }

    void WriteDeviceValues(const CgatsTable::Row& row)
    {
        if (cmyk) {
            writer.Open("ColorCMYK", {{"ColorSpecification", specification}});
            constexpr const char* names[] = {"Cyan", "Magenta", "Yellow", "Black"};
            for (size_t k = 0; k < 4; ++k) {
                const double percent = Number(row, cmyk[k]) * 100.0 / maxima.ink;
                if (percent < 0.0 || percent > 100.0) {
                    Refuse(row, cmyk[k], "is not a percentage from 0 to 100");
                }
                writer.Leaf(names[k], maxima.ink == 100 ? PlainText(row, cmyk[k])
                                                        : PlainNumberText(std::round(percent * 1e6) / 1e6));
            }
            writer.Close();
        }
        if (rgb) {
            writer.Open("ColorRGB", {{"ColorSpecification", specification}});
            writer.Leaf("MaxRange", std::to_string(static_cast<long long>(maxima.screen) * factor));
            constexpr const char* names[] = {"R", "G", "B"};
            for (size_t k = 0; k < 3; ++k) {
                writer.Leaf(names[k], std::to_string(std::llround(Number(row, rgb[k]) * factor)));
            }
            writer.Close();
        }
    }

    void WriteSpecification()
    {
        writer.Open("ColorSpecification", {{"Id", specification}});
        const auto stated = ColourConditions::StatedBy(conditions);
        if (stated && (lab || xyz)) {
            writer.Open("TristimulusSpec");
            writer.Leaf("Illuminant", stated->IlluminantName());
            writer.Leaf("Observer", stated->ObserverName() + "_Degree");
            writer.Leaf("Method", "unknown");  // none of the tables of ASTM E308
            writer.Close();
        }
        writer.Open("MeasurementSpec");
        writer.Leaf("MeasurementType", bands.empty() ? "Colorimetric_Reflectance" : "Spectrum_Reflectance");
        writer.Open("GeometryChoice");
        const CgatsTable::Keyword* const geometry = table.FindKeyword("MEASUREMENT_GEOMETRY");
        const bool isTold = geometry != nullptr && !geometry->value.empty();
        writer.Leaf("UnknownGeometry", isTold ? geometry->value : "not told", isTold ? geometry->line : 0);
        writer.Close();
        if (!bands.empty() && step > 0) {
            writer.Empty("WavelengthRange",
                         {{"StartWL", std::to_string(bands[0].wavelength)}, {"Increment", std::to_string(step)}});
        }
        WriteDevice();
        writer.Close();
        writer.Close();
    }

    void WriteDevice()
    {
        const CgatsTable::Keyword* const model = table.FindKeyword("INSTRUMENTATION");
        const CgatsTable::Keyword* const serial = table.FindKeyword("INSTRUMENT_SERIAL");
        const bool isScanner = table.FindKeyword("TABLE_SERIAL") != nullptr;
        const char* const light = Light();
        if (model == nullptr && serial == nullptr && !isScanner && light == nullptr) {
            return;
        }
        writer.Open("Device");
        if (model != nullptr) {
            writer.Leaf("Model", model->value, model->line);
        }
        if (serial != nullptr) {
            writer.Leaf("SerialNumber", serial->value, serial->line);
        }
        if (isScanner) {
            writer.Leaf("DeviceClass", "DeviceClass_Scanning");
        }
        if (light != nullptr) {
            writer.Leaf("DeviceIllumination", light);
        }
        writer.Close();
    }

    /// By the measuring condition of ISO 13655 that the file names; nullptr where it names none.
    const char* Light() const
    {
        constexpr std::pair<const char*, const char*> lights[] = {
            {"M0", "M0_Incandescent"}, {"M1", "M1_Daylight"}, {"M2", "M2_UVExcluded"}, {"M3", "M3_Polarized"}};
        const std::string told =
            MeasuringCondition(table.ValueOf("MEASUREMENT_SOURCE"), table.ValueOf("MEASUREMENT_CONDITION"));
        for (const auto& [condition, light] : lights) {
            if (told == condition) {
                return light;
            }
        }
        return nullptr;
    }

    const CgatsTable& table;
    const CxfFile::Origin& origin;
    std::set<size_t> taken;  ///< fields that have elements of their own; all others are tags
    Fields<3> lab;
    Fields<3> xyz;
    Fields<4> cmyk;
    Fields<3> rgb;  ///< an object has one kind of device values
    Maxima maxima;
    std::string status;  ///< of densities; without it they are tags, for the format has none that are not of a status
    std::vector<std::pair<size_t, const char*>> densities;  ///< field and filter
    size_t name = 0;
    std::vector<Band> bands;
    int step = 0;    ///< nm
    int factor = 1;  ///< by which screen values become whole numbers
    Chart::Conditions conditions;
    Writer writer;
};

/// Whether a value reads back as it was meant: RGB to four decimals and on another scale, colours not below 0.
bool IsSame(const std::string& field, const std::string& value, const std::string& back, const Maxima& maxima)
{
    double wanted = 0.0;
    double read = 0.0;
    if (value == back) {
        return true;
    }
    if (!ParseNumber(value, wanted) || !ParseNumber(back, read)) {
        return false;
    }
    if (field.starts_with("RGB_")) {
        return std::abs(wanted * 255.0 / maxima.screen - read) <= 255.0 / maxima.screen / largestFactor;
    }
    if (field.starts_with("CMYK_")) {
        return std::abs(wanted * 100.0 / maxima.ink - read) < 1e-6;
    }
    const bool isClipped = field == "LAB_L" || field.starts_with("XYZ_");
    return read == (isClipped ? std::max(wanted, 0.0) : wanted);
}

/// @param back  what was read of what had been written
void RequireSame(const CgatsTable& table, const CgatsTable& back, const Maxima& maxima)
{
    if (back.rows.size() != table.rows.size()) {
        throw CgatsError(table.fieldsLine, "the table reads back as another one");
    }
    for (size_t field = 0; field < table.fields.size(); ++field) {
        // A table without names has its numbers as names; spectral fields have the usual names.
        const int wavelength = WavelengthOf(table.fields[field]);
        std::string name = wavelength < 0 ? table.fields[field] : "SPECTRAL_NM" + std::to_string(wavelength);
        const bool isName = name == "SAMPLE_ID" && table.FindField("SAMPLE_NAME") < 0;
        const int found = back.FindField(isName ? "SAMPLE_NAME" : name);
        for (size_t i = 0; i < table.rows.size(); ++i) {
            if (found < 0 ||
                !IsSame(name, table.rows[i].values[field], back.rows[i].values[static_cast<size_t>(found)], maxima)) {
                throw CgatsError(table.rows[i].line, table.fields[field] + " '" + table.rows[i].values[field] +
                                                         "' reads back as another one");
            }
        }
    }
}

}  // namespace

std::string CxfFile::Text(const CgatsTable& table, const Origin& origin)
{
    std::string text = TableWriter(table, origin).Text();
    std::istringstream written(text);
    RequireSame(table, CxfReader::Read(written), Maxima(table, origin));
    return text;
}

}  // namespace J4Chart
