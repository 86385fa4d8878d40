#include <cstdio>
#include <ctime>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <utility>

#include "chart/ChartFile.h"
#include "chart/ChartReader.h"
#include "chart/csv/CsvFile.h"
#include "chart/cxf/CxfFile.h"
#include "tools/DateText.h"
#include "tools/Json.h"
#include "tools/OutputFile.h"
#include "tools/Plural.h"
#include "tools/Terminal.h"
#include "tools/ToolError.h"
#include "tools/commands/Commands.h"
#include "tools/convert/ColourArguments.h"
#include "tools/convert/Conversion.h"

namespace J4Tool {

namespace {

using J4Chart::CgatsTable;

struct ConvertArguments {
    std::string input;
    std::string output;
    std::string format;  ///< empty: as the output's name ends
    bool force = false;
    char separator = '\t';
    int bands = 0;  ///< 0: as the input has
    std::optional<int> rgbMaximum;
    ColourArguments colours;
    Conversion conversion;
};

std::string ConvertedFormat(const ConvertArguments& arguments)
{
    using J4Chart::ChartFile::HasEnding;
    if (!arguments.format.empty()) {
        return arguments.format;
    }
    if (HasEnding(arguments.output, ".csv")) {
        return "csv";
    }
    return HasEnding(arguments.output, ".cxf") || HasEnding(arguments.output, ".cxf3") ||
                   HasEnding(arguments.output, ".xml")
               ? "cxf3"
               : "cgats";
}

/// What is written has been read back, and is the same.
std::string ConvertedText(CgatsTable table, const std::string& format, const ConvertArguments& arguments)
{
    if (format == "csv") {
        return J4Chart::CsvFile::Text(table);
    }
    if (format == "cxf3") {
        return J4Chart::CxfFile::Text(table,
                                      {"j4tavla " TOOL_VERSION, DateText(std::time(nullptr)), arguments.rgbMaximum});
    }
    J4Chart::CgatsFile file;
    file.Add(std::move(table));
    return file.Text(arguments.separator);
}

void PrintConverted(const ConvertArguments& arguments, const std::string& format, const CgatsTable& table)
{
    if (arguments.output == "-") {
        return;
    }
    Print(stdout, "%s in the form of %s are in %s\n", Plural(table.rows.size(), "patch").c_str(), format.c_str(),
          arguments.output.c_str());
}

void PrintConvertedJson(const ConvertArguments& arguments, const std::string& format, const CgatsTable& table)
{
    if (arguments.output == "-") {
        return;
    }
    const std::string function = table.ValueOf("WEIGHTING_FUNCTION");
    PrintJson({{"file", arguments.output},
               {"format", format},
               {"patches", table.rows.size()},
               {"weightingFunction", function.empty() ? Json(nullptr) : Json(function)}});
}

void RunConvert(ConvertArguments arguments, bool json)
{
    const OutputFile output(arguments.output, arguments.force, {arguments.input});
    const std::string format = ConvertedFormat(arguments);
    if (format == "cxf3" && (arguments.conversion.spectralScale != 1)) {
        throw ToolError(ExitCode::Usage, "spectra in CxF3 are 0 to 1", "Leave out --spectral-scale.");
    }
    if (arguments.bands != 0) {
        arguments.conversion.bands = J4Chart::BandRange();
        if (arguments.bands == 31) {
            arguments.conversion.bands = J4Chart::BandRange{2, 32};
        }
    }
    arguments.conversion.conditions = arguments.colours.Conditions();
    try {
        const J4Chart::CgatsFile input = J4Chart::ChartFile::Read(arguments.input);
        const J4Chart::Chart chart = J4Chart::ChartReader::Read(input, {});
        if (chart.patches.empty()) {
            throw J4Chart::CgatsError(0, "there are no patches");
        }
        const CgatsTable table = arguments.conversion.Of(input.Tables()[chart.table], chart);
        output.Write(ConvertedText(table, format, arguments));
        (json ? PrintConvertedJson : PrintConverted)(arguments, format, table);
    } catch (const J4Chart::CgatsError& error) {
        throw ToolError(ExitCode::File, arguments.input + ": " + error.what(),
                        "A chart has SAMPLE_NAME or SAMPLE_ID; 'j4tavla convert --help' tells what is made of it.");
    }
}

}  // namespace

void AddConvertCommand(CLI::App& app, ToolContext& context)
{
    const auto arguments = std::make_shared<ConvertArguments>();
    CLI::App* command = app.add_subcommand(
        "convert", "hand a chart or a measurement over to other software: CGATS.17 in its manner, CSV, CxF3");
    command
        ->add_option("IN", arguments->input,
                     "a layout, list or measured file: CGATS.17, CxF3, or CSV that ends in .csv")
        ->required();
    command->add_option("-o,--output", arguments->output, "file to write, whole or not at all; - for standard output")
        ->type_name("OUT")
        ->required();
    command->add_flag("--force", arguments->force, "replace OUT if it exists");
    command
        ->add_option("--format", arguments->format,
                     "cgats, csv or cxf3; without it as OUT ends: .csv, .cxf, .cxf3 or .xml, any other is cgats")
        ->type_name("FORM")
        ->check(CLI::IsMember({"cgats", "csv", "cxf3"}));
    command
        ->add_option("--bands", arguments->bands,
                     "36: 380 to 730 nm; 31: 400 to 700 nm, both in steps of 10 nm (default: what IN covers)")
        ->type_name("N")
        ->check(CLI::IsMember({31, 36}));
    command
        ->add_option("--spectral-names", arguments->conversion.spectralPrefix,
                     "of the fields of spectra, before the wavelength")
        ->type_name("PREFIX")
        ->capture_default_str()
        ->check(CLI::IsMember({"SPECTRAL_NM", "SPECTRAL_NM_", "SPECTRAL_", "SPEC_", "NM_", "nm"}));
    command
        ->add_option("--spectral-scale", arguments->conversion.spectralScale,
                     "what spectra have for the perfect diffuser; 100 are percent, with SPECTRAL_NORM")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::IsMember({1, 100}));
    command
        ->add_option_function<std::string>(
            "--separator",
            [arguments](const std::string& name) { arguments->separator = name == "blank" ? ' ' : '\t'; },
            "between the values of CGATS: tab (default) or blank")
        ->type_name("NAME")
        ->check(CLI::IsMember({"tab", "blank"}));
    command
        ->add_option("--rgb-maximum", arguments->rgbMaximum,
                     "what RGB values reach, for CxF3 (default: DEVICE_MAXIMUM, or 255)")
        ->type_name("N")
        ->check(CLI::Range(1, 65535));
    command
        ->add_option("--density-status", arguments->conversion.densityStatus,
                     "what the file's densities are; CxF3 has no others")
        ->type_name("STATUS")
        ->check(CLI::IsMember({"A", "E", "I", "M", "T", "DIN", "Spectral"}));
    arguments->colours.AddTo(*command);
    command->add_flag("--plain", arguments->conversion.plain,
                      "leave out where patches lie and how they were read: names, device values and colours alone");
    command->callback([&context, arguments] { RunConvert(*arguments, context.json); });
}

}  // namespace J4Tool
