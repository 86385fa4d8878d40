// A trace as lines for people: who said what to whom, indented by the calls in which it was said. Calls that are alike and
// only hand out what was measured, one behind the other, become one line.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tools/trace/TraceReader.h"

namespace J4Tool {

struct DialogueLine {
    int64_t time = 0;  ///< microseconds
    Kind kind = Kind::Call;
    int depth = 0;  ///< calls around it
    std::string text{};
    bool isFailure = false;
};

class Dialogue {
public:
    using Listener = std::function<void(const DialogueLine&)>;

    /// @param isWhole  calls that are alike get their lines too
    Dialogue(Listener listener, bool isWhole) : listener(std::move(listener)), isWhole(isWhole) {}

    void Add(const TraceEvent& event);

    /// Tells what was held back.
    void End();

    /// An event in words.
    static DialogueLine LineOf(const TraceEvent& event);

private:
    void EndCall();
    void TellRepeated();

    Listener listener;
    bool isWhole;
    int depth = 0;
    std::vector<DialogueLine> call;  ///< lines of the outermost call in hand
    bool isQuiet = true;             ///< nothing but good calls of the library in it
    std::string signature;           ///< functions in it
    std::string lastSignature;
    uint64_t repeated = 0;
    DialogueLine last;
};

}  // namespace J4Tool
