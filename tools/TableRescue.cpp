#include "tools/TableRescue.h"

#include "Utilities/Exceptions/TableExceptions.h"
#include "src/Flash/j4TableFlashDataHandle.h"
#include "src/TableFacts.h"
#include "tools/Platform.h"
#include "tools/ToolError.h"

namespace J4Tool {

using Kestrelon::DeviceDriver::Generic::Configuration::Properties;
using Kestrelon::DeviceDriver::J4T::j4TableFlashData;
using Kestrelon::DeviceDriver::J4T::j4TableFlashDataHandle;
using Kestrelon::DeviceDriver::J4T::MostTables;
using Kestrelon::DeviceDriver::J4T::Communication::j4TableComFlash;
using Kestrelon::DeviceDriver::J4T::LowLevel::SerialUSB;

namespace {

/// Runs steps of the line protocol; their failures become the tool's.
template <class Steps>
auto OnLine(const std::string& what, const Steps& steps)
{
    try {
        return steps();
    } catch (const ToolError&) {
        throw;
    } catch (const CommunicationException& error) {
        throw ToolError(
            ExitCode::NotConnected, what + " failed: " + error.what(),
            "Check the table's power and USB cable, and that no other program uses it; then rescue it again.");
    } catch (const std::exception& error) {
        throw ToolError(ExitCode::Device, what + " failed: " + error.what(),
                        "Switch the table off and on, and rescue it again.");
    }
}

/// Empty for a table that does not tell it.
std::string SerialOf(SerialUSB& line)
{
    try {
        return line.SerialNumber();
    } catch (const CommunicationException&) {
        return {};
    }
}

}  // namespace

std::vector<std::string> TableRescue::Tables()
{
    return OnLine("looking for tables", [] {
        std::vector<std::string> serials;
        SerialUSB line;
        for (uint16_t place = 0; place < MostTables; ++place) {
            try {
                line.OpenDevice(place);
            } catch (const CommunicationException&) {
                if (place == 0) {
                    throw;
                }
                break;
            }
            serials.push_back(SerialOf(line));
        }
        return serials;
    });
}

TableRescue::TableRescue(size_t place)
{
    manager = OnLine("opening the table", [place] {
        return Kestrelon::Utilities::Tools::SmartPointer<Manager>(new Manager(static_cast<uint16_t>(place)));
    });
}

std::string TableRescue::Fault()
{
    return OnLine("asking the table", [this] {
        uint8_t id = 0;
        uint32_t address = 0;
        int32_t number = 0;
        const uint8_t error =
            manager->GetFlash()->ConfigDataBlockStatus(j4TableComFlash::BlockToRead, id, address, number, false);
        if (error != 0) {
            return j4TableComFlash::GetConfigDataErrorString(error);
        }
        try {
            j4TableFlashDataHandle(manager).GetCachedFlashData();
        } catch (const EEPromException& fault) {
            return std::string(fault.what());
        }
        manager->GetFlash()->Lock();  // a write may have been cut short of it
        return std::string();
    });
}

void TableRescue::Write(const Block& block)
{
    OnLine("writing the configuration", [&] {
        const Platform::SignalShield shield;
        j4TableFlashData data(block);
        j4TableFlashDataHandle(manager).WriteToFlash(data);
        const j4TableFlashData written = j4TableFlashDataHandle(manager).GetCachedFlashData();
        if (written.Dump(Properties::FormatValuesOnly) != data.Dump(Properties::FormatValuesOnly)) {
            throw ToolError(ExitCode::Device, "the table does not hold what was written", "Rescue it again.");
        }
    });
}

}  // namespace J4Tool
