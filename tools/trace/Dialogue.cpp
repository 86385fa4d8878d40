#include "tools/trace/Dialogue.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "tools/FixedText.h"
#include "tools/Plural.h"
#include "tools/trace/WireCommands.h"

namespace J4Tool {

namespace {

constexpr int DeepestShown = 20;  // calls that never end would lead out of sight
constexpr size_t LongestWord = 60;
constexpr size_t LongestShown = 48;

/// A text in one line, and not more of it than can be taken in.
std::string Short(const std::string& text, size_t longest)
{
    std::string line;
    for (const char character : text) {
        line += character == '\n' ? std::string(" | ") : std::string(1, character);
    }
    return line.size() <= longest ? line : line.substr(0, longest - 3) + "...";
}

std::string Arguments(const J4Trace::JournalEntry& entry)
{
    std::string text = "(";
    for (const std::string& argument : entry.arguments) {
        text += (text.size() > 1 ? ", " : "") + Short(argument, LongestWord);
    }
    return text + ")";
}

std::string Outcome(const J4Trace::JournalEntry& entry)
{
    std::string text = " =";
    if (entry.status) {
        text += " " + std::to_string(*entry.status);
    }
    if (entry.result) {
        text += (entry.status ? ": " : " ") + Short(*entry.result, 2 * LongestWord);
    }
    return text;
}

std::string BridgeText(const std::string& name)
{
    unsigned request = 0;
    unsigned value = 0;
    const bool isRequest = std::sscanf(name.c_str(), "control %u %u", &request, &value) == 2;
    const std::string words = isRequest ? BridgeRequestText(request, value) : std::string();
    return "USB " + name + (words.empty() ? "" : ": " + words);
}

}  // namespace

DialogueLine Dialogue::LineOf(const TraceEvent& event)
{
    const J4Trace::JournalEntry& entry = event.entry;
    DialogueLine line{.time = event.time, .kind = entry.kind};
    line.isFailure = entry.status.value_or(0) != 0;
    switch (entry.kind) {
    case Kind::Call:
        line.text = entry.name + Arguments(entry);
        break;
    case Kind::Return:
        line.text = entry.name + Outcome(entry);
        break;
    case Kind::Library:
        line.text = "instrument " + entry.name + Arguments(entry) + Outcome(entry);
        break;
    case Kind::Samples:
        line.text = Plural(entry.count, "sample") + " of " + entry.name + " since " +
                    FixedText(static_cast<double>(entry.begin) * 1e-6, 3) + " s";
        break;
    case Kind::Usb:
        line.text = BridgeText(entry.name) + (entry.result ? Outcome(entry) : "");
        break;
    default: {
        const WireFrame frame(entry.name);
        const std::string shown = Short(entry.name, LongestShown);
        line.text = (entry.kind == Kind::Sent ? "-> " : "<- ") + shown +
                    std::string(shown.size() < 20 ? 20 - shown.size() : 0, ' ') + "  " + frame.Text();
        line.isFailure = frame.IsFailure();
        break;
    }
    }
    return line;
}

void Dialogue::Add(const TraceEvent& event)
{
    DialogueLine line = LineOf(event);
    const bool isCall = event.entry.kind == Kind::Call;
    const bool isReturn = event.entry.kind == Kind::Return;
    if (isReturn && depth > 0) {
        --depth;
    }
    line.depth = std::min(depth, DeepestShown);
    if (isCall) {
        ++depth;
    }
    isQuiet = isQuiet && !line.isFailure && (isCall || isReturn || event.entry.kind == Kind::Library);
    signature += std::to_string(static_cast<int>(event.entry.kind)) + event.entry.name + "\n";
    call.push_back(std::move(line));
    if (depth == 0) {
        EndCall();
    }
}

void Dialogue::End()
{
    EndCall();
    TellRepeated();
}

void Dialogue::EndCall()
{
    if (!isWhole && isQuiet && !call.empty() && signature == lastSignature) {
        ++repeated;
        last = call.back();
    } else {
        TellRepeated();
        for (const DialogueLine& line : call) {
            listener(line);
        }
        lastSignature = isQuiet ? signature : std::string();
    }
    call.clear();
    signature.clear();
    isQuiet = true;
}

void Dialogue::TellRepeated()
{
    if (const uint64_t count = std::exchange(repeated, 0); count > 0) {
        last.text = "... and " + Plural(count, "call") + " like it";
        last.kind = Kind::Call;
        listener(last);
    }
}

}  // namespace J4Tool
