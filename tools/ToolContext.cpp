#include "tools/ToolContext.h"

#include "tools/ToolError.h"

namespace J4Tool {

Session& ToolContext::Open()
{
    if (session) {
        return *session;
    }
    for (const std::string& setting : settings) {
        if (setting.find('=') == std::string::npos) {
            throw ToolError(ExitCode::Usage, "'" + setting + "' is not of the form KEY=VALUE", "See 'j4tavla --help'.");
        }
    }
    library.emplace(isVirtual, libraryPath);
    session = std::make_unique<Session>(library->Functions());
    session->RequireInstrumentLibrary();
    if (!chartFile.empty()) {
        session->SetOption("Simulator.ChartFile", chartFile);
    }
    for (const std::string& setting : settings) {
        const size_t middle = setting.find('=');
        session->SetOption(setting.substr(0, middle), setting.substr(middle + 1));
    }
    return *session;
}

}  // namespace J4Tool
