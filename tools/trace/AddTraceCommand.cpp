#include <cstdio>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/FixedText.h"
#include "tools/Json.h"
#include "tools/OutputFile.h"
#include "tools/Plural.h"
#include "tools/Terminal.h"
#include "tools/ToolError.h"
#include "tools/commands/Commands.h"
#include "tools/trace/Dialogue.h"
#include "tools/trace/TracePage.h"

namespace J4Tool {

namespace {

struct TraceArguments {
    std::string file;
    std::string output;
    bool isWhole = false;
    bool force = false;
};

void PrintDialogueLine(const DialogueLine& line)
{
    std::string seconds = FixedText(static_cast<double>(line.time) * 1e-6, 3);
    seconds.insert(0, seconds.size() < 10 ? 10 - seconds.size() : 0, ' ');
    Print(stdout, "%c%s  %s%s\n", line.isFailure ? '!' : ' ', seconds.c_str(),
          std::string(2 * static_cast<size_t>(line.depth), ' ').c_str(), line.text.c_str());
}

void PrintEvent(const TraceEvent& event)
{
    const DialogueLine line = Dialogue::LineOf(event);
    PrintJson({{"time", event.time},
               {"kind", event.entry.KindName()},
               {"table", event.entry.table},
               {"name", event.entry.name},
               {"failure", line.isFailure},
               {"text", line.text}});
}

void TellCut(const std::string& cut)
{
    if (!cut.empty()) {
        Print(stdout, "The file ends within %s.\n", cut.c_str());
    }
}

void ShowTrace(const TraceArguments& arguments, bool json)
{
    if (json) {
        const std::string cut = ReadTrace(arguments.file, PrintEvent);
        if (!cut.empty()) {
            PrintJson({{"cut", cut}});
        }
        return;
    }
    Dialogue dialogue(PrintDialogueLine, arguments.isWhole);
    const std::string cut = ReadTrace(arguments.file, [&dialogue](const TraceEvent& event) { dialogue.Add(event); });
    dialogue.End();
    TellCut(cut);
}

void DrawTrace(const TraceArguments& arguments, bool json)
{
    const OutputFile output(arguments.output, arguments.force, {arguments.file});
    const TracePage page(arguments.file, arguments.isWhole);
    output.Write(page.Text());
    if (output.IsStandardOutput()) {
        return;
    }
    if (json) {
        PrintJson({{"page", arguments.output},
                   {"events", page.Events()},
                   {"motions", page.Motions()},
                   {"scans", page.Scans()},
                   {"failures", page.Failures()},
                   {"cut", page.Cut().empty() ? Json(nullptr) : Json(page.Cut())}});
        return;
    }
    const std::string failures = Plural(page.Failures(), "failure") +
                                 (page.Failures() > 0 ? std::string(" (") + TracePage::FailuresRemark + ")" : "");
    Print(stdout, "%s, %s of them scans, %s\n", Plural(page.Motions(), "motion").c_str(),
          std::to_string(page.Scans()).c_str(), failures.c_str());
    TellCut(page.Cut());
    Print(stdout, "The page is in %s\n", arguments.output.c_str());
}

}  // namespace

void AddTraceCommand(CLI::App& app, ToolContext& context)
{
    const auto arguments = std::make_shared<TraceArguments>();
    CLI::App* trace = app.add_subcommand(
        "trace",
        "show what was said between application, instrument and table: a trace of the virtual table, or a capture");
    trace
        ->add_option("FILE", arguments->file,
                     "what the option Simulator.TraceFile wrote, or a pcap file of Linux' usbmon; times are seconds, "
                     "failures begin with '!'")
        ->required();
    trace
        ->add_option(
            "-o,--output", arguments->output,
            "a page instead, HTML: the bed with the arm's way, rows, samples and failures, to be played; needs "
            "no other file and no network")
        ->type_name("PAGE");
    trace->add_flag("--all", arguments->isWhole, "a line for each call also where many are alike");
    trace->add_flag("--force", arguments->force, "replace PAGE if it exists");
    trace->callback([&context, arguments] {
        if (arguments->output.empty()) {
            ShowTrace(*arguments, context.json);
        } else {
            DrawTrace(*arguments, context.json);
        }
    });
}

}  // namespace J4Tool
