#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/Interrupt.h"
#include "tools/Json.h"
#include "tools/Terminal.h"
#include "tools/ToolError.h"
#include "tools/commands/Commands.h"

namespace J4Tool {

namespace {

struct OptionArguments {
    std::string key;
    std::string value;
};

void PrintValue(ToolContext& context, const std::string& key, const std::string& value)
{
    if (context.json) {
        PrintJson({{"key", key}, {"value", value}});
    } else {
        Print(stdout, "%s\n", value.c_str());
    }
}

}  // namespace

void AddOptionCommands(CLI::App& app, ToolContext& context)
{
    const auto arguments = std::make_shared<OptionArguments>();

    CLI::App* get = app.add_subcommand("get", "show the value of an option");
    get->add_option("KEY", arguments->key, "key of the option, for instance J4TScanSpeed")->required();
    get->callback([&context, arguments] {
        const std::string value = context.Open().GetOption(arguments->key);
        // The instrument's library answers a key that it does not know with nothing and no failure.
        if (value.empty() && !arguments->key.starts_with("J4T")) {
            throw ToolError(ExitCode::Device,
                            "the option " + arguments->key + " has no value, or there is no such option",
                            "Check the key; docs/options.md lists those of the table.");
        }
        PrintValue(context, arguments->key, value);
        Interrupt::Check();
    });

    CLI::App* set = app.add_subcommand("set",
                                       "write an option and show what it reads then. Settings of the library "
                                       "last as long as the program: for another command use --option");
    set->add_option("KEY", arguments->key, "key of the option")->required();
    set->add_option("VALUE", arguments->value, "its new value")->required();
    set->callback([&context, arguments] {
        RequireSendable(arguments->key, arguments->value);
        Session& session = context.Open();
        session.SetOption(arguments->key, arguments->value);
        PrintValue(context, arguments->key, session.TryOption(arguments->key));
        Interrupt::Check();
    });
}

}  // namespace J4Tool
