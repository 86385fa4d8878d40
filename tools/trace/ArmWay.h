// The way of a table's arm out of the frames of a trace: where each motion begins and ends, when, how, and whether it was
// a scan. What the frames do not tell is made up as little as possible: between them a motion has equal ramps.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tools/Point.h"
#include "tools/trace/TraceReader.h"
#include "tools/trace/WireCommands.h"

namespace J4Tool {

struct ArmMotion {
    enum class Kind { Move, Scan, Home };

    Kind kind = Kind::Move;
    bool isVisor = false;        ///< the places are the visor's target
    std::optional<Point> start;  ///< mm; nothing where it is not known
    std::optional<Point> end;
    double speed = 0.0;         ///< mm/s, 0 where it is not known
    int64_t begin = 0;          ///< microseconds
    int64_t stop = 0;           ///< microseconds
    int64_t acceleration = 0;   ///< microseconds of each ramp
    int error = 0;              ///< with which it ended
    bool isUnfinished = false;  ///< no end was reported
};

class ArmWay {
public:
    /// Takes the events of one table in their order.
    void Add(const TraceEvent& event);

    /// A motion that has not ended ends with the last event.
    void End();

    const std::vector<ArmMotion>& Motions() const { return motions; }

private:
    void Begin(const WireFrame& request, int64_t time);
    void Finish(int error, int64_t time);
    void Report(Point place);

    std::vector<ArmMotion> motions;
    std::optional<ArmMotion> running;
    std::optional<Point> place;
    std::optional<size_t> selectorAsked;  ///< of a position that was asked for
    int64_t scanDelay = 0;                ///< microseconds
    int64_t rampMilliseconds = 0;
    int64_t duration = 0;  ///< microseconds, 0 where the table did not tell
    int64_t now = 0;
};

}  // namespace J4Tool
