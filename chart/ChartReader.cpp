#include "chart/ChartReader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <iterator>
#include <numbers>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "chart/cgats/CgatsError.h"
#include "chart/cgats/CgatsFields.h"
#include "chart/cgats/SpectralColumns.h"
#include "chart/colour/ColourConditions.h"

namespace J4Chart {

namespace {

/// The values that something may have, and how that is told.
struct Range {
    double low;
    double high;
    const char* unit;  ///< for instance "a place"
    const char* tail;  ///< for instance " mm"
    bool whole = false;

    bool Takes(const std::string& text, double& value) const
    {
        return ParseNumber(text, value) && value >= low && value <= high && (!whole || value == std::floor(value));
    }

    std::string Text() const
    {
        return std::string(unit) + " from " + NumberText(low) + " to " + NumberText(high) + tail;
    }
};

// No bed is larger than this, and no colour farther away: it keeps the arithmetic tame.
constexpr Range place = {-10000.0, 10000.0, "a place", " mm"};
constexpr Range length = {0.1, 10000.0, "a length", " mm"};
constexpr Range gap = {-10000.0, 10000.0, "a gap", " mm"};
constexpr Range measure = {0.0, 1e6, "a measure of the scan", ""};
constexpr Range density = {-10.0, 10.0, "a density", ""};
constexpr Range angle = {-180.0, 180.0, "an angle", " degrees"};
constexpr Range count = {1.0, 99999.0, "a whole number", "", true};
constexpr Range colour = {-1000.0, 1000.0, "a colour value", ""};
constexpr Range diffuser = {0.01, 65535.0, "a number", ""};
constexpr Range stroke = {0.2, 1000.0, "a width", " mm"};
constexpr Range flatFactor = {0.0, ChartReader::HighestReflectance, "a reflectance factor", ""};

[[noreturn]] void Refuse(int line, const std::string& what, const std::string& text, const std::string& wanted)
{
    throw CgatsError(line, what + " '" + text + "' is not " + wanted);
}

/// The words of a keyword's value, separated by blanks.
std::vector<std::string> Words(const CgatsTable::Keyword& keyword)
{
    std::istringstream stream(keyword.value);
    return {std::istream_iterator<std::string>(stream), {}};
}

double Number(const CgatsTable::Keyword& keyword, const std::string& word, const Range& range)
{
    double number = 0.0;
    if (!range.Takes(word, number)) {
        Refuse(keyword.line, keyword.name, word, range.Text());
    }
    return number;
}

[[noreturn]] void RefuseCount(const CgatsTable::Keyword& keyword, size_t found, const std::string& wanted)
{
    throw CgatsError(keyword.line, keyword.name + " has " + std::to_string(found) + " values instead of " + wanted);
}

/// The numbers of a keyword's value, each in its own range.
template <size_t Count>
std::array<double, Count> Numbers(const CgatsTable::Keyword& keyword, const std::array<Range, Count>& ranges)
{
    const std::vector<std::string> words = Words(keyword);
    if (words.size() != Count) {
        RefuseCount(keyword, words.size(), std::to_string(Count));
    }
    std::array<double, Count> numbers{};
    for (size_t i = 0; i < Count; ++i) {
        numbers[i] = Number(keyword, words[i], ranges[i]);
    }
    return numbers;
}

std::optional<double> OneNumber(const CgatsTable& table, const std::string& name, const Range& range)
{
    const CgatsTable::Keyword* const keyword = table.FindKeyword(name);
    return keyword == nullptr ? std::nullopt : std::optional(Numbers<1>(*keyword, {range})[0]);
}

void FillCount(const CgatsTable& table, const std::string& name, std::optional<size_t>& target)
{
    const auto number = OneNumber(table, name, count);
    if (!target && number) {
        target = static_cast<size_t>(*number);
    }
}

void FillPoint(const CgatsTable& table, const std::string& name, const Range& range, std::optional<Point>& target)
{
    const CgatsTable::Keyword* const keyword = table.FindKeyword(name);
    if (keyword == nullptr) {
        return;
    }
    const auto [x, y] = Numbers<2>(*keyword, {range, range});
    target = target.value_or(Point{x, y});
}

/// Several fields that say something only together, for instance LAB_L, LAB_A and LAB_B.
template <size_t Count>
class FieldGroup {
public:
    FieldGroup(const std::array<std::string, Count>& names, const std::array<int, Count>& fields) : fields(fields)
    {
        for (size_t i = 0; i < Count; ++i) {
            any = any || fields[i] >= 0;
            missing = missing.empty() && fields[i] < 0 ? names[i] : missing;
        }
    }

    /// True when the table has all of the fields.
    explicit operator bool() const { return missing.empty(); }

    bool Any() const { return any; }

    /// For a table that lacks one of them.
    std::string Missing() const { return "the field " + missing + " is missing"; }

    std::array<double, Count> Read(const CgatsTable& table, const CgatsTable::Row& row, const Range& range) const
    {
        std::array<const Range*, Count> ranges;
        ranges.fill(&range);
        return Read(table, row, ranges);
    }

    std::array<double, Count> Read(const CgatsTable& table, const CgatsTable::Row& row,
                                   const std::array<const Range*, Count>& ranges) const
    {
        std::array<double, Count> numbers{};
        for (size_t i = 0; i < Count; ++i) {
            const size_t field = static_cast<size_t>(fields[i]);
            if (!ranges[i]->Takes(row.values[field], numbers[i])) {
                Refuse(row.line, table.fields[field], row.values[field], ranges[i]->Text());
            }
        }
        return numbers;
    }

private:
    std::array<int, Count> fields;
    std::string missing;  ///< the first that the table lacks
    bool any = false;
};

template <size_t Count>
FieldGroup<Count> FindGroup(const CgatsTable& table, const std::array<std::string, Count>& names)
{
    std::array<int, Count> fields{};
    std::transform(names.begin(), names.end(), fields.begin(),
                   [&table](const std::string& name) { return table.FindField(name); });
    return {names, fields};
}

/// The spectral fields of a table with the scale of their values.
class SpectralFields {
public:
    explicit SpectralFields(const CgatsTable& table)
        : columns(table),
          norm(OneNumber(table, "SPECTRAL_NORM", diffuser).value_or(1.0)),
          scale(norm == 1.0 ? " (percentages need SPECTRAL_NORM \"100\")"
                            : " (SPECTRAL_NORM is " + NumberText(norm) + ")")
    {}

    /// True when there are spectra.
    explicit operator bool() const { return columns.Fault().empty(); }

    const SpectralColumns& Columns() const { return columns; }

    Spectrum Read(const CgatsTable& table, const CgatsTable::Row& row) const
    {
        const Range range = {ChartReader::LowestReflectance * norm, ChartReader::HighestReflectance * norm,
                             "a reflectance factor", scale.c_str()};
        std::vector<double> values;
        values.reserve(columns.Columns().size());
        for (const SpectralColumns::Column& column : columns.Columns()) {
            const std::string& text = row.values[column.field];
            double value = 0.0;
            if (!range.Takes(text, value)) {
                Refuse(row.line, table.fields[column.field], text, range.Text());
            }
            values.push_back(value / norm);
        }
        return columns.SpectrumOf(values);
    }

private:
    SpectralColumns columns;
    double norm;  ///< what the table writes for the perfect diffuser
    std::string scale;
};

/// A field that stands there twice may mean either.
void RequireEachOnce(const std::vector<std::string>& fields)
{
    std::set<std::string> meanings;
    for (const std::string& field : fields) {
        const int wavelength = WavelengthOf(field);
        if (!meanings.insert(wavelength < 0 ? field : std::to_string(wavelength)).second) {
            throw CgatsError(0, "the field " + field + " stands there twice");
        }
    }
}

class TableReader {
public:
    TableReader(const CgatsTable& table, const ChartReader::Wanted& wanted)
        : table(table),
          nameField(table.FindField("SAMPLE_NAME")),
          idField(table.FindField("SAMPLE_ID")),
          places(FindGroup<4>(table, {"X", "Y", "WIDTH", "HEIGHT"})),
          rowPlaces(FindGroup<2>(table, {"SCAN_ROW", "SCAN_COLUMN"})),
          way(table.FindField("SCAN_WAY")),
          reading(FindGroup<3>(table, {"SCAN_SAMPLES", "SCAN_SPREAD", "SCAN_RESIDUAL"})),
          repeatSpread(FindGroup<1>(table, {"REPEAT_SPREAD"})),
          densities(FindGroup<4>(table, {DensityFields[0], DensityFields[1], DensityFields[2], DensityFields[3]})),
          spectra(table),
          lab(FindGroup<3>(table, {"LAB_L", "LAB_A", "LAB_B"})),
          xyz(FindGroup<3>(table, {"XYZ_X", "XYZ_Y", "XYZ_Z"})),
          grid(wanted.grid),
          coloursWanted(wanted.colours),
          asGrid(wanted.grid.rows || wanted.grid.columns || !places.Any())
    {
        FillCount(table, "LAYOUT_ROWS", grid.rows);
        FillCount(table, "LAYOUT_COLUMNS", grid.columns);
        FillPoint(table, "PATCH_SIZE", length, grid.size);
        FillPoint(table, "PATCH_GAP", gap, grid.gap);
        FillPoint(table, "LAYOUT_START", place, grid.start);
        if (wanted.fittedLater) {
            grid.size = grid.size.value_or(Point{1.0, 1.0});
            grid.start = grid.start.value_or(Point{});
        }
        missing = Lack(wanted);
    }

    /// What the table lacks of what is wanted; empty when it has it all.
    const std::string& Missing() const { return missing; }

    Chart Read() const
    {
        RequireEachOnce(table.fields);
        Chart chart;
        for (const CgatsTable::Keyword& keyword : table.keywords) {
            chart.conditions.emplace_back(keyword.name, keyword.value);
        }
        chart.paper = Paper();
        chart.blemishes = Blemishes();
        chart.bands = spectra ? spectra.Columns().Bands() : BandRange();
        std::copy_if(table.fields.begin(), table.fields.end(), std::back_inserter(chart.deviceFields), IsDeviceField);
        const bool usualColours = !ColourConditions().AreStatedOtherwise(chart.conditions);
        if (coloursWanted && !spectra && !usualColours) {
            RefuseColours();
        }
        const bool atCorner = IsAtCorner();
        const double rotation = OneNumber(table, "LAYOUT_ROTATION", angle).value_or(0.0) * std::numbers::pi / 180.0;
        chart.patches.reserve(table.rows.size());
        for (const CgatsTable::Row& row : table.rows) {
            chart.patches.push_back(ReadPatch(row));
            if (!usualColours) {
                chart.patches.back().lab.reset();
                chart.patches.back().xyz.reset();
            }
            if (!asGrid && places) {
                chart.places.push_back(ReadPlace(row, atCorner, rotation));
            }
            if (rowPlaces) {
                const auto [line, column] = rowPlaces.Read(table, row, count);
                chart.rowPlaces.push_back({static_cast<size_t>(line), static_cast<size_t>(column)});
            }
        }
        if (asGrid && grid.Fault(chart.patches.size()).empty()) {
            chart.places = grid.Places(chart.patches.size());
        }
        return chart;
    }

private:
    std::string Lack(const ChartReader::Wanted& wanted) const
    {
        if (wanted.names && nameField < 0 && idField < 0) {
            return "the field SAMPLE_NAME or SAMPLE_ID is missing";
        }
        if (wanted.places && !asGrid && !places) {
            return places.Missing();
        }
        if (wanted.places && asGrid && !table.rows.empty()) {
            if (const std::string fault = grid.Fault(table.rows.size()); !fault.empty()) {
                return fault;
            }
        }
        if (wanted.spectra) {
            const std::string& lack = wanted.otherBands ? spectra.Columns().Fault() : spectra.Columns().Missing();
            if (!lack.empty()) {
                return lack;
            }
        }
        if (!wanted.colours || spectra || lab || xyz) {
            return {};
        }
        return spectra.Columns().Columns().empty() ? "no patches with spectra, LAB or XYZ values"
                                                   : spectra.Columns().Fault();
    }

    /// One factor, or 36 in order of wavelength.
    std::optional<Spectrum> Paper() const
    {
        const CgatsTable::Keyword* const keyword = table.FindKeyword("PAPER_REFLECTANCE");
        if (keyword == nullptr) {
            return std::nullopt;
        }
        const std::vector<std::string> words = Words(*keyword);
        Spectrum paper{};
        if (words.size() != 1 && words.size() != paper.size()) {
            RefuseCount(*keyword, words.size(), "1 or " + std::to_string(paper.size()));
        }
        for (size_t band = 0; band < paper.size(); ++band) {
            paper[band] = static_cast<float>(Number(*keyword, words[words.size() == 1 ? 0 : band], flatFactor));
        }
        return paper;
    }

    std::vector<Blemish> Blemishes() const
    {
        std::vector<Blemish> blemishes;
        for (const CgatsTable::Keyword& keyword : table.keywords) {
            if (keyword.name == "SPECK") {
                const auto [x, y, width, factor] = Numbers<4>(keyword, {place, place, stroke, flatFactor});
                blemishes.push_back({{x, y}, {x, y}, width, static_cast<float>(factor)});
            } else if (keyword.name == "SCRATCH") {
                const auto [x1, y1, x2, y2, width, factor] =
                    Numbers<6>(keyword, {place, place, place, place, stroke, flatFactor});
                blemishes.push_back({{x1, y1}, {x2, y2}, width, static_cast<float>(factor)});
            }
        }
        return blemishes;
    }

    bool IsAtCorner() const
    {
        const CgatsTable::Keyword* const origin = table.FindKeyword("LAYOUT_ORIGIN");
        if (origin != nullptr && origin->value != "CORNER" && origin->value != "CENTRE") {
            throw CgatsError(origin->line, "LAYOUT_ORIGIN '" + origin->value + "' is neither CENTRE nor CORNER");
        }
        return origin != nullptr && origin->value == "CORNER";
    }

    /// Colours that no spectrum tells are taken as they are, so they have to be what all others are.
    [[noreturn]] void RefuseColours() const
    {
        const CgatsTable::Keyword& stated = *table.FindKeyword("WEIGHTING_FUNCTION");
        throw CgatsError(stated.line, "the colours are for " + stated.value + ", and there are no spectra; those for " +
                                          ColourConditions().Words() + " are wanted");
    }

    Patch ReadPatch(const CgatsTable::Row& row) const
    {
        const auto text = [&row](int field) {
            return field < 0 ? std::string() : row.values[static_cast<size_t>(field)];
        };
        Patch patch;
        patch.id = text(idField);
        patch.name = nameField >= 0 ? text(nameField) : patch.id;
        patch.line = row.line;
        for (size_t field = 0; field < table.fields.size(); ++field) {
            if (IsDeviceField(table.fields[field])) {
                patch.device.push_back(row.values[field]);
            }
        }
        if (spectra) {
            patch.spectrum = spectra.Read(table, row);
        }
        if (way >= 0 && reading) {
            const auto [samples, spread, residual] = reading.Read(table, row, measure);
            patch.reading = Reading{text(way), static_cast<size_t>(samples), spread, residual};
        }
        if (repeatSpread) {
            patch.repeatSpread = repeatSpread.Read(table, row, measure)[0];
        }
        if (densities) {
            patch.densities = densities.Read(table, row, density);
        }
        if (lab) {
            patch.lab = lab.Read(table, row, colour);
        }
        if (xyz) {
            patch.xyz = xyz.Read(table, row, colour);
        }
        return patch;
    }

    Place ReadPlace(const CgatsTable::Row& row, bool atCorner, double rotation) const
    {
        const auto [x, y, width, height] = places.Read(table, row, {&place, &place, &length, &length});
        Place patch = Place::Upright({x, y}, width, height).Turned(rotation);
        if (atCorner) {
            patch.centre = {x + patch.along.x + patch.across.x, y + patch.along.y + patch.across.y};
        }
        return patch;
    }

    const CgatsTable& table;
    int nameField;
    int idField;
    FieldGroup<4> places;
    FieldGroup<2> rowPlaces;
    int way;
    FieldGroup<3> reading;
    FieldGroup<1> repeatSpread;
    FieldGroup<4> densities;
    SpectralFields spectra;
    FieldGroup<3> lab;
    FieldGroup<3> xyz;
    Grid grid;
    bool coloursWanted;
    bool asGrid;  ///< the patches lie as the grid says
    std::string missing;
};

}  // namespace

Chart ChartReader::Read(const CgatsFile& file, const Wanted& wanted)
{
    const CgatsTable* withoutPatches = nullptr;
    std::string missing;
    for (const CgatsTable& table : file.Tables()) {
        const TableReader reader(table, wanted);
        if (reader.Missing().empty() && !table.rows.empty()) {
            Chart chart = reader.Read();
            chart.table = static_cast<size_t>(&table - file.Tables().data());
            return chart;
        }
        if (reader.Missing().empty() && withoutPatches == nullptr) {
            withoutPatches = &table;
        }
        missing = missing.empty() ? reader.Missing() : missing;
    }
    if (withoutPatches == nullptr) {
        throw CgatsError(0, missing);
    }
    Chart chart = TableReader(*withoutPatches, wanted).Read();
    chart.table = static_cast<size_t>(withoutPatches - file.Tables().data());
    return chart;
}

}  // namespace J4Chart
