// The command-line tool of the scanning table.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "Utilities/Tools/FilePath.h"
#include "tools/ExitCode.h"
#include "tools/Json.h"
#include "tools/OutputFile.h"
#include "tools/Platform.h"
#include "tools/StatusTable.h"
#include "tools/Terminal.h"
#include "tools/ToolError.h"
#include "tools/commands/Commands.h"

namespace {

using namespace J4Tool;

/// The arguments in the order that the parser takes them, which is backwards, with the two options whose value may be
/// left out told apart from those that have one: a file behind "--virtual" that is no command is the chart, and
/// "--corners" without numbers means by hand.
std::vector<std::string> Arguments(int argc, char** argv, const CLI::App& app)
{
    const auto isCommand = [&app](const std::string& word) {
        return !app.get_subcommands([&word](const CLI::App* command) { return command->get_name() == word; }).empty();
    };
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        const std::string next = i + 1 < argc ? argv[i + 1] : "";
        arguments.push_back(argv[i]);
        std::error_code error;
        if (arguments.back() == "--virtual" && !isCommand(next) &&
            std::filesystem::is_regular_file(Kestrelon::Utilities::Tools::PathOf(next), error)) {
            arguments.push_back("--chart");
        } else if (arguments.back() == "--corners" &&
                   (next.empty() || next.find_first_not_of("0123456789.,-+eE") != std::string::npos)) {
            arguments.back() = "--corners-by-hand";
        }
    }
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

std::string Footer()
{
    std::string text = "Exit codes:\n";
    for (const ExitCodeText& entry : ExitCodes) {
        const std::string code = std::to_string(static_cast<int>(entry.code));
        text += std::string(5 - code.size(), ' ') + code + "  " + entry.meaning + "\n";
    }
    return text;
}

void AddSharedOptions(CLI::App& app, ToolContext& context)
{
    app.add_flag("--virtual", context.isVirtual, "[CHART]  work on the virtual table, with this chart on its bed");
    app.add_option("--chart", context.chartFile, "the chart on the bed of the virtual table")
        ->type_name("CHART")
        ->needs("--virtual");
    app.add_option("--library", context.libraryPath, "take the table's library from this file or folder")
        ->type_name("PATH");
    app.add_option("--option", context.settings, "set an option of the library first; may stand several times")
        ->type_name("KEY=VALUE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option_function<std::string>(
           "--unit",
           [&context](const std::string& name) {
               context.unit = name == "inch" ? Units::Unit::Inch : Units::Unit::Millimetre;
           },
           "unit of places and lengths (default mm)")
        ->type_name("UNIT")
        ->check(CLI::IsMember({"mm", "inch"}));
    app.add_flag("--json", context.json, "one JSON object a line instead of text for people");
}

void Report(const ToolError& error, bool json)
{
    if (json) {
        Json line = {{"error", error.what()}, {"exitCode", static_cast<int>(error.code)}};
        if (error.status != 0) {
            line.update({{"status", error.status}, {"statusName", FindStatus(error.status).name}});
        }
        line["advice"] = error.advice;
        PrintJson(line, stderr);
        return;
    }
    Print(stderr, "j4tavla: %s\n", error.what());
    if (error.status != 0) {
        Print(stderr, "  %s\n", StatusText(error.status).c_str());
    }
    if (!error.advice.empty()) {
        Print(stderr, "  %s\n", error.advice.c_str());
    }
}

/// A failure of the parser's. Before it has read "--json", which may be what comes behind the fault, only the words
/// themselves tell.
int EndParsing(const CLI::ParseError& error, const CLI::App& app, const std::vector<std::string>& words)
{
    if (error.get_exit_code() == 0) {
        return app.exit(error);
    }
    if (std::find(words.begin(), words.end(), "--json") != words.end()) {
        Report(ToolError(ExitCode::Usage, error.what(), "See 'j4tavla --help'."), true);
    } else {
        std::ostringstream out;
        std::ostringstream errors;
        app.exit(error, out, errors);
        Print(stderr, "%s", errors.str().c_str());
    }
    return static_cast<int>(ExitCode::Usage);
}

}  // namespace

int main(int argc, char** argv)
{
    Platform::AddLibraryFolder(Platform::ProgramFolder());
    Platform::PrepareConsole();
    ToolContext context;
    CLI::App app("Measures printed charts with the J4 Tavla scanning table.", "j4tavla");
    app.require_subcommand(1);
    app.fallthrough();
    app.allow_windows_style_options(false);  // a path may begin with a slash everywhere
    app.set_help_all_flag("--help-all", "print the help of all commands and exit");
    app.set_version_flag("--version", "j4tavla " TOOL_VERSION, "print the version and exit");
    app.footer(Footer());
    AddSharedOptions(app, context);
    AddInfoCommand(app, context);
    AddChartCommand(app, context);
    AddScanCommand(app, context);
    AddJoinCommand(app, context);
    AddAlignCommand(app, context);
    AddSpotCommand(app, context);
    AddMotionCommands(app, context);
    AddOptionCommands(app, context);
    AddWhitebaseCommand(app, context);
    AddRescueCommand(app, context);
    AddJudgeCommand(app, context);
    AddConvertCommand(app, context);
    AddReportCommand(app, context);
    AddSeriesCommands(app, context);
    AddTrendCommand(app, context);
    AddTraceCommand(app, context);
    const std::vector<std::string> words = Arguments(argc, argv, app);
    try {
        try {
            app.parse(std::vector<std::string>(words));
        } catch (const CLI::ParseError& error) {
            const int code = EndParsing(error, app, words);
            FlushStandardOutput();
            return code;
        }
        FlushStandardOutput();
        return static_cast<int>(ExitCode::Done);
    } catch (const ToolError& error) {
        Report(error, context.json);
        return static_cast<int>(error.code);
    } catch (const std::exception& error) {
        Report(ToolError(ExitCode::Unexpected, error.what(), "This is a fault of the tool; please report it."),
               context.json);
        return static_cast<int>(ExitCode::Unexpected);
    }
}
