#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "chart/cgats/CgatsFields.h"
#include "src/TableFacts.h"
#include "tools/DateText.h"
#include "tools/Json.h"
#include "tools/Terminal.h"
#include "tools/commands/Commands.h"

namespace J4Tool {

namespace {

struct InfoLine {
    const char* name;   ///< in the JSON object
    const char* label;  ///< for people
    const char* key;
    enum class Form { Plain, Number, Millimetres, Millimetre10ths, Date, List } form;
};

constexpr InfoLine Lines[] = {
    {"library", "Library", "J4TVersion", InfoLine::Form::Plain},
    {"instrumentLibrary", "Instrument's library", "J4TJ4SDKPath", InfoLine::Form::Plain},
    {"tableSerial", "Table's serial number", "J4TSerialNumber", InfoLine::Form::Plain},
    {"firmware", "Table's firmware", "J4TFirmwareVersion", InfoLine::Form::Plain},
    {"whiteBaseDate", "White base written", "J4TLastWhiteBaseTransferTime", InfoLine::Form::Date},
    {"maxSpeed", "Highest speed, mm/s", "J4TMaxSpeed", InfoLine::Form::Number},
    {"xMin", "Work area from x", "J4TFlash_1010", InfoLine::Form::Millimetres},
    {"xMax", "Work area to x", "J4TFlash_1009", InfoLine::Form::Millimetres},
    {"yMin", "Work area from y", "J4TFlash_1012", InfoLine::Form::Millimetres},
    {"yMax", "Work area to y", "J4TFlash_1011", InfoLine::Form::Millimetres},
    {"armLength", "First arm", "J4TFlash_1001", InfoLine::Form::Millimetre10ths},
    {"sensorReach", "Second arm", "J4TFlash_1002", InfoLine::Form::Millimetre10ths},
    {"homeMovements", "Reference runs in its life", "J4TMetricAbsHomeMovements", InfoLine::Form::Number},
    {"movements", "Movements in its life", "J4TMetricAbsMovements", InfoLine::Form::Number},
    {"distance", "Distance in its life", "J4TMetricAbsDistance", InfoLine::Form::Number},
    {"resets", "Resets in its life", "J4TMetricResets", InfoLine::Form::Number},
    {"homeMovementsSinceService", "Reference runs since service", "J4TMetricRelHomeMovements", InfoLine::Form::Number},
    {"movementsSinceService", "Movements since service", "J4TMetricRelMovements", InfoLine::Form::Number},
    {"distanceSinceService", "Distance since service", "J4TMetricRelDistance", InfoLine::Form::Number},
    {"instrumentSerial", "Instrument", "J4TJ4SerialNumber", InfoLine::Form::Plain},
    {"instrumentModes", "Instrument's modes", "AvailableMeasurementModes", InfoLine::Form::List},
};

std::vector<std::string> Words(const std::string& list)
{
    std::vector<std::string> words;
    for (size_t at = 0; at < list.size();) {
        const size_t end = std::min(list.find(';', at), list.size());
        words.push_back(list.substr(at, end - at));
        at = end + 1;
    }
    return words;
}

double Millimetres(const InfoLine& line, const std::string& value)
{
    double number = 0.0;
    J4Chart::ParseNumber(value, number);
    return line.form == InfoLine::Form::Millimetre10ths ? number / Kestrelon::DeviceDriver::J4T::TenthsPerMillimetre
                                                        : number;
}

void Run(ToolContext& context)
{
    Session& session = context.Open();
    session.Connect();
    const Units units = context.GetUnits();
    Json object = {{"libraryPath", context.GetLibrary().Path()}};
    std::string text = "Library file                  " + context.GetLibrary().Path() + "\n";
    for (const InfoLine& line : Lines) {
        const std::string value = session.GetOption(line.key);
        std::string shown = value;
        switch (line.form) {
        case InfoLine::Form::Date:
            shown = DateText(value);
            object[line.name] = shown;
            break;
        case InfoLine::Form::List:
            object[line.name] = Words(value);
            break;
        case InfoLine::Form::Millimetres:
        case InfoLine::Form::Millimetre10ths:
            shown = units.Text(Millimetres(line, value));
            object[line.name] = units.FromMillimetres(Millimetres(line, value));
            break;
        case InfoLine::Form::Number:
            object[line.name] = JsonValue(value);
            break;
        case InfoLine::Form::Plain:
            object[line.name] = value;
        }
        const std::string label = line.label;
        text += label + std::string(label.size() < 30 ? 30 - label.size() : 1, ' ') + shown + "\n";
    }
    object["unit"] = units.Name();
    if (context.json) {
        PrintJson(object);
    } else {
        Print(stdout, "%s", text.c_str());
    }
}

}  // namespace

void AddInfoCommand(CLI::App& app, ToolContext& context)
{
    CLI::App* command = app.add_subcommand("info",
                                           "show library, table and instrument: versions, serial numbers, "
                                           "white base date, work area, lifetime counters, modes");
    command->callback([&context] { Run(context); });
}

}  // namespace J4Tool
