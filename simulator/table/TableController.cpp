#include "simulator/table/TableController.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "trace/WireText.h"

namespace J4Bench {

namespace {

using J4Trace::FromHex;
using J4Trace::HasWireChecksum;
using J4Trace::ToHex;
using J4Trace::WireChecksum;
using FlashStatus = TableFlash::Status;

constexpr char StartByte = ';';
constexpr char EndByte = '\r';
constexpr size_t LongestLine = 1024;

constexpr char Accepted = '!';
constexpr char Rejected = '&';
constexpr char Busy = '#';
constexpr char Data = '$';

// Microseconds.
constexpr int64_t ProcessingTime = 500;
constexpr int64_t RebootTime = 300000;
constexpr int64_t EraseTime = 400000;
constexpr int64_t ProgramTime = 1000;

constexpr Point ParkPosition{2000.0, 2000.0};  // where a table is left to be switched on

// What the table has done before it came to this bench.
constexpr uint32_t FormerHomeMovements = 412;
constexpr uint32_t FormerMovements = 9134;
constexpr uint32_t FormerResets = 37;
constexpr uint32_t FormerDistance = 1523000;  // mm

constexpr uint32_t BootLoaderVersion = 0x0104;
constexpr uint32_t FirmwareVersion = 0x0231;
constexpr uint32_t HardwareVersion = 0x12;

constexpr int AnyLength = -1;

/// Cuts data into hexadecimal fields of these widths; nothing when it doesn't fit exactly.
template <size_t Count>
std::optional<std::array<uint32_t, Count>> Fields(std::string_view data, const size_t (&widths)[Count])
{
    std::array<uint32_t, Count> values{};
    for (size_t i = 0; i < Count; ++i) {
        const std::optional<uint32_t> value = FromHex(data.substr(0, widths[i]));
        if (data.size() < widths[i] || !value) {
            return std::nullopt;
        }
        values[i] = *value;
        data.remove_prefix(widths[i]);
    }
    return data.empty() ? std::optional(values) : std::nullopt;
}

/// A coordinate of a target, at the front of data: four digits, or eight when it is negative and the host's
/// field has grown. Takes it away from data.
double TakeCoordinate(std::string_view& data, bool mayBeLong)
{
    const bool isLong = mayBeLong && data.starts_with("ffff");
    const uint32_t value = FromHex(data.substr(0, isLong ? 8 : 4)).value_or(0);
    data.remove_prefix(isLong ? 8 : 4);
    return isLong ? static_cast<int32_t>(value) : static_cast<int16_t>(value);
}

/// Bytes behind the size character of the flash commands, 0 for a character without a size.
uint32_t BlockSize(uint32_t sizeCode)
{
    constexpr uint32_t sizes[] = {0, 128, 256, 512, 1024, 0, 4096};
    return sizeCode < std::size(sizes) ? sizes[sizeCode] : 0;
}

/// Status of an operation that writes the flash. The controller can't do it while it drives the motors.
template <class Operation>
FlashStatus Guarded(bool isComplete, const TableMotors& motors, Operation operation)
{
    if (!isComplete) {
        return FlashStatus::CommandLength;
    }
    return motors.IsRunning() ? FlashStatus::Busy : operation();
}

std::string HexText(std::span<const uint8_t> bytes)
{
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const uint8_t byte : bytes) {
        text += ToHex(byte, 2);
    }
    return text;
}

}  // namespace

struct TableController::Command {
    char letter;
    std::string_view subCommands;  ///< empty: the command has none
    int dataLength;                ///< of the request; AnyLength: the handler looks
    size_t replyLength;            ///< characters of data, which an error reply fills with zeros
    Handler handler;
    bool movesArm = false;
};

const TableController::Command TableController::Commands[] = {
    {'a', "0", 0, 6, &TableController::ReportStatus},
    {'a', "1", 0, 10, &TableController::ReportFirmware},
    {'a', "2", 0, 56, &TableController::ReportMetrics},
    {'a', "3", 0, 20, &TableController::ReportRamps},
    {'a', "4", 0, 24, &TableController::ReportDeviation},
    {'a', "5", 0, 8, &TableController::ReportControllerInfo},
    {'c', "01", 0, 2, &TableController::ArmCurrentDetection},
    {'c', "2", 0, 2, &TableController::ReportCurrentDetection},
    {'d', "1", 4, 4, &TableController::SetScanDelay},
    {'f', "01", 0, 2, &TableController::SwitchFoil},
    {'f', "23", 0, 2, &TableController::SwitchFoilButton},
    {'f', "4", 0, 2, &TableController::ReportFoil},
    {'i', "0", 0, 0, &TableController::Initialize, true},
    {'i', "1", 0, 0, &TableController::GoHome, true},
    {'k', "0123", 0, 14, &TableController::ReportConfiguration},
    {'m', "0123", AnyLength, 0, &TableController::Move, true},
    {'p', "01", 0, 8, &TableController::ReportPosition},
    {'r', "", 0, 0, &TableController::Reset},
    {'s', "01", 0, 0, &TableController::Hold},
    {'u', "0", AnyLength, 0, &TableController::PrepareSectors},
    {'u', "1", AnyLength, 0, &TableController::CopyRamToFlash},
    {'u', "2", AnyLength, 0, &TableController::EraseSectors},
    {'u', "8", AnyLength, 0, &TableController::ReadMemory},
    {'u', "9", AnyLength, 0, &TableController::WriteToRam},
    {'u', "A", AnyLength, 0, &TableController::UnlockFlash},
    {'u', "B", AnyLength, 0, &TableController::LockFlash},
};

TableController::TableController(BenchClock& clock, Faults& faults) : clock(clock), faults(faults), motors(ParkPosition)
{
    flash.OnChange([this] { SaveState(); });
}

// ---- what outlives the program ----

void TableController::KeepIn(const std::filesystem::path& file)
{
    const TableState before = State();
    if (std::filesystem::exists(std::filesystem::symlink_status(file))) {
        if (motors.IsRunning()) {
            throw std::runtime_error("the motors are at work.");
        }
        Restore(TableState::Load(file));
    }
    if (!file.empty() && !State().Save(file)) {
        Restore(before);
        throw std::runtime_error("it can't be written.");
    }
    keptIn = file;
}

TableState TableController::State() const
{
    const Point arm = motors.LastMotion().PositionAt(motors.LastMotion().End());
    return {arm, motors.GetCounters(), resets, {flash.Memory().begin(), flash.Memory().end()}};
}

void TableController::Restore(const TableState& state)
{
    motors.Restore(state.arm, state.counters);
    resets = state.resets;
    flash.Replace(state.flash);
}

void TableController::SaveState()
{
    // Nobody may take a state for the present one that is not.
    if (!keptIn.empty() && !State().Save(keptIn)) {
        keptIn.clear();
    }
}

// ---- the serial line ----

void TableController::Receive(char character, int64_t moment)
{
    if (moment < deafUntil) {
        return;
    }
    if (character != EndByte) {
        if (incoming.size() < LongestLine) {
            incoming += character;
        }
        return;
    }
    lines.push_back(Line{moment, std::exchange(incoming, {})});
}

void TableController::RunTo(int64_t moment)
{
    for (;;) {
        const bool hasLine = !lines.empty();
        const int64_t lineDue = hasLine ? std::max(lines.front().moment, workingUntil) + ProcessingTime : moment;
        if (motors.IsRunning() && motors.OperationEnd() <= std::min(lineDue, moment)) {
            FinishOperation();
        } else if (hasLine && lineDue <= moment) {
            const Line line = std::move(lines.front());
            lines.pop_front();
            Process(line, lineDue);
        } else {
            return;
        }
    }
}

std::optional<TableController::Reply> TableController::TakeReply()
{
    if (replies.empty()) {
        return std::nullopt;
    }
    Reply reply = std::move(replies.front());
    replies.pop_front();
    return reply;
}

const TableController::Command* TableController::Find(char letter, char subCommand)
{
    const auto command = std::ranges::find_if(Commands, [&](const Command& candidate) {
        return candidate.letter == letter &&
               (candidate.subCommands.empty() || candidate.subCommands.find(subCommand) != std::string_view::npos);
    });
    return command == std::end(Commands) ? nullptr : &*command;
}

bool TableController::HasSubCommands(char letter)
{
    return std::ranges::none_of(Commands, [&](const Command& candidate) {
        return candidate.letter == letter && candidate.subCommands.empty();
    });
}

void TableController::Process(const Line& line, int64_t moment)
{
    std::string_view text = line.text;
    workingUntil = moment;
    if (text.size() < 2 || text.front() != StartByte) {
        return;  // noise: there is no command letter to answer to
    }
    const bool isWhole = text.size() >= 4 && HasWireChecksum(text);
    const std::string_view content = text.size() >= 4 ? text.substr(1, text.size() - 3) : text.substr(1, 1);
    const char letter = content[0];
    const char subCommand = content.size() > 1 ? content[1] : '\0';
    const std::string header(content.substr(0, HasSubCommands(letter) ? 2 : 1));
    const Request request{letter, subCommand, content.substr(header.size()), moment};

    const Command* const command = Find(letter, subCommand);
    const bool fits = command != nullptr && (command->dataLength == AnyLength ||
                                             command->dataLength == static_cast<int>(request.data.size()));
    const bool losesPower = isWhole && fits && LosesPower(*command);
    if (losesPower) {
        flash.TearNext();
    }
    const Answer answer = isWhole && fits ? Execute(*command, request) : Answer{Rejected};
    if (losesPower) {
        Reset(request);  // what the table is when it is switched on again
        faults.tableUnplugged = true;
        return;
    }
    workingUntil = moment + answer.workTime;
    std::string body;
    if (answer.acknowledge == Data) {
        lastError = answer.error;
        body = "0123456789abcdefghijklmnopqrstuvwxyz"[answer.error] + answer.data;
    }
    Send(workingUntil, header, answer.acknowledge, body);
}

bool TableController::LosesPower(const Command& command)
{
    const bool writesFlash = command.letter == 'u' && command.subCommands != "8";
    return writesFlash && faults.powerCutAfterFlashSteps >= 0 && faults.powerCutAfterFlashSteps-- == 0;
}

TableController::Answer TableController::Execute(const Command& command, const Request& request)
{
    if (faults.tableBusy || (command.movesArm && motors.IsRunning())) {
        return Answer{Busy};
    }
    Answer answer = (this->*command.handler)(request);
    if (answer.acknowledge == Data && answer.data.size() < command.replyLength) {
        answer.data.resize(command.replyLength, '0');
    }
    return answer;
}

void TableController::Send(int64_t moment, const std::string& header, char acknowledge, const std::string& body)
{
    if (faults.tableSilent) {
        return;
    }
    std::string text = std::string(":") + acknowledge + header + body;
    text += WireChecksum(text);
    if (faults.corruptReplies > 0) {
        --faults.corruptReplies;
        text.back() = text.back() == '0' ? '1' : '0';
    }
    replies.push_back(Reply{moment, text + EndByte});
}

// ---- status ----

TableController::Answer TableController::ReportStatus(const Request&)
{
    const uint32_t flags = static_cast<uint32_t>(motors.GetMode()) | foilOn << 3 | foilButtonOff << 4 |
                           currentArmed << 5 | currentSeen << 6;
    return Answer{Data, 0, ToHex(flags, 2) + ToHex(static_cast<uint32_t>(lastError), 2) + ToHex(HardwareVersion, 2)};
}

TableController::Answer TableController::ReportFirmware(const Request&)
{
    return Answer{Data, 0, ToHex(BootLoaderVersion, 4) + ToHex(FirmwareVersion, 4) + ToHex(HardwareVersion, 2)};
}

TableController::Answer TableController::ReportMetrics(const Request&)
{
    const TableMotors::Counters& counters = motors.GetCounters();
    const auto millimetres =
        static_cast<uint32_t>(counters.distance / TenthsPerMillimetre);  // the counters' unit on the wire
    std::string text;
    for (const uint32_t value : {FormerHomeMovements + counters.homeMovements, FormerMovements + counters.movements,
                                 FormerDistance + millimetres, FormerResets + resets, counters.homeMovements,
                                 counters.movements, millimetres}) {
        text += ToHex(value, 8);
    }
    return Answer{Data, 0, text};
}

TableController::Answer TableController::ReportRamps(const Request&)
{
    const J4Chart::MotionProfile& profile = LastMotion().Profile();
    const auto rounded = [](double value) { return static_cast<uint32_t>(std::lround(value)); };
    return Answer{Data, 0,
                  ToHex(rounded(profile.AccelerationEnd() * 1000.0), 8) +
                      ToHex(rounded(profile.DecelerationStart() * 1000.0), 8) +
                      ToHex(rounded(profile.PlateauSpeed() / TenthsPerMillimetre), 4)};
}

TableController::Answer TableController::ReportDeviation(const Request&)
{
    // Per arm: the present difference between wanted and true angle, the lowest and the highest since the
    // motors are on, in encoder steps.
    static constexpr int steps[] = {1, -2, 3, -1, -3, 2};
    const bool isOff = motors.GetMode() == TableMotors::Mode::Off;
    std::string text;
    for (const int value : steps) {
        text += ToHex(isOff ? 0 : static_cast<uint32_t>(value), 4);
    }
    return Answer{Data, 0, text};
}

TableController::Answer TableController::ReportControllerInfo(const Request&)
{
    // Microseconds of one cycle of the position controller, and how many motor controllers there are.
    return Answer{Data, 0, ToHex(250, 4) + ToHex(2, 4)};
}

// ---- current detection, foil, reset ----

TableController::Answer TableController::ArmCurrentDetection(const Request& request)
{
    currentArmed = request.subCommand == '1';
    if (!currentArmed) {
        currentSeen = false;
    }
    return ReportCurrentDetection(request);
}

TableController::Answer TableController::ReportCurrentDetection(const Request&)
{
    return Answer{Data, 0, ToHex(currentSeen, 2)};
}

void TableController::NoteInstrumentCurrent()
{
    RunTo(clock.Now());
    currentSeen = currentSeen || currentArmed;
}

TableController::Answer TableController::SwitchFoil(const Request& request)
{
    foilOn = request.subCommand == '1';
    return ReportFoil(request);
}

TableController::Answer TableController::SwitchFoilButton(const Request& request)
{
    foilButtonOff = request.subCommand == '2';
    return ReportFoil(request);
}

TableController::Answer TableController::ReportFoil(const Request&)
{
    return Answer{Data, 0, ToHex(foilOn | foilButtonOff << 1, 2)};
}

TableController::Answer TableController::Reset(const Request& request)
{
    motors.SwitchOff(request.moment);
    lines.clear();
    incoming.clear();
    flash.Lock();
    foilOn = false;
    foilButtonOff = false;
    currentArmed = false;
    currentSeen = false;
    scanDelay = 0;
    deafUntil = request.moment + RebootTime;
    ++resets;
    SaveState();
    return Answer{Data};
}

// ---- motion ----

ConfigurationBlock TableController::Configuration() const
{
    return ConfigurationBlock(flash.Memory().subspan(TableFlash::ConfigurationAddress, TableFlash::SectorSize));
}

TableController::Answer TableController::Accept(const Request& request)
{
    acceptedHeader = {request.letter, request.subCommand};
    return Answer{Accepted};
}

void TableController::FinishOperation()
{
    workingUntil = std::max(workingUntil, motors.OperationEnd());
    lastError = static_cast<int>(motors.Finish());
    Send(workingUntil, acceptedHeader, Data, std::to_string(lastError));
    SaveState();
}

TableController::Answer TableController::Initialize(const Request& request)
{
    motors.Initialize(Configuration(), request.moment);
    return Accept(request);
}

TableController::Answer TableController::GoHome(const Request& request)
{
    motors.GoHome(Configuration(), request.moment, faults.positionNotReached);
    return Accept(request);
}

TableController::Answer TableController::Move(const Request& request)
{
    const bool isVisor = (request.subCommand - '0') & 1;
    const bool isScan = (request.subCommand - '0') & 2;
    const size_t length = request.data.size();
    const bool isHex = std::ranges::all_of(request.data, [](char c) { return FromHex({&c, 1}).has_value(); });
    if (!isHex || (length != 12 && length != 16 && length != 20)) {
        return Answer{Rejected};
    }
    std::string_view data = request.data;
    TableMotors::Target target{{}, isVisor, 0};
    target.place.x = TakeCoordinate(data, length > 12);
    target.place.y = TakeCoordinate(data, data.size() == 12);
    if (data.size() != 4) {
        return Answer{Rejected};
    }
    target.speed = static_cast<int32_t>(FromHex(data).value_or(0));
    const int64_t begin = request.moment + (isScan ? scanDelay * int64_t{1000} : 0);
    motors.Move(Configuration(), target, request.moment, begin, faults.positionNotReached);
    return Accept(request);
}

TableController::Answer TableController::ReportPosition(const Request& request)
{
    const ConfigurationBlock configuration = Configuration();
    if (configuration.GetState() != ConfigurationBlock::State::Valid) {
        return Answer{Data, static_cast<int>(configuration.GetState())};
    }
    Point place = LastMotion().PositionAt(request.moment);
    if (request.subCommand == '1') {
        place = configuration.GetMachine().Arm().SensorToVisor(place).value_or(place);
    }
    const auto field = [](double value) { return ToHex(static_cast<uint32_t>(std::lround(value)), 4); };
    return Answer{Data, 0, field(place.x) + field(place.y)};
}

TableController::Answer TableController::Hold(const Request& request)
{
    return Answer{Data, static_cast<int>(motors.Hold(request.subCommand == '1'))};
}

TableController::Answer TableController::SetScanDelay(const Request& request)
{
    const std::optional<uint32_t> delay = FromHex(request.data);
    if (!delay) {
        return Answer{Rejected};
    }
    scanDelay = *delay;
    return Answer{Data, 0, ToHex(scanDelay, 4)};
}

// ---- flash ----

TableController::Answer TableController::ReportConfiguration(const Request& request)
{
    const bool isReadBlock = request.subCommand == '2';
    const bool isWriteBlock = request.subCommand == '3';
    if (!isReadBlock && !isWriteBlock) {
        return Answer{Data, static_cast<int>(ConfigurationBlock::State::Missing)};
    }
    // Where a block may be written doesn't depend on what lies there: a broken one can be replaced.
    const int error = isReadBlock ? static_cast<int>(Configuration().GetState()) : 0;
    return Answer{Data, error,
                  ToHex(ConfigurationBlock::Version, 2) + ToHex(TableFlash::ConfigurationAddress, 4) +
                      ToHex(ConfigurationBlock::Revision, 8)};
}

TableController::Answer TableController::FlashAnswer(FlashStatus status, int64_t workTime)
{
    return Answer{Data, static_cast<int>(status), {}, status == FlashStatus::Done ? workTime : 0};
}

TableController::Answer TableController::PrepareSectors(const Request& request)
{
    const auto fields = Fields(request.data, {1, 1});
    return FlashAnswer(Guarded(fields.has_value(), motors, [&] { return flash.Prepare((*fields)[0], (*fields)[1]); }));
}

TableController::Answer TableController::EraseSectors(const Request& request)
{
    const auto fields = Fields(request.data, {1, 1});
    return FlashAnswer(Guarded(fields.has_value(), motors, [&] { return flash.Erase((*fields)[0], (*fields)[1]); }),
                       EraseTime);
}

TableController::Answer TableController::CopyRamToFlash(const Request& request)
{
    const auto fields = Fields(request.data, {5, 4, 1});
    const FlashStatus status = Guarded(fields.has_value(), motors, [&] {
        const uint32_t count = BlockSize((*fields)[2]);
        return count < TableFlash::WriteAlignment ? FlashStatus::DestinationOrSize
                                                  : flash.Copy((*fields)[0], (*fields)[1], count);
    });
    return FlashAnswer(status, ProgramTime);
}

TableController::Answer TableController::ReadMemory(const Request& request)
{
    const auto fields = Fields(request.data, {8, 4});
    if (!fields) {
        return FlashAnswer(FlashStatus::CommandLength);
    }
    std::vector<uint8_t> bytes;
    const FlashStatus status = flash.Read((*fields)[0], (*fields)[1], bytes);
    if (status != FlashStatus::Done) {
        bytes.assign(std::min((*fields)[1], TableFlash::LargestRead), 0);
    }
    return Answer{Data, static_cast<int>(status), HexText(bytes)};
}

TableController::Answer TableController::WriteToRam(const Request& request)
{
    const auto fields = Fields(request.data.substr(0, 5), {4, 1});
    const uint32_t count = fields ? BlockSize((*fields)[1]) : 0;
    std::vector<uint8_t> bytes;
    for (size_t i = 5; i + 1 < request.data.size(); i += 2) {
        if (const auto byte = FromHex(request.data.substr(i, 2))) {
            bytes.push_back(static_cast<uint8_t>(*byte));
        }
    }
    FlashStatus status = FlashStatus::Done;
    if (!fields || request.data.size() != 5 + 2 * count || bytes.size() != count) {
        status = FlashStatus::CommandLength;
    }
    if (fields && (count == 0 || count > TableFlash::LargestRead)) {
        status = FlashStatus::DestinationOrSize;
    }
    if (status == FlashStatus::Done) {
        status = flash.WriteRam((*fields)[0], bytes);
    }
    return FlashAnswer(status);
}

TableController::Answer TableController::UnlockFlash(const Request& request)
{
    constexpr size_t idLength = 6;
    const bool fits = request.data.size() == idLength;
    return FlashAnswer(fits ? flash.Unlock(request.data) : FlashStatus::CommandLength);
}

TableController::Answer TableController::LockFlash(const Request& request)
{
    if (!request.data.empty()) {
        return FlashAnswer(FlashStatus::CommandLength);
    }
    flash.Lock();
    return FlashAnswer(FlashStatus::Done);
}

}  // namespace J4Bench
