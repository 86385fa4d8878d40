#include "tools/ToolContext.h"

#include "Utilities/Tools/FilePath.h"
#include "chart/cgats/CgatsFields.h"
#include "tools/Interrupt.h"
#include "tools/ToolError.h"

namespace J4Tool {

void RequireSendable(const std::string& key, const std::string& value)
{
    constexpr double largest = 65535.0;  // the table takes 16 bits, and the library sends only those
    double number = 0.0;
    for (const char* sent : {"J4TMoveSpeed", "J4TScanSpeed", "J4TScanDelay", "5010", "5011", "5012"}) {
        if (key == sent && J4Chart::ParseNumber(value, number) && (number < 0.0 || number > largest)) {
            throw ToolError(ExitCode::Usage, "the table can't take " + value + " for " + key,
                            "It takes whole numbers from 0 to 65535.");
        }
    }
}

void ToolContext::KeepRequests() const
{
    Interrupt::Install(json ? nullptr : "\nending: what is under way is finished first, then the table is let go\n");
}

Session& ToolContext::Open()
{
    if (session) {
        return *session;
    }
    for (const std::string& setting : settings) {
        if (setting.find('=') == std::string::npos) {
            throw ToolError(ExitCode::Usage, "'" + setting + "' is not of the form KEY=VALUE", "See 'j4tavla --help'.");
        }
        const size_t middle = setting.find('=');
        RequireSendable(setting.substr(0, middle), setting.substr(middle + 1));
    }
    KeepRequests();
    library.emplace(isVirtual, Kestrelon::Utilities::Tools::PathOf(libraryPath));
    session = std::make_unique<Session>(library->Functions());
    session->RequireInstrumentLibrary();
    session->KeepBlocks([blocks = SavedBlocks(library->IsVirtual())](const std::string& serial, const Block& block) {
        blocks.Keep(serial, block);
    });
    if (!chartFile.empty()) {
        if (chartPage) {
            session->SetOption("Simulator.ChartPage", std::to_string(*chartPage));
        }
        session->SetOption("Simulator.ChartFile", chartFile);
    }
    for (const std::string& setting : settings) {
        const size_t middle = setting.find('=');
        session->SetOption(setting.substr(0, middle), setting.substr(middle + 1));
    }
    return *session;
}

}  // namespace J4Tool
