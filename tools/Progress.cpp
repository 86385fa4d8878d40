#include "tools/Progress.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "tools/Json.h"
#include "tools/Platform.h"

namespace J4Tool {

namespace {

/// Writes one line: the event, how far the scan is, and what else the event tells.
void WriteLine(std::FILE* output, const char* event, const ScanState& state, const Json& more = Json::object())
{
    Json line = {{"event", event},
                 {"rowsDone", state.rowsDone},
                 {"rows", state.rows},
                 {"patchesDone", state.patchesDone},
                 {"patches", state.patches}};
    line.update(more);
    std::fprintf(output, "%s\n", JsonText(line).c_str());
    std::fflush(output);
}

}  // namespace

std::string Progress::Bar(const ScanState& state, double secondsLeft, int width)
{
    char text[160];
    const long seconds = std::lround(std::max(secondsLeft, 0.0));
    std::snprintf(text, sizeof text, " %zu/%zu rows, %zu/%zu patches, %ld:%02ld left", state.rowsDone, state.rows,
                  state.patchesDone, state.patches, seconds / 60, seconds % 60);
    std::string line = text;
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

void Progress::Started(const ScanState& state)
{
    begin = std::chrono::steady_clock::now();
    rowsAtStart = state.rowsDone;
    if (asJson) {
        WriteLine(output, "start", state);
    } else {
        Draw(state);
    }
}

void Progress::RowDone(const ScanState& state, size_t row)
{
    if (asJson) {
        WriteLine(output, "row", state,
                  {{"row", row + 1}, {"secondsLeft", std::round(SecondsLeft(state) * 10.0) / 10.0}});
    } else {
        Draw(state);
    }
}

void Progress::RowFailed(const ScanState& state, size_t row, int attempt, const std::string& reason, bool again)
{
    if (asJson) {
        WriteLine(output, again ? "retry" : "rowFailed", state,
                  {{"row", row + 1}, {"attempt", attempt}, {"reason", reason}});
    } else {
        EndLine();
        std::fprintf(output, "Row %zu, attempt %d: %s%s\n", row + 1, attempt, reason.c_str(),
                     again ? "; once more" : "");
        Draw(state);
    }
}

void Progress::Ended(const ScanState& state, const std::string& result, const std::string& fileName)
{
    if (asJson) {
        WriteLine(output, "end", state, {{"result", result}, {"file", fileName}});
    } else {
        EndLine();
        std::fprintf(output, "%zu of %zu patches are measured%s%s\n", state.patchesDone, state.patches,
                     fileName.empty() ? "" : ": ", fileName.c_str());
    }
}

void Progress::Draw(const ScanState& state)
{
    const int width = Platform::TerminalWidth();
    const std::string bar = Bar(state, SecondsLeft(state), width);
    std::fprintf(output, "\r%-*s", std::max(width - 1, 0), bar.c_str());
    std::fflush(output);
    lineOpen = true;
}

void Progress::EndLine()
{
    if (lineOpen) {
        std::fputs("\n", output);
        lineOpen = false;
    }
}

}  // namespace J4Tool
