// The motors of the arm: whether they are ready, the one operation that they run, where the arm is at any
// moment, and what they have done so far.
#pragma once

#include <cstdint>
#include <optional>

#include "simulator/ground/Point.h"
#include "simulator/table/ConfigurationBlock.h"
#include "simulator/table/Motion.h"

namespace J4Bench {

class TableMotors {
public:
    /// How an operation ends, in the numbers of the controller's replies.
    enum class Error {
        None = 0,
        OutOfRange = 1,
        SpeedOutOfRange = 2,
        CurrentLimit = 4,
        WrongMode = 7,
        NoConfiguration = 8,
        InvalidConfiguration = 9,
    };

    /// The low three bits of the controller's status.
    enum class Mode : uint32_t { Off = 0, Initializing = 1, Ready = 2, Moving = 3, Holding = 4 };

    struct Target {
        Point place;
        bool isVisor;   ///< place is the visor's, not the sensor's
        int32_t speed;  ///< mm/s
    };

    struct Counters {
        uint32_t homeMovements = 0;
        uint32_t movements = 0;
        double distance = 0.0;  ///< tenths of a millimetre
    };

    /// Motors that are off, with the arm standing somewhere.
    explicit TableMotors(Point place) : motion(place) {}

    /// The arm stands there, and so much was done before. The motors are as ready as they were.
    void Restore(Point place, const Counters& before)
    {
        motion = Motion(place);
        counters = before;
    }

    // Each of these three starts the one operation that may run. Also one that can't be done starts; it ends,
    // with its error and nothing moved, when it should have begun to move. So the host has a quiet line for
    // the questions that it puts between the acceptance of a scan and its motion.

    void Initialize(const ConfigurationBlock& configuration, int64_t moment);

    /// @param isBlocked  something stops the arm halfway
    void GoHome(const ConfigurationBlock& configuration, int64_t moment, bool isBlocked);

    /// @param begin  when the arm is to start, at moment or later
    void Move(const ConfigurationBlock& configuration, const Target& target, int64_t moment, int64_t begin,
              bool isBlocked);

    bool IsRunning() const { return operation.has_value(); }

    /// When the running operation ends.
    int64_t OperationEnd() const { return operation->end; }

    /// Ends the running operation in its own time.
    Error Finish();

    /// Switches the motors off. The arm stops where it is, and the running operation is forgotten.
    void SwitchOff(int64_t moment);

    /// Holds the arm or lets it go. A motion takes hold when it starts.
    Error Hold(bool on);

    Mode GetMode() const;
    const Motion& LastMotion() const { return motion; }
    const Counters& GetCounters() const { return counters; }

private:
    struct Operation {
        int64_t end;
        Error error;
        uint32_t Counters::*counter;  ///< nullptr: no motion
    };

    Error MotionError(const ConfigurationBlock& configuration) const;
    void Refuse(int64_t moment, int64_t end, Error error);
    void Run(Point sensor, double speed, int64_t moment, int64_t begin, bool isBlocked, uint32_t Counters::*counter);

    Motion motion;
    std::optional<Operation> operation;
    bool isReady = false;
    bool isHolding = false;
    Counters counters;
};

}  // namespace J4Bench
