#include "tools/trace/TraceEvent.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "Utilities/Tools/FilePath.h"
#include "tools/Json.h"
#include "tools/ToolError.h"
#include "tools/trace/UsbCapture.h"

namespace J4Tool {

namespace {

constexpr const char* Advice =
    "A trace is what the option Simulator.TraceFile of the virtual table writes, or a capture of usbmon as a pcap "
    "file.";

constexpr uint32_t MostSamples = 1000000;  // of one scan; an instrument has room for fewer

/// UTF-8 characters up to U+00FF as the bytes of their numbers, which is how a trace has the bytes of a line.
std::string BytesOf(const std::string& text)
{
    std::string bytes;
    for (size_t i = 0; i < text.size(); ++i) {
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead >= 0xc2 && lead <= 0xc3 && i + 1 < text.size()) {
            bytes += static_cast<char>((lead & 3) << 6 | (static_cast<unsigned char>(text[++i]) & 0x3f));
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

/// @throws std::exception, with a reason, for an object that is no event
TraceEvent EventOf(const Json& json)
{
    TraceEvent event;
    event.time = json.at("time").get<int64_t>();
    const std::string kind = json.at("kind");
    const auto* const known = std::ranges::find(J4Bench::JournalEntry::KindNames, kind);
    if (known == std::end(J4Bench::JournalEntry::KindNames)) {
        throw std::runtime_error("there is no kind '" + kind + "'");
    }
    J4Bench::JournalEntry& entry = event.entry;
    entry.kind = static_cast<Kind>(known - std::begin(J4Bench::JournalEntry::KindNames));
    entry.name = json.at("name");
    if (event.IsFrame()) {
        entry.name = BytesOf(entry.name);
    }
    entry.table = json.value("table", "");
    entry.arguments = json.value("arguments", std::vector<std::string>());
    if (json.contains("status")) {
        entry.status = json["status"].get<int32_t>();
    }
    if (json.contains("result")) {
        entry.result = json["result"].get<std::string>();
    }
    entry.begin = json.value("begin", int64_t{0});
    entry.count = json.value("count", uint32_t{0});
    for (const int64_t time : {event.time, entry.begin}) {
        if (time < 0 || time > LatestTime) {
            throw std::runtime_error("the time " + std::to_string(time) + " is not one of a trace");
        }
    }
    if (entry.count > MostSamples) {
        throw std::runtime_error("there are no " + std::to_string(entry.count) + " samples in one run");
    }
    return event;
}

/// The reason of a failure without the JSON library's own numbers.
std::string ReasonOf(const std::exception& error)
{
    std::string text = error.what();
    if (text.starts_with("[json.exception") && text.find("] ") != std::string::npos) {
        text.erase(0, text.find("] ") + 2);
    }
    // It has parsed one line and counts that.
    const std::string one = "at line 1, ";
    if (const size_t at = text.find(one); at != std::string::npos) {
        text.replace(at, one.size(), "at ");
    }
    return text;
}

void ReadLines(std::istream& stream, const std::string& fileName, const TraceListener& listener)
{
    std::string text;
    for (size_t number = 1; std::getline(stream, text); ++number) {
        try {
            const Json json = Json::parse(text);
            if (number == 1) {
                if (json.value("kind", "") != "trace" || json.value("version", 0) != 1) {
                    throw std::runtime_error("this is no trace, or one of a later version");
                }
                continue;
            }
            listener(EventOf(json));
        } catch (const ToolError&) {
            throw;
        } catch (const std::exception& error) {
            throw ToolError(ExitCode::File, fileName + ": line " + std::to_string(number) + ": " + ReasonOf(error),
                            Advice);
        }
    }
}

}  // namespace

bool ReadTrace(const std::string& fileName, const TraceListener& listener)
{
    std::ifstream stream(Kestrelon::Utilities::Tools::PathOf(fileName), std::ios::binary);
    if (!stream) {
        throw ToolError(ExitCode::File, fileName + ": it can't be opened", Advice);
    }
    return ReadTrace(stream, fileName, listener);
}

bool ReadTrace(std::istream& stream, const std::string& fileName, const TraceListener& listener)
{
    if (stream.peek() == std::istream::traits_type::eof()) {
        throw ToolError(ExitCode::File, fileName + ": it is empty", Advice);
    }
    if (stream.peek() == '{') {
        ReadLines(stream, fileName, listener);
        return false;
    }
    try {
        ReadUsbCapture(stream, listener);
    } catch (const UsbCaptureError& error) {
        throw ToolError(ExitCode::File, fileName + ": " + error.what(), Advice);
    }
    return true;
}

}  // namespace J4Tool
