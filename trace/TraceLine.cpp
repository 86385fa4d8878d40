#include "trace/TraceLine.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <vector>

#include "Utilities/Tools/Utf8.h"

namespace J4Trace {

namespace {

namespace Utf8 = Kestrelon::Utilities::Tools::Utf8;
using Json = nlohmann::ordered_json;

// Members of a line.
constexpr const char* Time = "time";
constexpr const char* Kind = "kind";
constexpr const char* Version = "version";
constexpr const char* Table = "table";
constexpr const char* Name = "name";
constexpr const char* Arguments = "arguments";
constexpr const char* Begin = "begin";
constexpr const char* Count = "count";
constexpr const char* Status = "status";
constexpr const char* Result = "result";

constexpr const char* HeadKind = "trace";
constexpr int HeadVersion = 1;

constexpr int64_t MostSamples = 1000000;  // of one scan; an instrument has room for fewer

/// Bytes of a frame as characters of the same numbers, so that each can be told again.
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

/// The way back; characters above U+00FF stay.
std::string BytesOfUtf8(const std::string& text)
{
    std::string bytes;
    for (size_t at = 0; at < text.size();) {
        const std::optional<Utf8::Character> character = Utf8::CharacterAt(text, at);
        const size_t length = character ? character->length : 1;
        if (character && character->code <= 0xff) {
            bytes += static_cast<char>(character->code);
        } else {
            bytes.append(text, at, length);
        }
        at += length;
    }
    return bytes;
}

std::string TextOf(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

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

}  // namespace

std::string TraceLine::Head() { return TextOf({{Time, 0}, {Kind, HeadKind}, {Version, HeadVersion}}); }

bool TraceLine::IsHead(const std::string& line)
{
    const Json json = Json::parse(line);
    return json.value(Kind, "") == HeadKind && json.value(Version, 0) == HeadVersion;
}

std::string TraceLine::Of(int64_t time, const JournalEntry& entry)
{
    Json json = {{Time, time}, {Kind, entry.KindName()}};
    if (!entry.table.empty()) {
        json[Table] = entry.table;
    }
    json[Name] = entry.IsFrame() ? BytesAsUtf8(entry.name) : entry.name;
    if (!entry.arguments.empty()) {
        json[Arguments] = entry.arguments;
    }
    if (entry.count > 0) {
        json[Begin] = entry.begin;
        json[Count] = entry.count;
    }
    if (entry.status) {
        json[Status] = *entry.status;
    }
    if (entry.result) {
        json[Result] = *entry.result;
    }
    return TextOf(json);
}

TraceEvent TraceLine::Event(const std::string& line)
{
    const Json json = Json::parse(line);
    TraceEvent event;
    event.time = WholeNumber(json, Time, 0, LatestTime);
    const std::string kind = json.at(Kind);
    const auto* const known = std::ranges::find(JournalEntry::KindNames, kind);
    if (known == std::end(JournalEntry::KindNames)) {
        throw std::runtime_error("there is no kind '" + kind + "'");
    }
    JournalEntry& entry = event.entry;
    entry.kind = static_cast<JournalEntry::Kind>(known - std::begin(JournalEntry::KindNames));
    entry.name = json.at(Name);
    if (entry.IsFrame()) {
        entry.name = BytesOfUtf8(entry.name);
    }
    entry.table = json.value(Table, "");
    entry.arguments = json.value(Arguments, std::vector<std::string>());
    if (json.contains(Status)) {
        using Range = std::numeric_limits<int32_t>;
        entry.status = static_cast<int32_t>(WholeNumber(json, Status, Range::min(), Range::max()));
    }
    if (json.contains(Result)) {
        entry.result = json[Result].get<std::string>();
    }
    if (json.contains(Begin)) {
        entry.begin = WholeNumber(json, Begin, 0, LatestTime);
    }
    if (json.contains(Count)) {
        entry.count = static_cast<uint32_t>(WholeNumber(json, Count, 0, MostSamples));
    }
    return event;
}

}  // namespace J4Trace
