// The table's own controller: takes command lines from the serial line, moves the arm, keeps the flash, and
// answers. It lives on the moments it is told and does everything that is due up to them.
#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/ground/BenchClock.h"
#include "simulator/ground/Carriage.h"
#include "simulator/ground/Faults.h"
#include "simulator/table/ConfigurationBlock.h"
#include "simulator/table/TableFlash.h"
#include "simulator/table/TableMotors.h"
#include "simulator/table/TableState.h"

namespace J4Bench {

class TableController final : public Carriage {
public:
    /// A reply line, carriage return included, and the moment when its first character goes out.
    struct Reply {
        int64_t moment;
        std::string text;
    };

    /// The table has just been switched on.
    TableController(BenchClock& clock, Faults& faults);
    TableController(const TableController&) = delete;
    TableController& operator=(const TableController&) = delete;

    /// Takes the state of the table from a file, if there is one, and keeps it there whenever flash, arm or counters have
    /// changed; without a name it is kept no longer.
    /// @throws std::runtime_error with the reason when the file is damaged or can't be written, or when the motors are at
    ///         work; nothing is changed then
    void KeepIn(const std::filesystem::path& file);

    /// That file; empty where there is none, or where it took no more.
    const std::filesystem::path& KeptIn() const { return keptIn; }

    /// One character that has come in completely at this moment.
    void Receive(char character, int64_t moment);

    /// Does what is due up to a moment: command lines, ends of motions.
    void RunTo(int64_t moment);

    /// The next reply that was made, nothing when there is none.
    std::optional<Reply> TakeReply();

    Point ApertureAt(int64_t microseconds) const override { return LastMotion().PositionAt(microseconds); }
    Point TilePosition() const override { return Machine().Tile(); }
    /// What the factory measured, whatever white base has been written to the flash since.
    const Spectrum& TileWhite() const override { return ConfigurationBlock::FactoryWhiteBase(); }
    void NoteInstrumentCurrent() override;

    const Motion& LastMotion() const { return motors.LastMotion(); }
    TableFlash& Flash() { return flash; }
    const TableFlash& Flash() const { return flash; }

private:
    struct Line {
        int64_t moment;
        std::string text;
    };

    struct Request {
        char letter;
        char subCommand;
        std::string_view data;
        int64_t moment;
    };

    struct Answer {
        char acknowledge;
        int error = 0;
        std::string data = {};
        int64_t workTime = 0;  ///< microseconds until the answer goes out
    };

    using Handler = Answer (TableController::*)(const Request&);
    struct Command;
    static const Command Commands[];
    static const Command* Find(char letter, char subCommand);
    static bool HasSubCommands(char letter);

    void Process(const Line& line, int64_t moment);

    /// Whether the power fails in this command.
    bool LosesPower(const Command& command);
    Answer Execute(const Command& command, const Request& request);
    void FinishOperation();
    void Send(int64_t moment, const std::string& header, char acknowledge, const std::string& body);

    Answer ReportStatus(const Request&);
    Answer ReportFirmware(const Request&);
    Answer ReportMetrics(const Request&);
    Answer ReportRamps(const Request&);
    Answer ReportDeviation(const Request&);
    Answer ReportControllerInfo(const Request&);
    Answer ArmCurrentDetection(const Request&);
    Answer ReportCurrentDetection(const Request&);
    Answer SetScanDelay(const Request&);
    Answer SwitchFoil(const Request&);
    Answer SwitchFoilButton(const Request&);
    Answer ReportFoil(const Request&);
    Answer Initialize(const Request&);
    Answer GoHome(const Request&);
    Answer ReportConfiguration(const Request&);
    Answer Move(const Request&);
    Answer ReportPosition(const Request&);
    Answer Reset(const Request&);
    Answer Hold(const Request&);
    Answer PrepareSectors(const Request&);
    Answer CopyRamToFlash(const Request&);
    Answer EraseSectors(const Request&);
    Answer ReadMemory(const Request&);
    Answer WriteToRam(const Request&);
    Answer UnlockFlash(const Request&);
    Answer LockFlash(const Request&);

    ConfigurationBlock Configuration() const;

    /// The state as it will be when the motors stand.
    TableState State() const;
    void Restore(const TableState& state);
    void SaveState();

    /// @param workTime  microseconds that the operation takes when it is done
    static Answer FlashAnswer(TableFlash::Status status, int64_t workTime = 0);

    /// Accepts a command whose final reply comes when the operation of the motors ends.
    Answer Accept(const Request& request);

    BenchClock& clock;
    Faults& faults;
    TableFlash flash;
    TableMotors motors;
    std::string incoming;
    std::deque<Line> lines;
    std::deque<Reply> replies;
    std::string acceptedHeader;  ///< of the command that the motors work on
    int64_t workingUntil = 0;
    int64_t deafUntil = 0;
    uint32_t scanDelay = 0;  ///< ms
    bool foilOn = false;
    bool foilButtonOff = false;
    bool currentArmed = false;
    bool currentSeen = false;
    int lastError = 0;
    uint32_t resets = 0;
    std::filesystem::path keptIn;
};

}  // namespace J4Bench
