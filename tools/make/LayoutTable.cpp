#include "tools/make/LayoutTable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "chart/DeviceValues.h"
#include "chart/cgats/CgatsFields.h"
#include "chart/colour/PrintModel.h"
#include "tools/make/PagePainter.h"

namespace J4Tool {

using J4Chart::CgatsTable;

namespace {

constexpr std::array<const char*, 6> PlaceFields = {"PAGE", "SAMPLE_LOC", "X", "Y", "WIDTH", "HEIGHT"};

/// To a thousandth.
std::string Length(double millimetres) { return J4Chart::NumberText(std::round(millimetres * 1000.0) / 1000.0); }

std::string PointText(Point point) { return Length(point.x) + " " + Length(point.y); }

/// Where patches of a measurement lay and how they were read is not what the new chart has.
bool IsOfPlaces(const std::string& field)
{
    return field == "SAMPLE_ID" || field == "SAMPLE_NAME" || field.starts_with("SCAN_") ||
           std::find(PlaceFields.begin(), PlaceFields.end(), field) != PlaceFields.end();
}

bool IsColour(const std::string& field)
{
    return field.starts_with("LAB_") || field.starts_with("XYZ_") || J4Chart::WavelengthOf(field) >= 0;
}

/// The first of the fields to which a rule applies goes, until there is none.
template <class Rule>
void DropFields(CgatsTable& table, Rule rule)
{
    for (size_t field = table.fields.size(); field-- > 0;) {
        if (rule(table.fields[field])) {
            const auto at = static_cast<std::ptrdiff_t>(field);
            table.fields.erase(table.fields.begin() + at);
            for (CgatsTable::Row& row : table.rows) {
                row.values.erase(row.values.begin() + at);
            }
        }
    }
}

void AddStroke(CgatsTable& table, Point from, Point to, double width)
{
    constexpr const char* ink = "0.04";
    table.keywords.push_back({"SCRATCH", PointText(from) + " " + PointText(to) + " " + Length(width) + " " + ink, 0});
}

}  // namespace

LayoutTable::LayoutTable(const ColourList& list, const PageLayout& pages, const std::vector<size_t>& order,
                         const Keywords& keywords)
    : list(list), pages(pages), order(order), layout(list.Table())
{
    std::erase_if(layout.keywords, [](const CgatsTable::Keyword& keyword) {
        return keyword.name.starts_with("LAYOUT_") || keyword.name == "PATCH_SIZE" || keyword.name == "PATCH_GAP" ||
               keyword.name == "SPECK" || keyword.name == "SCRATCH";
    });
    for (const CgatsTable::Keyword& keyword : keywords) {
        layout.SetKeyword(keyword.name, keyword.value);
    }
    std::string marks;
    for (const Point& mark : pages.Marks()) {
        marks += (marks.empty() ? "" : " ") + PointText(pages.OnBed(mark));
    }
    layout.SetKeyword("LAYOUT_MARKS", marks);
    layout.SetKeyword(J4Chart::DeviceValues::MaximumKeyword, J4Chart::NumberText(list.Maximum()));
    layout.SetKeyword("LAYOUT_PAGES", std::to_string(pages.Pages()));
    DropFields(layout, IsOfPlaces);
    std::copy_if(layout.fields.begin(), layout.fields.end(), std::back_inserter(carried),
                 [](const std::string& field) { return !IsColour(field) && !J4Chart::IsDeviceField(field); });
    layout.kind = "CGATS.17";
    const std::vector<CgatsTable::Row> colours = std::move(layout.rows);
    layout.rows.clear();
    layout.fields.insert(layout.fields.begin(), {"SAMPLE_ID", "SAMPLE_NAME"});
    layout.fields.insert(layout.fields.end(), PlaceFields.begin(), PlaceFields.end());
    for (size_t place = 0; place < order.size(); ++place) {
        CgatsTable::Row row = colours[order[place]];
        const ColourList::Colour& colour = list.Colours()[order[place]];
        row.values.insert(row.values.begin(), {colour.id.empty() ? std::to_string(place + 1) : colour.id, colour.name});
        const std::vector<std::string> there = PlaceOf(place);
        row.values.insert(row.values.end(), there.begin(), there.end());
        layout.rows.push_back(std::move(row));
    }
}

std::vector<std::string> LayoutTable::PlaceOf(size_t place) const
{
    const PageLayout::Cell cell = pages.CellOf(place);
    const Point centre = pages.OnBed(cell.centre);
    const Point patch = pages.Chosen().patch;
    return {std::to_string(cell.page), PageLayout::Name(cell), Length(centre.x),
            Length(centre.y),          Length(patch.x),        Length(patch.y)};
}

CgatsTable LayoutTable::SimulatedPrint() const
{
    CgatsTable print = layout;
    DropFields(print, IsColour);
    std::erase_if(print.keywords, [](const CgatsTable::Keyword& keyword) { return keyword.name == "SPECTRAL_NORM"; });
    std::string paper;
    for (size_t band = 0; band < J4Chart::PrintModel::Paper().size(); ++band) {
        print.fields.push_back(J4Chart::SpectralField(band));
        paper += (band > 0 ? " " : "") + J4Chart::NumberText(J4Chart::PrintModel::Paper()[band]);
    }
    print.SetKeyword("DESCRIPTOR", print.ValueOf("DESCRIPTOR") + ", simulated print of a simple model of inks");
    print.SetKeyword("PAPER_REFLECTANCE", paper);
    const J4Chart::PrintModel model(list.SpotSolids());
    for (size_t place = 0; place < order.size(); ++place) {
        for (const float factor : model.Print(list.Colours()[order[place]].values)) {
            print.rows[place].values.push_back(
                J4Chart::NumberText(std::round(static_cast<double>(factor) * 1e5) / 1e5));
        }
    }
    for (const PagePainter::Stroke& stroke : PagePainter::Strokes(pages)) {
        AddStroke(print, pages.OnBed(stroke.from), pages.OnBed(stroke.to), stroke.width);
    }
    return print;
}

}  // namespace J4Tool
