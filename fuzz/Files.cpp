// Files: what is accepted has values within their ranges, can be shown, and reads back the same.
#include <algorithm>
#include <cmath>
#include <sstream>
#include <tuple>

#include "Utilities/Exceptions/Exceptions.h"
#include "chart/ChartReader.h"
#include "chart/cxf/CxfReader.h"
#include "fuzz/Targets.h"
#include "src/Flash/j4TableFlashData.h"
#include "tools/ChartLayout.h"
#include "tools/MeasurementFile.h"
#include "tools/ToolError.h"
#include "tools/judge/Judgement.h"
#include "tools/judge/ToleranceFile.h"
#include "tools/make/ColourList.h"
#include "tools/make/LayoutTable.h"
#include "tools/make/PagePainter.h"
#include "tools/report/ReportPage.h"
#include "tools/trace/ArmWay.h"
#include "tools/trace/Dialogue.h"

namespace J4Fuzz {

using J4Chart::CgatsError;
using J4Chart::CgatsFile;

namespace {

CgatsFile FileOf(const uint8_t* data, size_t size)
{
    std::istringstream input(std::string(reinterpret_cast<const char*>(data), size));
    if (size == 0 || *data != '<') {
        return CgatsFile::Read(input);
    }
    CgatsFile file;
    file.Add(J4Chart::CxfReader::Read(input));
    return file;
}

void RequireTame(const J4Chart::Chart& chart)
{
    for (const J4Chart::Patch& patch : chart.patches) {
        if (const auto colour = patch.Colour()) {
            Require(std::all_of(colour->begin(), colour->end(), [](double value) { return std::abs(value) < 1e5; }),
                    "colours are those of colours");
        }
    }
    for (const J4Chart::Place& place : chart.places) {
        Require(std::isfinite(place.centre.x + place.centre.y + place.Width() + place.Height()), "places are finite");
    }
}

}  // namespace

void ChartFile(const uint8_t* data, size_t size)
try {
    const CgatsFile file = FileOf(data, size);
    try {
        file.Text();
    } catch (const CgatsError& error) {
        Require(std::string(error.what()).find("reads back") == std::string::npos, error.what());
    }
    J4Chart::ChartReader::Wanted bed;
    bed.names = false;
    bed.colours = true;
    try {
        RequireTame(J4Chart::ChartReader::Read(file, bed));
    } catch (const CgatsError&) {
        // It may be a layout all the same.
    }
    const J4Tool::ChartLayout layout = J4Tool::ChartLayout::Read(file, {}, false);
    J4Tool::MeasurementFile::RequireHolds(layout);
    layout.RequireMeasurable();
    J4Tool::Measurements measured(layout.Patches().size(), J4Tool::PatchReading());
    std::istringstream text(J4Tool::MeasurementFile::Text(layout, measured, {}, J4Tool::MeasurementFile::Form::Cgats));
    const J4Tool::ChartLayout back = J4Tool::ChartLayout::Read(CgatsFile::Read(text), {}, false);
    Require(back.Patches().size() == layout.Patches().size(), "a measured file is its own layout");
    for (size_t i = 0; i < back.Patches().size(); ++i) {
        Require(back.Patches()[i].name == layout.Patches()[i].name, "names read back the same");
        Require(back.Patches()[i].device == layout.Patches()[i].device, "device values read back the same");
    }
} catch (const CgatsError&) {
} catch (const J4Tool::ToolError&) {}

void Report(const uint8_t* data, size_t size)
try {
    const auto source = J4Tool::ColourFile::Read("fuzz.cgats", FileOf(data, size));
    RequireTame(source.chart);
    const J4Tool::ReportData report(source, &source);
    for (const auto& formula : report.Formulas()) {
        Require(formula.summary.Count() == 0 || formula.summary.Maximum() < 1e-6,
                "a chart does not differ from itself");
    }
    Require(J4Tool::MakeReportPage(report).size() < 20'000'000 + 100'000 * size, "a page is no larger than its data");
} catch (const CgatsError&) {
} catch (const J4Tool::ToolError&) {}

void Tolerances(const uint8_t* data, size_t size)
try {
    const J4Tool::Tolerances tolerances =
        J4Tool::ToleranceFile::Read(std::string(reinterpret_cast<const char*>(data), size), "fuzz.toml");
    J4Chart::Chart chart;
    chart.deviceFields = {"CMYK_C", "CMYK_M", "CMYK_Y", "CMYK_K"};
    for (const auto& [name, device, lab] :
         {std::tuple<const char*, std::vector<std::string>, J4Chart::Colorimetry::Triple>("paper", {"0", "0", "0", "0"},
                                                                                          {95, 0, -3}),
          {"solid", {"100", "0", "0", "0"}, {55, -36, -44}},
          {"grey 50", {"50", "40", "40", "0"}, {58, 0, 0}}}) {
        J4Chart::Patch patch;
        patch.name = name;
        patch.device = device;
        patch.lab = lab;
        chart.patches.push_back(patch);
    }
    const J4Tool::Judgement judgement(tolerances, chart, chart);
    Require(judgement.Overall() != J4Tool::Judgement::Verdict::Fail, "a chart is as it should be by itself");
    for (const auto& line : judgement.Lines()) {
        Require(line.limit >= 0.0 && line.limit <= 1000.0, "limits are those of colours");
        Require(line.verdict != J4Tool::Judgement::Verdict::Pass || line.patches > 0, "nothing is held by no patches");
    }
} catch (const J4Tool::ToolError&) {}

void Trace(const uint8_t* data, size_t size)
{
    std::istringstream input(std::string(reinterpret_cast<const char*>(data), size));
    J4Tool::ArmWay way;
    J4Tool::Dialogue dialogue(
        [](const J4Tool::DialogueLine& line) { Require(!line.text.empty(), "every line says something"); }, false);
    try {
        J4Tool::ReadTrace(input, "fuzz", [&](const J4Tool::TraceEvent& event) {
            dialogue.Add(event);
            way.Add(event);
        });
    } catch (const J4Tool::ToolError& error) {
        Require(error.code == J4Tool::ExitCode::File, "a file is refused as a file");
    }
    dialogue.End();
    way.End();
    for (const J4Tool::ArmMotion& motion : way.Motions()) {
        Require(motion.begin <= motion.stop && motion.acceleration >= 0, "a motion ends behind its begin");
        Require(2 * motion.acceleration <= motion.stop - motion.begin, "ramps are no longer than the motion");
    }
}

void Colours(const uint8_t* data, size_t size)
try {
    const J4Tool::ColourList list = J4Tool::ColourList::Read(FileOf(data, size), {});
    const size_t count = list.Colours().size();
    J4Tool::PageLayout::Settings settings;
    settings.quiet = 1.0;
    const J4Tool::PageLayout pages(settings, count, J4Tool::WorkArea::Usual());
    std::vector<size_t> order;
    while (order.size() < count) {
        order.push_back(count - order.size() - 1);
    }
    CgatsFile file;
    file.Add(J4Tool::LayoutTable(list, pages, order, {}).SimulatedPrint());
    std::istringstream text(file.Text());
    const CgatsFile back = CgatsFile::Read(text);
    size_t place = 0;
    for (size_t page = 1; page <= pages.Pages(); ++page) {
        const J4Tool::ChartLayout layout = J4Tool::ChartLayout::Read(back, {}, false, page);
        layout.RequireMeasurable();
        for (const J4Chart::Patch& patch : layout.Patches()) {
            Require(patch.name == list.Colours()[order[place++]].name, "a chart is the list in its order");
        }
    }
    Require(place == count, "every colour is on a page");
    J4Tool::PdfDocument document({"", "", 0}, list.Spots());
    J4Tool::PagePainter(list, pages, order).Draw(document, list.Table().ValueOf("DESCRIPTOR"), "", "");
    Require(document.Text().ends_with("%%EOF\n"), "a page is whole");
} catch (const CgatsError&) {
} catch (const J4Tool::ToolError&) {}

void Block(const uint8_t* data, size_t size)
try {
    using Kestrelon::DeviceDriver::J4T::j4TableFlashData;
    constexpr int values = j4TableFlashData::FormatValuesOnly;
    j4TableFlashData block(std::vector<uint8_t>(data, data + size));
    block.UpdateChecksum();
    std::vector<uint8_t> image = block.Dump(values);
    Require(image.size() <= 8192 + sizeof(uint32_t), "a block has its largest size");
    // With the size that it has now it is one as the table keeps it.
    for (size_t i = 0; i < sizeof(uint32_t); ++i) {
        image[i] = static_cast<uint8_t>(image.size() >> (8 * i));
    }
    j4TableFlashData whole(image);
    whole.UpdateChecksum();
    const j4TableFlashData back(whole.Dump(values));
    back.CheckChecksum();
    Require(back.Dump(values) == whole.Dump(values), "a block reads back the same");
} catch (const Kestrelon::Utilities::Exceptions::TraceableException&) {}

}  // namespace J4Fuzz
