#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "Utilities/Tools/FilePath.h"
#include "chart/cgats/CgatsFields.h"
#include "chart/colour/PrintModel.h"
#include "tools/DateText.h"
#include "tools/Json.h"
#include "tools/OutputFile.h"
#include "tools/Plural.h"
#include "tools/TableText.h"
#include "tools/Terminal.h"
#include "tools/ToolError.h"
#include "tools/commands/ChartArguments.h"
#include "tools/make/ColourRule.h"
#include "tools/make/LayoutTable.h"
#include "tools/make/PagePainter.h"
#include "tools/make/PatchOrder.h"
#include "tools/make/PdfText.h"

namespace J4Tool {

namespace {

using Kestrelon::Utilities::Tools::NameOf;
using Kestrelon::Utilities::Tools::PathOf;

struct NewChartArguments {
    std::string colours;
    std::string list;
    std::string page;
    std::string layout;
    std::string print;
    std::string paper = "A4";
    bool portrait = false;
    bool keepOrder = false;
    bool force = false;
    uint64_t seed = 1;
    std::vector<double> patch;
    std::vector<double> gap;
    std::vector<double> bed;
    std::optional<double> quiet;
    ColourList::Scales scales;
    std::string title;
    std::string date;
};

/// Sizes of paper that lies upright, mm.
struct NamedPaper {
    const char* name;
    Point size;
};
constexpr NamedPaper Papers[] = {
    {"A4", {210.0, 297.0}}, {"A3", {297.0, 420.0}}, {"letter", {215.9, 279.4}}, {"tabloid", {279.4, 431.8}}};

struct Paper {
    std::string name;
    Point size;
};

Paper PaperOf(const NewChartArguments& arguments, const Units& units)
{
    for (const NamedPaper& paper : Papers) {
        if (arguments.paper == paper.name) {
            return arguments.portrait ? Paper{paper.name + std::string(" portrait"), paper.size}
                                      : Paper{paper.name + std::string(" landscape"), {paper.size.y, paper.size.x}};
        }
    }
    const size_t comma = arguments.paper.find(',');
    Point size;
    constexpr double largest = 5000.0;  // mm, what a page of PDF may have
    if (comma != std::string::npos && J4Chart::ParseNumber(arguments.paper.substr(0, comma), size.x) &&
        J4Chart::ParseNumber(arguments.paper.substr(comma + 1), size.y)) {
        size = units.ToMillimetres(size);
        if (size.x > 0.0 && size.y > 0.0 && size.x <= largest && size.y <= largest && !arguments.portrait) {
            return {J4Chart::NumberText(size.x) + " \xc3\x97 " + J4Chart::NumberText(size.y) + " mm", size};
        }
    }
    throw ToolError(ExitCode::Usage,
                    arguments.portrait && comma != std::string::npos
                        ? "--portrait goes with paper that has a name"
                        : "--paper '" + arguments.paper + "' is neither A4, A3, letter, tabloid nor W,H up to 5000 mm",
                    "See 'j4tavla chart --help'.");
}

/// What is asked for, else what builds that have to come out the same ask for, else now.
std::time_t Created(const NewChartArguments& arguments)
{
    if (!arguments.date.empty()) {
        if (const std::optional<std::time_t> date = ParseDate(arguments.date)) {
            return *date;
        }
        throw ToolError(ExitCode::Usage,
                        "--date '" + arguments.date + "' is neither 2026-03-01 nor 2026-03-01T12:00:00Z in form",
                        "See 'j4tavla chart --help'.");
    }
    const char* const epoch = std::getenv("SOURCE_DATE_EPOCH");
    double seconds = 0.0;
    constexpr double latest = 253402300799.0;  // year 9999
    if (epoch != nullptr && J4Chart::ParseNumber(epoch, seconds) && seconds >= 0.0 && seconds <= latest) {
        return static_cast<std::time_t>(seconds);
    }
    return std::time(nullptr);
}

ColourList ReadColours(const NewChartArguments& arguments)
{
    if (arguments.list.empty()) {
        return ColourList::Load(arguments.colours, arguments.scales);
    }
    J4Chart::CgatsFile file;
    file.Add(ColourRule::Make(arguments.list));
    return ColourList::Read(file, {});
}

std::string LayoutText(const J4Chart::CgatsTable& table)
{
    return TableText(table, "the layout can't be written", "Correct the list of colours, or --title.");
}

/// What may not come out as it was meant.
std::vector<std::string> Notices(const LayoutTable& table, const std::string& title)
{
    std::vector<std::string> notices;
    for (const std::string& field : table.Carried()) {
        notices.push_back(field + " is not printed, only carried over into the layout");
    }
    if (!PdfText::IsShown(title)) {
        notices.push_back("the page has \"?\" for letters of the title that its font lacks");
    }
    return notices;
}

PatchOrder OrderOf(const ColourList& list, const PageLayout& pages, const NewChartArguments& arguments)
{
    const J4Chart::PrintModel model(list.SpotSolids());
    std::vector<J4Chart::Colorimetry::Triple> labs;
    for (const ColourList::Colour& colour : list.Colours()) {
        labs.push_back(colour.lab ? *colour.lab : J4Chart::Colorimetry::Lab(model.Print(colour.values)));
    }
    PatchOrder order(labs, J4Chart::Colorimetry::Lab(J4Chart::PrintModel::Paper()), pages.Rows());
    if (!arguments.keepOrder) {
        order.Mix(arguments.seed);
    }
    return order;
}

void ShowChart(const NewChartArguments& arguments, const PageLayout& pages, const PatchOrder& order,
               const std::string& paper, const std::vector<std::string>& notices, bool json)
{
    const size_t patches = order.Order().size();
    const double difference = std::round(order.LeastDifference() * 10.0) / 10.0;
    const double fromPaper = std::round(order.LeastFromPaper() * 10.0) / 10.0;
    if (json) {
        PrintJson({{"page", arguments.page},
                   {"layout", arguments.layout},
                   {"simulatedPrint", JsonValue(arguments.print)},
                   {"patches", patches},
                   {"rows", pages.Rows().size()},
                   {"pages", pages.Pages()},
                   {"quiet", pages.Chosen().quiet},
                   {"leastDifference", difference},
                   {"leastFromPaper", fromPaper},
                   {"notices", notices}});
        return;
    }
    Print(stdout, "%s in %s on %s of %s: %s\n", Plural(patches, "patch").c_str(),
          Plural(pages.Rows().size(), "row").c_str(), Plural(pages.Pages(), "page").c_str(), paper.c_str(),
          arguments.page.c_str());
    Print(stdout,
          "Neighbours in a row differ by %.1f and more, ends of rows from the paper by %.1f and more (CIE 1976, "
          "estimated where the list has no colours).\n",
          difference, fromPaper);
    Print(stdout, "The layout for the scan is in %s\n", arguments.layout.c_str());
    if (!arguments.print.empty()) {
        Print(stdout, "A simulated print, by a simple model of inks, is in %s\n", arguments.print.c_str());
    }
    for (const std::string& notice : notices) {
        Print(stdout, "Notice: %s\n", notice.c_str());
    }
}

void RunChart(const NewChartArguments& arguments, const ToolContext& context)
{
    if (arguments.colours.empty() == arguments.list.empty()) {
        throw ToolError(ExitCode::Usage, "either COLOURS or --list is required",
                        std::string("The lists are ") + ColourRule::Help + ".");
    }
    const std::vector<std::string> inputs = {arguments.colours};
    OutputFile::RequireDifferent({arguments.page, arguments.layout, arguments.print});
    const OutputFile page(arguments.page, arguments.force, inputs);
    const OutputFile layout(arguments.layout, arguments.force, inputs);
    std::optional<OutputFile> print;
    if (!arguments.print.empty()) {
        print.emplace(arguments.print, arguments.force, inputs);
    }
    const Units units = context.GetUnits();
    const Paper paper = PaperOf(arguments, units);
    const std::time_t created = Created(arguments);
    const ColourList list = ReadColours(arguments);

    PageLayout::Settings settings;
    settings.paper = paper.size;
    settings.patch = PairOf(units, arguments.patch).value_or(settings.patch);
    settings.gap = PairOf(units, arguments.gap).value_or(settings.gap);
    settings.bed = PairOf(units, arguments.bed).value_or(settings.bed);
    settings.quiet = arguments.quiet ? units.ToMillimetres(*arguments.quiet) : settings.quiet;
    const PageLayout pages(settings, list.Colours().size(), WorkArea::Usual());
    const PatchOrder order = OrderOf(list, pages, arguments);

    const std::string told = list.Table().ValueOf("DESCRIPTOR");
    const std::string title = !arguments.title.empty() ? arguments.title
                              : !told.empty()          ? told
                                                       : NameOf(PathOf(arguments.colours).stem());
    const std::string creator = "j4tavla " TOOL_VERSION;
    const LayoutTable table(
        list, pages, order.Order(),
        {{"ORIGINATOR", creator, 0},
         {"DESCRIPTOR", title, 0},
         {"CREATED", DateText(created), 0},
         {"LAYOUT_PAPER", J4Chart::NumberText(paper.size.x) + " " + J4Chart::NumberText(paper.size.y), 0},
         {"LAYOUT_ORDER", arguments.keepOrder ? "as listed" : "seed " + std::to_string(arguments.seed), 0}});
    PdfDocument document({title, creator, created}, list.Spots());
    PagePainter(list, pages, order.Order()).Draw(document, title, paper.name, DateText(created).substr(0, 10));

    layout.Write(LayoutText(table.Layout()));
    if (print) {
        print->Write(LayoutText(table.SimulatedPrint()));
    }
    page.Write(document.Text());
    if (!page.IsStandardOutput() && !layout.IsStandardOutput() && !(print && print->IsStandardOutput())) {
        ShowChart(arguments, pages, order, paper.name, Notices(table, title), context.json);
    }
}

}  // namespace

void AddChartCommand(CLI::App& app, ToolContext& context)
{
    const auto arguments = std::make_shared<NewChartArguments>();
    CLI::App* command = app.add_subcommand(
        "chart", "make a chart of a list of colours: a page or several to print, PDF, and the layout for the scan");
    command->add_option(
        "COLOURS", arguments->colours,
        "device values, RGB or CMYK and spot inks: CGATS.17, CxF3 or CSV; Lab, XYZ and spectra are carried over");
    command->add_option("--list", arguments->list, std::string("a list made by rule. ") + ColourRule::Help)
        ->type_name("NAME");
    command->add_option("-o,--output", arguments->page, "the pages, PDF in device colours")
        ->type_name("PDF")
        ->required();
    command->add_option("--layout", arguments->layout, "the layout that scan reads, CGATS.17")
        ->type_name("LAYOUT")
        ->required();
    command
        ->add_option("--simulated-print", arguments->print,
                     "also the chart as a simple model of inks prints it, for --virtual --chart; of no real press")
        ->type_name("CHART");
    command->add_flag("--force", arguments->force, "replace the files if they exist");
    command->add_option("--paper", arguments->paper, "A4, A3, letter, tabloid, or W,H (mm, or as --unit says)")
        ->type_name("PAPER")
        ->capture_default_str();
    command->add_flag("--portrait", arguments->portrait, "paper upright instead of across");
    AddPair(*command, "--patch", arguments->patch, "width and height of a patch (default 10,10 mm; 5.5 mm at least)");
    AddPair(*command, "--gap", arguments->gap, "paper between patches (default none)");
    command
        ->add_option("--quiet", arguments->quiet,
                     "bare paper around the patches (default: as far as a scan travels, 24 mm)")
        ->type_name("LENGTH")
        ->check(FiniteNumber())
        ->check(CLI::PositiveNumber);
    AddPair(*command, "--bed", arguments->bed,
            "where the page's upper left corner lies on the bed (default 150,150 mm)");
    command->add_option("--seed", arguments->seed, "another order of the patches")
        ->type_name("NUMBER")
        ->capture_default_str();
    command->add_flag("--keep-order", arguments->keepOrder, "patches in the order of the list");
    command->add_option("--rgb-maximum", arguments->scales.rgb, "what COLOURS has for full R, G or B (default 255)")
        ->type_name("NUMBER")
        ->check(FiniteNumber())
        ->check(CLI::PositiveNumber);
    command
        ->add_option("--cmyk-maximum", arguments->scales.cmyk,
                     "what COLOURS has for solids of C, M, Y, K and spot inks (default 100)")
        ->type_name("NUMBER")
        ->check(FiniteNumber())
        ->check(CLI::PositiveNumber);
    command->add_option("--title", arguments->title, "of the pages (default: DESCRIPTOR of COLOURS, or its file name)")
        ->type_name("TEXT");
    command
        ->add_option("--date", arguments->date,
                     "of the pages, 2026-03-01 or 2026-03-01T12:00:00Z (default: SOURCE_DATE_EPOCH, else now)")
        ->type_name("DATE");
    command->callback([&context, arguments] { RunChart(*arguments, context); });
}

}  // namespace J4Tool
