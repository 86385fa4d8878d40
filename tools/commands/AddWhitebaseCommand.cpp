#include <cstdio>
#include <ctime>
#include <memory>
#include <nlohmann/json.hpp>

#include "chart/colour/Spectrum.h"
#include "tools/DateText.h"
#include "tools/Interrupt.h"
#include "tools/Json.h"
#include "tools/OutputFile.h"
#include "tools/Question.h"
#include "tools/Terminal.h"
#include "tools/ToolError.h"
#include "tools/WhiteBaseFile.h"
#include "tools/commands/Commands.h"

namespace J4Tool {

namespace {

struct WhitebaseArguments {
    std::string write;
    std::string save;
    bool yes = false;
    bool force = false;
};

/// @param backup  where the one before is saved; empty where there was none
void Show(ToolContext& context, const Session::Spectrum& whiteBase, const std::string& date, const std::string& backup)
{
    if (context.json) {
        PrintJson({{"whiteBaseDate", date},
                   {"whiteBase", JsonNumbers(whiteBase)},
                   {"backup", backup.empty() ? Json(nullptr) : Json(backup)}});
        return;
    }
    Print(stdout, "White base written %s\n", date.c_str());
    using J4Chart::FirstWavelength;
    using J4Chart::WavelengthStep;
    for (size_t band = 0; band < whiteBase.size(); ++band) {
        Print(stdout, "%d nm  %.5f\n", FirstWavelength + WavelengthStep * static_cast<int>(band),
              static_cast<double>(whiteBase[band]));
    }
}

void Run(ToolContext& context, const WhitebaseArguments& arguments)
{
    // A broken file must be found before anything is touched.
    Session::Spectrum next{};
    if (!arguments.write.empty()) {
        next = LoadWhiteBase(arguments.write);
    }
    if (!arguments.save.empty()) {
        OutputFile(arguments.save, arguments.force, {arguments.write});
    }
    Session& session = context.Open();
    const Session::Spectrum present = session.WhiteBase();
    const std::string date = DateText(session.GetOption("J4TLastWhiteBaseTransferTime"));
    const std::string serial = session.GetOption("J4TSerialNumber");
    if (!arguments.save.empty()) {
        SaveWhiteBase(arguments.save, present, date, serial);
    }
    if (arguments.write.empty()) {
        Show(context, present, date, "");
        return;
    }
    const std::string backup = "whitebase-" + serial + "-" + DateForFileName(std::time(nullptr)) + ".cgats";
    SaveWhiteBase(backup, present, date, serial);
    const auto say = [&context](const std::string& text) {
        if (!context.json) {
            Print(stderr, "%s\n", text.c_str());
        }
    };
    say("The present white base is saved in " + backup);
    if (!arguments.yes && !AskYesNo("Replace the white base of table " + serial + "?")) {
        throw ToolError(ExitCode::NotConfirmed, "the white base was not replaced",
                        "Answer the question with yes, or use --yes.");
    }
    session.WriteWhiteBase(next);
    Show(context, session.WhiteBase(), DateText(session.GetOption("J4TLastWhiteBaseTransferTime")), backup);
    say("Home the arm and calibrate before the next measurement.");
    Interrupt::Check("ended; the new white base is written");
}

}  // namespace

void AddWhitebaseCommand(CLI::App& app, ToolContext& context)
{
    const auto arguments = std::make_shared<WhitebaseArguments>();
    CLI::App* command = app.add_subcommand("whitebase", "show the reflectance of the white tile that the table holds");
    command->add_option("--save", arguments->save, "save it to this file");
    command->add_flag("--force", arguments->force, "replace the file of --save if it exists");
    command->add_option("--write", arguments->write,
                        "transfer a new one from this file, after the old one is saved to a dated file in the present "
                        "folder");
    command->add_flag("--yes", arguments->yes, "do not ask before --write");
    command->callback([&context, arguments] { Run(context, *arguments); });
}

}  // namespace J4Tool
