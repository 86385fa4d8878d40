// What all commands share: the options that stand before the command, and the table, opened at first use.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/Library.h"
#include "tools/Session.h"
#include "tools/Units.h"

namespace J4Tool {

/// Refuses speeds and delays of which the library would send another value than the one that was given.
/// @throws ToolError
void RequireSendable(const std::string& key, const std::string& value);

class ToolContext {
public:
    bool isVirtual = false;
    std::string chartFile;              ///< on the virtual table; empty: bare paper
    std::optional<size_t> chartPage;    ///< of that chart; nothing: the first
    std::string libraryPath;            ///< empty: the usual places
    std::vector<std::string> settings;  ///< "KEY=VALUE", set before anything else
    bool json = false;
    Units::Unit unit = Units::Unit::Millimetre;

    Units GetUnits() const { return Units(unit); }

    /// Loads the library and sets what the options ask for; the table is not connected yet.
    /// @throws ToolError
    Session& Open();

    /// From here on Ctrl-C and its kind end the program between its steps. Open does it too.
    void KeepRequests() const;

    /// The library, once it is open.
    Library& GetLibrary() { return *library; }

private:
    std::optional<Library> library;
    std::unique_ptr<Session> session;  // goes before the library
};

}  // namespace J4Tool
