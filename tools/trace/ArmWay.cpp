#include "tools/trace/ArmWay.h"

#include <algorithm>
#include <cmath>

#include "chart/MotionProfile.h"
#include "chart/ScanMotion.h"
#include "src/TableFacts.h"

namespace J4Tool {

namespace Commands = Kestrelon::DeviceDriver::J4T::Communication::Commands;

namespace {

using Kestrelon::DeviceDriver::J4T::TenthsPerMillimetre;

constexpr size_t Visor = 1;  // bits of a move's selector
constexpr size_t Scan = 2;

Point PlaceOf(const WireFrame& frame)
{
    const auto millimetres = [&frame](size_t place) {
        return static_cast<double>(frame.Values()[place]) / TenthsPerMillimetre;
    };
    return {millimetres(0), millimetres(1)};
}

}  // namespace

void ArmWay::Add(const TraceEvent& event)
{
    now = event.time;
    if (!event.IsFrame()) {
        return;
    }
    const WireFrame frame(event.entry.name);
    const bool isMotion = frame.Is(Commands::MoveStart) || frame.Is(Commands::GoHome);
    if (frame.IsRequest()) {
        if (isMotion && !frame.IsFailure()) {
            Begin(frame, event.time);
        }
        if (frame.Is(Commands::SetScanDelay) && frame.Values().size() == 1) {
            scanDelay = frame.Values()[0] * 1000;
        }
        selectorAsked = frame.Is(Commands::GetPosition) ? std::optional(frame.Selector()) : std::nullopt;
        if (frame.Is(Commands::Reset) && running) {
            Finish(0, event.time);
        }
        return;
    }
    if (!frame.HasChecksum()) {
        return;
    }
    if (isMotion && running) {
        if (frame.Acknowledge() == '!') {
            running->begin = event.time;
        } else if (frame.Acknowledge() == '$') {
            Finish(frame.Error(), event.time);
        } else {
            running.reset();
        }
    } else if (frame.Is(Commands::GetRampData) && running && frame.Values().size() == 3) {
        rampMilliseconds = frame.Values()[0];
        duration = (frame.Values()[0] + frame.Values()[1]) * 1000;
    } else if (frame.Is(Commands::GetPosition) && selectorAsked == size_t{0} && frame.Values().size() == 2) {
        Report(PlaceOf(frame));
    }
}

void ArmWay::End()
{
    if (running) {
        running->isUnfinished = true;
        Finish(0, std::max(now, running->begin));
    }
}

void ArmWay::Begin(const WireFrame& request, int64_t time)
{
    if (running) {
        End();
    }
    ArmMotion motion;
    motion.start = place;
    motion.begin = time;
    if (request.Is(Commands::GoHome)) {
        motion.kind = ArmMotion::Kind::Home;
    } else if (request.Values().size() == 3) {
        motion.kind = (request.Selector() & Scan) != 0 ? ArmMotion::Kind::Scan : ArmMotion::Kind::Move;
        motion.isVisor = (request.Selector() & Visor) != 0;
        motion.end = PlaceOf(request);
        motion.speed = static_cast<double>(request.Values()[2]);
    }
    running = motion;
    rampMilliseconds = 0;
    duration = 0;
}

void ArmWay::Finish(int error, int64_t time)
{
    ArmMotion motion = *running;
    running.reset();
    motion.begin = std::min(motion.begin, time);
    motion.stop = time;
    motion.error = error;
    if (duration == 0 && motion.start && motion.end && motion.speed > 0.0) {
        const double distance = std::hypot(motion.end->x - motion.start->x, motion.end->y - motion.start->y);
        const J4Chart::MotionProfile profile(distance, motion.speed, J4Chart::ScanMotion::UsualAcceleration);
        rampMilliseconds = std::llround(profile.AccelerationEnd() * 1e3);
        duration = std::llround(profile.Duration() * 1e6);
    }
    if (duration > 0 && error == 0 && !motion.isUnfinished) {
        // The end of a scan is heard of only when its samples are taken.
        const bool isScan = motion.kind == ArmMotion::Kind::Scan;
        motion.begin = isScan ? std::min(motion.begin + scanDelay, time) : std::max(motion.begin, time - duration);
        motion.stop = std::min(time, motion.begin + duration);
    }
    motion.acceleration = std::min(rampMilliseconds * 1000, (motion.stop - motion.begin) / 2);
    if (error != 0) {
        motion.end.reset();
    }
    place = motion.end;
    motions.push_back(motion);
}

void ArmWay::Report(Point reported)
{
    if (running) {
        return;
    }
    place = reported;
    if (!motions.empty() && (!motions.back().end || motions.back().isVisor)) {
        motions.back().end = reported;
        motions.back().isVisor = false;
    }
}

}  // namespace J4Tool
