#include <memory>
#include <nlohmann/json.hpp>

#include "tools/Json.h"
#include "tools/OutputFile.h"
#include "tools/Plural.h"
#include "tools/TableText.h"
#include "tools/Terminal.h"
#include "tools/commands/Commands.h"
#include "tools/make/JoinedPages.h"

namespace J4Tool {

namespace {

struct JoinArguments {
    std::vector<std::string> pages;
    std::string output;
    bool force = false;
};

void Join(const JoinArguments& arguments, bool json)
{
    const OutputFile output(arguments.output, arguments.force, arguments.pages);
    const JoinedPages joined(arguments.pages);
    const size_t patches = joined.Table().rows.size();
    output.Write(TableText(joined.Table(), "the pages can't be written as one file", "Correct their names."));
    if (output.IsStandardOutput()) {
        return;
    }
    if (json) {
        PrintJson({{"file", arguments.output}, {"pages", arguments.pages.size()}, {"patches", patches}});
        return;
    }
    Print(stdout, "%s of %s: %s\n", Plural(patches, "patch").c_str(), Plural(arguments.pages.size(), "page").c_str(),
          arguments.output.c_str());
}

}  // namespace

void AddJoinCommand(CLI::App& app, ToolContext& context)
{
    const auto arguments = std::make_shared<JoinArguments>();
    CLI::App* command = app.add_subcommand("join", "make one file of the measured pages of a chart");
    command
        ->add_option("MEASURED", arguments->pages,
                     "a measured file for each page, in their order: CGATS.17, CxF3 or CSV")
        ->required();
    command->add_option("-o,--output", arguments->output, "file to write, CGATS.17")->type_name("FILE")->required();
    command->add_flag("--force", arguments->force, "replace FILE if it exists");
    command->callback([&context, arguments] { Join(*arguments, context.json); });
}

}  // namespace J4Tool
