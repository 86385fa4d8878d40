#include "tools/trace/TraceEvent.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
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

constexpr int64_t MostSamples = 1000000;  // of one scan; an instrument has room for fewer

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

/// @throws std::exception for what is no whole number in the range
int64_t WholeNumber(const Json& json, const std::string& key, int64_t low, int64_t high)
{
    const Json& value = json.at(key);
    const bool isTooLarge = value.is_number_unsigned() && value.get<uint64_t>() > static_cast<uint64_t>(high);
    if (!value.is_number_integer() || isTooLarge || value.get<int64_t>() < low || value.get<int64_t>() > high) {
        throw std::runtime_error("the " + key + " " + value.dump() + " is not one of a trace");
    }
    return value.get<int64_t>();
}

/// @throws std::exception, with a reason, for an object that is no event
TraceEvent EventOf(const Json& json)
{
    TraceEvent event;
    event.time = WholeNumber(json, "time", 0, LatestTime);
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
        using Range = std::numeric_limits<int32_t>;
        entry.status = static_cast<int32_t>(WholeNumber(json, "status", Range::min(), Range::max()));
    }
    if (json.contains("result")) {
        entry.result = json["result"].get<std::string>();
    }
    if (json.contains("begin")) {
        entry.begin = WholeNumber(json, "begin", 0, LatestTime);
    }
    if (json.contains("count")) {
        entry.count = static_cast<uint32_t>(WholeNumber(json, "count", 0, MostSamples));
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

/// @return the line that the file cuts, for people; empty for none
std::string ReadLines(std::istream& stream, const std::string& fileName, const TraceListener& listener)
{
    std::string text;
    for (size_t number = 1; std::getline(stream, text); ++number) {
        try {
            // A program that ends, or a full disk, leaves a line without its end.
            if (number > 1 && stream.eof() && !Json::accept(text)) {
                return "line " + std::to_string(number);
            }
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
    return {};
}

}  // namespace

std::string ReadTrace(const std::string& fileName, const TraceListener& listener)
{
    std::error_code error;
    if (std::filesystem::is_directory(Kestrelon::Utilities::Tools::PathOf(fileName), error)) {
        throw ToolError(ExitCode::File, fileName + ": it is a folder", Advice);
    }
    std::ifstream stream(Kestrelon::Utilities::Tools::PathOf(fileName), std::ios::binary);
    if (!stream) {
        throw ToolError(ExitCode::File, fileName + ": it can't be opened", Advice);
    }
    return ReadTrace(stream, fileName, listener);
}

std::string ReadTrace(std::istream& stream, const std::string& fileName, const TraceListener& listener)
{
    if (stream.peek() == std::istream::traits_type::eof()) {
        throw ToolError(ExitCode::File, fileName + ": it is empty", Advice);
    }
    if (stream.peek() == '{') {
        return ReadLines(stream, fileName, listener);
    }
    try {
        return ReadUsbCapture(stream, listener);
    } catch (const UsbCaptureError& error) {
        throw ToolError(ExitCode::File, fileName + ": " + error.what(), Advice);
    }
}

}  // namespace J4Tool
