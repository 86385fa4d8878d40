#include "tools/report/ColourTable.h"

#include <algorithm>

#include "chart/cgats/CgatsFields.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

using namespace J4Chart;
using J4Chart::CgatsTable;

/// A number of each of several fields, for instance LAB_L, LAB_A and LAB_B.
template <size_t Count>
class FieldGroup {
public:
    explicit FieldGroup(const std::array<int, Count>& fields) : fields(fields) {}

    FieldGroup(const CgatsTable& table, const std::array<const char*, Count>& names)
    {
        std::transform(names.begin(), names.end(), fields.begin(),
                       [&table](const char* name) { return table.FindField(name); });
    }

    /// True when the table has all the fields.
    explicit operator bool() const
    {
        return std::none_of(fields.begin(), fields.end(), [](int field) { return field < 0; });
    }

    /// @throws ToolError
    std::array<double, Count> Read(const CgatsTable& table, const CgatsTable::Row& row,
                                   const std::string& fileName) const
    {
        std::array<double, Count> numbers{};
        for (size_t i = 0; i < Count; ++i) {
            const size_t field = static_cast<size_t>(fields[i]);
            if (!J4Chart::ParseNumber(row.values[field], numbers[i])) {
                throw ToolError(ExitCode::File, fileName + ": line " + std::to_string(row.line) + ": " +
                                                    table.fields[field] + " is '" + row.values[field] +
                                                    "', which is no number");
            }
        }
        return numbers;
    }

private:
    std::array<int, Count> fields{};
};

struct Groups {
    explicit Groups(const CgatsTable& table)
        : spectrum(J4Chart::FindSpectralFields(table)),
          lab(table, {"LAB_L", "LAB_A", "LAB_B"}),
          xyz(table, {"XYZ_X", "XYZ_Y", "XYZ_Z"}),
          place(table, {"X", "Y", "WIDTH", "HEIGHT"}),
          scan(table, {"SCAN_ROW", "SCAN_COLUMN"})
    {}

    bool HasColour() const { return spectrum || lab || xyz; }

    FieldGroup<SpectrumLength> spectrum;
    FieldGroup<3> lab;
    FieldGroup<3> xyz;
    FieldGroup<4> place;
    FieldGroup<2> scan;
};

const CgatsTable& FirstWithColour(const J4Chart::CgatsFile& file, const std::string& fileName)
{
    for (const CgatsTable& table : file.Tables()) {
        if (!table.rows.empty() && Groups(table).HasColour()) {
            return table;
        }
    }
    throw ToolError(ExitCode::File, fileName + ": no patches with spectra, LAB or XYZ values",
                    "Spectra need the 36 bands from 380 to 730 nm in steps of 10 nm.");
}

}  // namespace

ColourTable::ColourTable(const J4Chart::CgatsFile& file, const std::string& fileName)
    : source(FirstWithColour(file, fileName))
{
    const Groups groups(source);
    const int name = source.FindField("SAMPLE_NAME");
    const int id = source.FindField("SAMPLE_ID");
    // The reflectance of the perfect diffuser: 1, or 100 in a file that gives percent.
    double diffuser = 1.0;
    if (!J4Chart::ParseNumber(source.ValueOf("SPECTRAL_NORM"), diffuser) || diffuser <= 0.0) {
        diffuser = 1.0;
    }
    const bool corner = source.ValueOf("LAYOUT_ORIGIN") == "CORNER";
    const auto text = [](const CgatsTable::Row& row, int field) {
        return field < 0 ? std::string() : row.values[static_cast<size_t>(field)];
    };
    patches.reserve(source.rows.size());
    for (const CgatsTable::Row& row : source.rows) {
        Patch patch;
        patch.id = text(row, id);
        patch.name = name >= 0 ? text(row, name) : id >= 0 ? patch.id : std::to_string(patches.size() + 1);
        if (groups.spectrum) {
            const auto values = groups.spectrum.Read(source, row, fileName);
            std::transform(values.begin(), values.end(), patch.spectrum.emplace().begin(),
                           [&](double value) { return static_cast<float>(value / diffuser); });
            patch.lab = Colorimetry::Lab(*patch.spectrum);
        } else if (groups.lab) {
            patch.lab = groups.lab.Read(source, row, fileName);
        } else {
            patch.lab = Colorimetry::LabOfTristimulus(groups.xyz.Read(source, row, fileName));
        }
        if (groups.place) {
            const auto [x, y, width, height] = groups.place.Read(source, row, fileName);
            if (width > 0.0 && height > 0.0) {
                patch.place = {x + (corner ? width / 2.0 : 0.0), y + (corner ? height / 2.0 : 0.0), width, height};
            }
        }
        if (groups.scan) {
            patch.scan = groups.scan.Read(source, row, fileName);
        }
        patches.push_back(std::move(patch));
    }
}

}  // namespace J4Tool
