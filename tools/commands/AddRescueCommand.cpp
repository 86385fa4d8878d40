#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "src/Flash/j4TableFlashData.h"
#include "src/SerialUSB/TableLineSeams.h"
#include "tools/DateText.h"
#include "tools/Interrupt.h"
#include "tools/Json.h"
#include "tools/Question.h"
#include "tools/TableRescue.h"
#include "tools/Terminal.h"
#include "tools/ToolError.h"
#include "tools/commands/Commands.h"

namespace J4Tool {

namespace {

namespace FlashId = Kestrelon::DeviceDriver::J4T::FlashId;
namespace LowLevel = Kestrelon::DeviceDriver::J4T::LowLevel;
using Kestrelon::DeviceDriver::J4T::j4TableFlashData;

struct RescueArguments {
    std::string file;
    std::string table;
    bool yes = false;
};

/// The tables of the virtual bench, with the settings that were asked for.
void UseBench(ToolContext& context)
{
    for (const std::string& setting : context.settings) {
        if (!setting.starts_with("Simulator.")) {
            throw ToolError(
                ExitCode::Usage, "--option " + setting + " can't be given with rescue",
                "It works without the library; only the options of the virtual table mean something to it.");
        }
    }
    context.Open();
    const auto lines = reinterpret_cast<LowLevel::UsbLines* (*)()>(context.GetLibrary().BenchFunction("J4Bench_Lines"));
    if (lines == nullptr) {
        throw ToolError(ExitCode::Library, "the virtual table is of another version than the tool",
                        "Install tool and library of the same version.");
    }
    LowLevel::UseBench(*lines());
}

size_t PlaceOf(const std::string& wanted, const std::vector<std::string>& serials)
{
    std::string list;
    for (const std::string& serial : serials) {
        list += (list.empty() ? "" : ", ") + serial;
    }
    if (wanted.empty() && serials.size() == 1) {
        return 0;
    }
    const auto found = std::find(serials.begin(), serials.end(), wanted);
    if (found == serials.end()) {
        throw ToolError(
            ExitCode::Usage,
            wanted.empty() ? "there are several tables: " + list : "there is no table " + wanted + " among " + list,
            "Name one with --table.");
    }
    return static_cast<size_t>(found - serials.begin());
}

/// What a person knows a block by.
std::string Words(const Block& block)
{
    const j4TableFlashData data(block);
    std::string words = std::to_string(block.size()) + " bytes";
    const auto value = [&data](uint16_t id) { return std::to_string(data.GetProperty(id).AsLong()); };
    if (data.Contains(FlashId::YMin)) {
        words += ", work area x " + value(FlashId::XMin) + " to " + value(FlashId::XMax) + " mm, y " +
                 value(FlashId::YMin) + " to " + value(FlashId::YMax) + " mm";
    }
    if (data.Contains(FlashId::WhiteBaseTime)) {
        words += ", white base written " + DateText(value(FlashId::WhiteBaseTime));
    }
    return words;
}

void Run(ToolContext& context, const RescueArguments& arguments)
{
    context.KeepRequests();
    if (context.isVirtual) {
        UseBench(context);
    } else if (!context.settings.empty() || !context.libraryPath.empty()) {
        throw ToolError(ExitCode::Usage, "--option and --library can't be given with rescue",
                        "It works on the table without the library.");
    }
    const std::vector<std::string> serials = TableRescue::Tables();
    const size_t place = PlaceOf(arguments.table, serials);
    const std::string& serial = serials[place];
    const auto say = [&context](const std::string& text) {
        if (!context.json) {
            Print(stdout, "%s\n", text.c_str());
        }
    };
    const auto end = [&](const std::string& fault, const std::string& file) {
        if (context.json) {
            PrintJson({{"tableSerial", serial},
                       {"fault", fault.empty() ? Json(nullptr) : Json(fault)},
                       {"written", file.empty() ? Json(nullptr) : Json(file)}});
        }
    };
    TableRescue rescue(place);
    const std::string fault = rescue.Fault();
    if (fault.empty()) {
        say("Table " + serial + " has a valid configuration; nothing is written.");
        end("", "");
        return;
    }
    say("Table " + serial + " has no valid configuration: " + fault);
    if (serial.empty() && arguments.file.empty()) {
        throw ToolError(ExitCode::Usage, "the table does not tell its serial number, by which its copy is kept",
                        "Name the file: j4tavla rescue FILE.");
    }
    const std::string file = arguments.file.empty() ? SavedBlocks(context.isVirtual).FileOf(serial) : arguments.file;
    Block block;
    try {
        block = LoadBlock(file);
    } catch (ToolError& error) {
        if (arguments.file.empty()) {
            error.advice =
                "Nothing was saved here for this table: look on the other computers that it was used on, and name the "
                "file.";
        }
        throw;
    }
    say("To be written: " + file + " (" + Words(block) + ")");
    Interrupt::Check();
    if (!arguments.yes && !AskYesNo("Write it to table " + serial + "?")) {
        throw ToolError(ExitCode::NotConfirmed, "nothing was written", "Answer the question with yes, or use --yes.");
    }
    rescue.Write(block);
    say("It was written and reads back the same. Home the arm and calibrate before the next measurement.");
    end(fault, file);
    Interrupt::Check("ended; the configuration is written");
}

}  // namespace

void AddRescueCommand(CLI::App& app, ToolContext& context)
{
    const auto arguments = std::make_shared<RescueArguments>();
    CLI::App* command = app.add_subcommand(
        "rescue",
        "give a table its configuration back after a write of it was cut short: from the copy that is saved "
        "before each call that may write it");
    command->add_option("FILE", arguments->file, "another copy than the one that is saved for this table");
    command->add_option("--table", arguments->table, "serial number of the table, where there are several")
        ->type_name("SERIAL");
    command->add_flag("--yes", arguments->yes, "do not ask");
    command->callback([&context, arguments] { Run(context, *arguments); });
}

}  // namespace J4Tool
