#include "tools/trace/WireCommands.h"

#include <algorithm>
#include <charconv>
#include <numeric>

#include "src/Communication/j4TableComFlash.h"
#include "src/SerialUSB/UsbBridge.h"
#include "src/TableFacts.h"
#include "tools/FixedText.h"
#include "trace/WireText.h"

namespace J4Tool {

namespace Wire = Kestrelon::DeviceDriver::J4T::Communication;
namespace Commands = Wire::Commands;
namespace UsbBridge = Kestrelon::DeviceDriver::J4T::LowLevel::UsbBridge;

namespace {

using Unit = WireField::Unit;

const std::vector<WireField> Place = {{"x", 4, Unit::Tenths}, {"y", 4, Unit::Tenths}};
const std::vector<WireField> Target = {{"x", 4, Unit::Tenths}, {"y", 4, Unit::Tenths}, {"speed", 4, Unit::Speed}};
const std::vector<WireField> Sectors = {{"first sector", 1, Unit::Hexadecimal}, {"last sector", 1, Unit::Hexadecimal}};
const std::vector<WireField> Unused2 = {{"not used", 2, Unit::Hexadecimal}};

struct MotionError {
    int error;
    const char* words;
    bool isOfMotion;
    bool isOfInitialize;
};

constexpr MotionError MotionErrors[] = {
    {1, "position out of range", true, true},
    {2, "speed out of range", true, false},
    {3, "maximum accuracy exceeded", true, true},
    {4, "current limit reached", true, true},
    {5, "index marks not found", false, true},
    {6, "interrupted", false, true},
    {7, "invalid command in current mode", false, true},
    {8, "no configuration data", true, true},
    {9, "invalid configuration data", true, true},
    {10, "wrong hardware", false, true},
};

struct BridgeRequest {
    unsigned request;
    unsigned value;
    const char* words;
};

constexpr BridgeRequest BridgeRequests[] = {
    {UsbBridge::Reset, UsbBridge::ResetAll, "reset the serial side"},
    {UsbBridge::Reset, UsbBridge::PurgeReceived, "purge what was received"},
    {UsbBridge::Reset, UsbBridge::PurgeSent, "purge what is to be sent"},
    {UsbBridge::BaudRate, UsbBridge::TableDivisor, "baud-rate divisor 52"},
    {UsbBridge::LineFormat, UsbBridge::EightBitsNoParityOneStop, "8 data bits, no parity, 1 stop bit"},
};

/// The names and widths of fields as the document has them: "x 4, y 4, speed 4"; neighbours of one name stand together.
std::string FieldsText(const std::vector<WireField>& fields)
{
    std::string text;
    for (size_t i = 0; i < fields.size();) {
        size_t next = i + 1;
        while (next < fields.size() && std::string_view(fields[next].name) == fields[i].name) {
            ++next;
        }
        text += text.empty() ? "" : ", ";
        text += next - i > 1 ? std::to_string(next - i) + " times " : "";
        text += fields[i].name;
        text += fields[i].unit == Unit::Bytes ? ", two digits each" : " " + std::to_string(fields[i].width);
        i = next;
    }
    return text;
}

std::string ModeText(int64_t status)
{
    switch (status & 7) {
    case 0:
    case 1:
        return "the drives are not ready";
    case 4:
        return "the arm is held";
    default:
        return "ready";
    }
}

std::string ValueText(const WireField& field, int64_t value)
{
    switch (field.unit) {
    case Unit::Tenths:
        return FixedText(static_cast<double>(value) / Kestrelon::DeviceDriver::J4T::TenthsPerMillimetre, 1) + " mm";
    case Unit::Milliseconds:
        return std::to_string(value) + " ms";
    case Unit::Speed:
        return std::to_string(value) + " mm/s";
    case Unit::Hexadecimal:
        return J4Trace::ToHex(static_cast<uint32_t>(value), static_cast<int>(field.width));
    case Unit::Mode:
        return std::to_string(value & 7) + " (" + ModeText(value) + ")";
    case Unit::Bytes:
        return std::to_string(value);
    default:
        return std::to_string(value);
    }
}

std::string NoPoint(std::string text)
{
    if (!text.empty() && text.back() == '.') {
        text.pop_back();
    }
    return text;
}

}  // namespace

const std::vector<WireCommand>& WireCommand::All()
{
    // clang-format off
    static const auto& all = *new std::vector<WireCommand>{
        {Commands::GetStatus, "GetStatus", "status", {}, {}, {{"mode", 2, Unit::Mode}, {"byte", 2, Unit::Hexadecimal}, {"byte", 2, Unit::Hexadecimal}}, "the mode is the low three bits"},
        {Commands::GetFirmware, "GetFirmware", "firmware", {}, {}, {{"number", 4, Unit::Hexadecimal}, {"version", 4, Unit::Hexadecimal}, {"number", 2, Unit::Hexadecimal}}},
        {Commands::GetTableMetrics, "GetTableMetrics", "what the table has done in its life, and since service", {}, {}, {{"reference runs", 8}, {"movements", 8}, {"distance", 8}, {"resets", 8}, {"reference runs since service", 8}, {"movements since service", 8}, {"distance since service", 8}}},
        {Commands::GetRampData, "GetRampData", "ramps of the motion, from its start", {}, {}, {{"end of acceleration", 8, Unit::Milliseconds}, {"start of deceleration", 8, Unit::Milliseconds}, {"speed", 4, Unit::Speed}}},
        {Commands::GetControllerDeviation, "GetControllerDeviation", "deviation of the controllers", {}, {}, std::vector<WireField>(6, {"number", 4, Unit::Signed}), "with sign"},
        {Commands::GetControllerInfo, "GetControllerInfo", "the controller", {}, {}, {{"number", 4}, {"number", 4}}},
        {Commands::J4CurrentInterrupt, "J4CurrentInterrupt", "detection of the instrument's current", {"cleared", "armed"}, {}, Unused2},
        {Commands::WasJ4CurrentMeasured, "WasJ4CurrentMeasured", "has the armed detection seen a measurement", {}, {}, {{"seen", 2}}, "not 0: yes"},
        {Commands::SetScanDelay, "SetScanDelay", "pause before a scan's motion", {}, {{"delay", 4, Unit::Milliseconds}}, {{"not used", 4, Unit::Hexadecimal}}},
        {Commands::ElectrostaticFoil, "ElectrostaticFoil", "foil", {"off", "on"}, {}, Unused2},
        {Commands::ElectrostaticFoilButton, "ElectrostaticFoilButton", "button of the foil", {"disabled", "enabled"}, {}, Unused2},
        {Commands::ElectrostaticFoilState, "ElectrostaticFoilState", "state of the foil", {}, {}, {{"state", 2}}, "bit 0 set: foil on; bit 1 set: button **disabled**"},
        {Commands::Initialize, "Initialize", "the drives come up", {}, {}, {}, "two stages"},
        {Commands::GoHome, "GoHome", "reference run to the white tile", {}, {}, {}, "two stages"},
        {Commands::ConfigDataBlockStatus, "ConfigDataBlockStatus", "configuration block", {"the first", "the second", "to read", "where to write"}, {}, {{"id", 2, Unit::Hexadecimal}, {"address", 4, Unit::Hexadecimal}, {"number", 8}}},
        {Commands::MoveStart, "MoveStart", "move", {"the sensor", "the visor", "the sensor, as a scan", "the visor, as a scan"}, Target, {}, "two stages; of a scan the wait is 2 s more than travel and delay"},
        {Commands::GetPosition, "GetPosition", "position", {"of the sensor", "of the visor"}, {}, Place, "with sign"},
        {Commands::Reset, "Reset", "the controller starts anew; the library waits 1 s", {}, {}, {}},
        {Commands::HoldPosition, "HoldPosition", "motors", {"let go", "hold"}, {}, {}},
        {Commands::PrepareSector, "PrepareSector", "before each erasing and copying", {}, Sectors, {}},
        {Commands::CopyRamToFlash, "CopyRamToFlash", "program the flash", {}, {{"flash address", 5, Unit::Hexadecimal}, {"RAM address", 4, Unit::Hexadecimal}, {"size", 1, Unit::Hexadecimal}}, {}, "sizes: `3` 512, `4` 1024, `6` 4096 bytes"},
        {Commands::EraseSector, "EraseSector", "erase", {}, Sectors, {}},
        {Commands::ReadMemory, "ReadMemory", "read the memory, 256 bytes at most", {}, {{"address", 8, Unit::Hexadecimal}, {"count", 4}}, {{"bytes", 0, Unit::Bytes}}},
        {Commands::WriteToRam, "WriteToRam", "load the RAM buffer", {}, {{"RAM address", 4, Unit::Hexadecimal}, {"size", 1, Unit::Hexadecimal}, {"bytes", 0, Unit::Bytes}}, {}, "sizes: `1` 128, `2` 256 bytes"},
        {Commands::Unlock, "Unlock", "unlock a part of the flash, six decimal digits", {}, {{"id", 6, Unit::Decimal}}, {}},
        {Commands::Lock, "Lock", "lock the flash", {}, {}, {}},
    };
    // clang-format on
    return all;
}

bool WireCommand::HasSubCommand() const { return definition.subCommand != Wire::NoSubCommand; }

bool WireCommand::IsLong() const { return std::string_view(remark).starts_with("two stages"); }

std::string WireCommand::Document()
{
    std::string text;
    for (const WireCommand& command : All()) {
        const auto frame = [&](size_t selector) {
            std::string name = std::string("`;") + static_cast<char>(command.definition.letter);
            if (command.HasSubCommand()) {
                name += static_cast<char>(command.definition.subCommand + selector);
            }
            return name + "`";
        };
        const size_t count = command.selectors.size();
        text += "| " + frame(0) + (count > 2 ? " to " : count == 2 ? ", " : "") + (count > 1 ? frame(count - 1) : "");
        text += std::string(" | ") + command.name + " | " + command.meaning;
        for (size_t i = 0; i < count; ++i) {
            text +=
                (i == 0 ? ": " : ", ") + std::string("`") + static_cast<char>('0' + i) + "` " + command.selectors[i];
        }
        text += " | " + FieldsText(command.request) + (command.request.empty() ? "| " : " | ");
        std::string reply = FieldsText(command.reply);
        if (*command.remark != '\0') {
            reply += (reply.empty() ? "" : "; ") + std::string(command.remark);
        }
        text += reply + (reply.empty() ? "|" : " |");
        const uint32_t wait = command.definition.answerTimeout;
        text += wait == Wire::DefaultTimeout ? " |\n" : " " + std::to_string(wait / 1000) + " s |\n";
    }
    return text;
}

std::string WireCommand::ErrorDocument()
{
    std::string text;
    for (const MotionError& entry : MotionErrors) {
        text += "| " + std::to_string(entry.error) + (entry.error == 10 ? " (`a`)" : "") + " |" +
                (entry.isOfMotion ? std::string(" ") + entry.words + " |" : " |") +
                (entry.isOfInitialize ? std::string(" ") + entry.words + " |\n" : " |\n");
    }
    return text;
}

WireFrame::WireFrame(std::string_view text)
{
    if (text.empty() || (text[0] != ';' && text[0] != ':')) {
        return;
    }
    isReply = text[0] == ':';
    hasChecksum = text.size() >= 4 && J4Trace::HasWireChecksum(text);
    if (text.size() < 4) {
        return;
    }
    std::string_view content = text.substr(1, text.size() - 3);
    if (isReply) {
        acknowledge = content[0];
        content.remove_prefix(1);
    }
    Read(content);
}

void WireFrame::Read(std::string_view content)
{
    const auto& all = WireCommand::All();
    const auto found = std::ranges::find_if(all, [&](const WireCommand& candidate) {
        if (content.empty() || content[0] != static_cast<char>(candidate.definition.letter)) {
            return false;
        }
        const size_t count = std::max<size_t>(candidate.selectors.size(), 1);
        const int first = candidate.definition.subCommand;
        return !candidate.HasSubCommand() ||
               (content.size() > 1 && content[1] >= first && content[1] < first + static_cast<int>(count));
    });
    if (found == all.end()) {
        return;
    }
    command = &*found;
    selector = command->HasSubCommand() ? static_cast<size_t>(content[1] - command->definition.subCommand) : 0;
    content.remove_prefix(command->HasSubCommand() ? 2 : 1);
    if (!isReply) {
        ReadFields(command->request, content);
        return;
    }
    if (acknowledge != '$') {
        isWhole = true;
        return;
    }
    if (content.empty()) {
        return;
    }
    const char digit = content[0];
    error = digit >= '0' && digit <= '9' ? digit - '0' : (digit | 0x20) - 'a' + 10;
    if (error == 0) {
        ReadFields(command->reply, content.substr(1));
    } else {
        isWhole = true;
    }
}

void WireFrame::ReadFields(std::span<const WireField> fields, std::string_view data)
{
    size_t left = std::accumulate(fields.begin(), fields.end(), size_t{0},
                                  [](size_t sum, const WireField& field) { return sum + field.width; });
    for (const WireField& field : fields) {
        if (field.unit == Unit::Bytes) {
            values.push_back(static_cast<int64_t>(data.size() / 2));
            isWhole = data.size() % 2 == 0;
            return;
        }
        // A negative coordinate of a request fills eight digits.
        const bool isLong = field.unit == Unit::Tenths && data.size() >= left + 4 && data.starts_with("ffff");
        const size_t width = isLong ? 8 : field.width;
        if (data.size() < width) {
            return;
        }
        const std::string_view digits = data.substr(0, width);
        uint32_t value = 0;
        const int base = field.unit == Unit::Decimal ? 10 : 16;
        const auto [stop, failure] = std::from_chars(digits.data(), digits.data() + width, value, base);
        if (failure != std::errc() || stop != digits.data() + width) {
            return;
        }
        const bool hasSign = field.unit == Unit::Tenths || field.unit == Unit::Signed;
        values.push_back(isLong ? static_cast<int32_t>(value) : hasSign ? static_cast<int16_t>(value) : int64_t{value});
        data.remove_prefix(width);
        left -= field.width;
    }
    isWhole = data.empty();
}

bool WireFrame::IsFailure() const
{
    return !hasChecksum || command == nullptr || !isWhole || error != 0 || acknowledge == '&' || acknowledge == '#';
}

std::string WireFrame::ErrorText() const
{
    const auto letter = static_cast<char>(command->definition.letter);
    std::string words;
    if (letter == 'm' || letter == 'i') {
        const auto known = std::ranges::find(MotionErrors, error, &MotionError::error);
        words = known == std::end(MotionErrors) ? "" : known->words;
    } else if (letter == 'k') {
        words = NoPoint(Wire::j4TableComFlash::GetConfigDataErrorString(static_cast<uint8_t>(error)));
    } else if (letter == 'u') {
        words = NoPoint(Wire::j4TableComFlash::GetFlashErrorString(static_cast<uint8_t>(error)));
    } else if (letter == 'p') {
        words = error == 1 ? "no configuration block" : error == 2 ? "a logical error in the configuration block" : "";
    }
    return "error " + std::to_string(error) + (words.empty() ? "" : ": " + words);
}

std::string WireFrame::Text() const
{
    std::string text;
    const std::span<const WireField> fields =
        command == nullptr ? std::span<const WireField>() : (isReply ? command->reply : command->request);
    if (command == nullptr) {
        text = "no known command";
    } else if (isReply) {
        text = std::string(command->name) + ": ";
        if (acknowledge == '!') {
            text += "accepted";
        } else if (acknowledge == '&') {
            text += "refused: unknown command or bad checksum";
        } else if (acknowledge == '#') {
            text += "busy";
        } else if (acknowledge != '$') {
            text += "unknown acknowledge";
        } else if (error != 0) {
            text += ErrorText();
        } else if (fields.empty() || std::string_view(fields[0].name) == "not used") {
            text += "done";
        }
    } else {
        text = std::string(command->name) + ": " + command->meaning;
        text += command->selectors.empty() ? "" : std::string(" ") + command->selectors[selector];
        text += fields.empty() ? "" : ", ";
    }
    bool isFirst = true;
    for (size_t i = 0; i < values.size(); ++i) {
        if (std::string_view(fields[i].name) != "not used") {
            text += (isFirst ? "" : ", ") + std::string(fields[i].name) + " " + ValueText(fields[i], values[i]);
            isFirst = false;
        }
    }
    if (command != nullptr && !isWhole) {
        text += ", data of another length or form";
    }
    return hasChecksum ? text : text + ", wrong checksum";
}

std::string BridgeRequestText(unsigned request, unsigned value)
{
    const auto known = std::ranges::find_if(BridgeRequests, [&](const BridgeRequest& candidate) {
        return candidate.request == request && candidate.value == value;
    });
    return known == std::end(BridgeRequests) ? std::string() : std::string(known->words);
}

}  // namespace J4Tool
