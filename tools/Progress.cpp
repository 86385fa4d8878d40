#include "tools/Progress.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "tools/Json.h"
#include "tools/Platform.h"
#include "tools/Plural.h"
#include "tools/Terminal.h"

namespace J4Tool {

namespace {

/// The event, how far the scan is, and what else the event tells.
Json StateLine(const char* event, const ScanState& state, const Json& more = Json::object())
{
    Json line = {{"event", event},
                 {"rowsDone", state.rowsDone},
                 {"rows", state.rows},
                 {"patchesDone", state.patchesDone},
                 {"patches", state.patches}};
    line.update(more);
    return line;
}

std::string Clock(double seconds)
{
    char text[32];
    const long whole = std::lround(std::max(seconds, 0.0));
    std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
    return text;
}

}  // namespace

std::string Progress::Bar(const ScanState& state, double secondsLeft, int width)
{
    std::string line = " " + std::to_string(state.rowsDone) + "/" + Plural(state.rows, "row") + ", " +
                       std::to_string(state.patchesDone) + "/" + Plural(state.patches, "patch") + ", " +
                       Clock(secondsLeft) + " left";
    const int room = width - static_cast<int>(line.size()) - 3;
    if (room >= 5) {
        const size_t length = static_cast<size_t>(std::min(room, 40));
        const size_t full = state.patches == 0 ? length : length * state.patchesDone / state.patches;
        line = "[" + std::string(full, '#') + std::string(length - full, '.') + "]" + line;
    }
    return line.substr(0, static_cast<size_t>(std::max(width - 1, 0)));
}

double Progress::SecondsLeft(const ScanState& state) const
{
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    const size_t done = state.rowsDone - rowsAtStart;
    return done == 0 ? 0.0
                     : passed.count() / static_cast<double>(done) * static_cast<double>(state.rows - state.rowsDone);
}

void Progress::Step(const std::string& what)
{
    if (form == Form::Json) {
        PrintJson({{"event", "step"}, {"step", what}}, output);
    } else {
        Line(what);
    }
}

void Progress::Notice(const std::string& what)
{
    if (form == Form::Json) {
        PrintJson({{"event", "notice"}, {"notice", what}}, output);
    } else {
        Line(what);
    }
}

void Progress::Started(const ScanState& state)
{
    begin = std::chrono::steady_clock::now();
    rowsAtStart = state.rowsDone;
    if (form == Form::Json) {
        PrintJson(StateLine("start", state), output);
    } else if (form == Form::Bar) {
        Draw(state);
    }
}

void Progress::RowBegins(const ScanState& state, size_t row, ReadingWay way)
{
    if (form == Form::Json) {
        Json more = {{"row", row + 1}, {"way", WayNames[static_cast<size_t>(way)]}};
        if (state.repeats > 1) {
            more["repeat"] = state.repeat;
        }
        PrintJson(StateLine("rowBegins", state, more), output);
        return;
    }
    now = "row " + std::to_string(row + 1) + " of " + std::to_string(state.rows) + " " +
          WayWords[static_cast<size_t>(way)];
    if (state.repeats > 1) {
        now += ", scan " + std::to_string(state.repeat) + " of " + std::to_string(state.repeats);
    }
    if (form == Form::Bar) {
        Draw(state);
    } else {
        Line(now);
    }
}

void Progress::RowDone(const ScanState& state, size_t row)
{
    if (form == Form::Json) {
        PrintJson(
            StateLine("row", state, {{"row", row + 1}, {"secondsLeft", std::round(SecondsLeft(state) * 10.0) / 10.0}}),
            output);
    } else if (form == Form::Bar) {
        Draw(state);
    }
}

void Progress::RowFailed(const ScanState& state, size_t row, int attempt, const std::string& reason, bool again)
{
    if (form == Form::Json) {
        PrintJson(StateLine(again ? "retry" : "rowFailed", state,
                            {{"row", row + 1}, {"attempt", attempt}, {"reason", reason}}),
                  output);
        return;
    }
    Line("Row " + std::to_string(row + 1) + ", attempt " + std::to_string(attempt) + ": " + reason +
         (again ? "; once more" : ""));
    if (form == Form::Bar) {
        Draw(state);
    }
}

void Progress::Differences(const J4Chart::DifferenceSummary& summary, const std::string& words)
{
    if (form == Form::Json) {
        PrintJson({{"event", "differences"},
                   {"formula", "CIEDE2000"},
                   {"patches", summary.Count()},
                   {"mean", summary.Mean()},
                   {"percentile95", summary.Percentile95()},
                   {"maximum", summary.Maximum()}},
                  output);
    } else {
        Line(words);
    }
}

void Progress::Repeats(size_t repeats, const J4Chart::DifferenceSummary& spreads)
{
    if (form == Form::Json) {
        PrintJson({{"event", "repeats"},
                   {"formula", "CIEDE2000"},
                   {"repeats", repeats},
                   {"mean", spreads.Mean()},
                   {"percentile95", spreads.Percentile95()},
                   {"maximum", spreads.Maximum()}},
                  output);
        return;
    }
    char text[160];
    std::snprintf(text, sizeof text,
                  "Each row was scanned %zu times; the scans of a patch differ from their mean by %.3f in the mean, at "
                  "most by %.3f (CIEDE2000)",
                  repeats, spreads.Mean(), spreads.Maximum());
    Line(text);
}

void Progress::Ended(const ScanState& state, const std::string& result, const std::string& fileName)
{
    if (form == Form::Json) {
        PrintJson(StateLine("end", state, {{"result", result}, {"file", fileName}}), output);
        return;
    }
    Line(std::to_string(state.patchesDone) + " of " + Plural(state.patches, "patch") +
         (state.patches == 1 ? " is" : " are") + " measured" + (fileName.empty() ? "" : ": ") + fileName);
}

void Progress::Draw(const ScanState& state)
{
    const int width = Platform::TerminalWidth();
    std::string bar = Bar(state, SecondsLeft(state), width);
    if (const size_t room = static_cast<size_t>(std::max(width - 1, 0)); bar.size() + 2 + now.size() <= room) {
        bar += now.empty() ? "" : "  " + now;
    }
    std::fputs("\r", output);
    Print(output, "%-*s", std::max(width - 1, 0), bar.c_str());
    std::fflush(output);
    lineOpen = true;
}

/// A line of its own, under the bar where that is shown.
void Progress::Line(const std::string& text)
{
    Print(output, "%s%s\n", lineOpen ? "\n" : "", text.c_str());
    std::fflush(output);
    lineOpen = false;
}

}  // namespace J4Tool
