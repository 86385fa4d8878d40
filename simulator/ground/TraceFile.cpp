#include "simulator/ground/TraceFile.h"

#include <nlohmann/json.hpp>
#include <string>

namespace J4Bench {

namespace {

using Json = nlohmann::ordered_json;
using Kind = JournalEntry::Kind;

/// Bytes of a line as characters of the same numbers, so that each can be told again.
std::string BytesAsUtf8(const std::string& bytes)
{
    std::string text;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        if (value < 0x80) {
            text += byte;
        } else {
            text += static_cast<char>(0xc0 | value >> 6);
            text += static_cast<char>(0x80 | (value & 0x3f));
        }
    }
    return text;
}

void WriteLine(std::ofstream& stream, const Json& json)
{
    stream << json.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n' << std::flush;
}

}  // namespace

bool TraceFile::Open(const std::filesystem::path& file)
{
    stream.open(file, std::ios::binary | std::ios::trunc);
    WriteLine(stream, {{"time", 0}, {"kind", "trace"}, {"version", 1}});
    if (!stream) {
        stream.close();
    }
    return stream.is_open();
}

void TraceFile::Write(const JournalEntry& entry, int64_t moment)
{
    if (!IsOpen()) {
        return;
    }
    Json json = {{"time", moment}, {"kind", JournalEntry::KindNames[static_cast<size_t>(entry.kind)]}};
    if (!entry.table.empty()) {
        json["table"] = entry.table;
    }
    const bool isFrame = entry.kind == Kind::Sent || entry.kind == Kind::Received;
    json["name"] = isFrame ? BytesAsUtf8(entry.name) : entry.name;
    if (!entry.arguments.empty()) {
        json["arguments"] = entry.arguments;
    }
    if (entry.count > 0) {
        json["begin"] = entry.begin;
        json["count"] = entry.count;
    }
    if (entry.status) {
        json["status"] = *entry.status;
    }
    if (entry.result) {
        json["result"] = *entry.result;
    }
    WriteLine(stream, json);
    if (!stream) {
        stream.close();
    }
}

}  // namespace J4Bench
