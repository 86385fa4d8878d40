#include "simulator/table/TableMotors.h"

#include <utility>

#include "chart/ScanMotion.h"

namespace J4Bench {

namespace {

constexpr int64_t InitializationTime = 1500000;                                                // microseconds
constexpr double Acceleration = TenthsPerMillimetre * J4Chart::ScanMotion::UsualAcceleration;  // tenths of a millimetre
constexpr double HomeSpeed = 2000.0;  // tenths of a millimetre per second

TableMotors::Error ConfigurationError(const ConfigurationBlock& configuration)
{
    switch (configuration.GetState()) {
    case ConfigurationBlock::State::Missing:
        return TableMotors::Error::NoConfiguration;
    case ConfigurationBlock::State::Damaged:
        return TableMotors::Error::InvalidConfiguration;
    default:
        return TableMotors::Error::None;
    }
}

}  // namespace

void TableMotors::Initialize(const ConfigurationBlock& configuration, int64_t moment)
{
    const Error error = ConfigurationError(configuration);
    isReady = false;
    isHolding = false;
    operation = Operation{moment + (error == Error::None ? InitializationTime : 0), error, nullptr};
}

void TableMotors::GoHome(const ConfigurationBlock& configuration, int64_t moment, bool isBlocked)
{
    if (const Error error = MotionError(configuration); error != Error::None) {
        return Refuse(moment, moment, error);
    }
    Run(configuration.GetMachine().Tile(), HomeSpeed, moment, moment, isBlocked, &Counters::homeMovements);
}

void TableMotors::Move(const ConfigurationBlock& configuration, const Target& target, int64_t moment, int64_t begin,
                       bool isBlocked)
{
    const Machine& machine = configuration.GetMachine();
    const std::optional<Point> sensor = machine.SensorAt(target.place, target.isVisor);
    Error error = MotionError(configuration);
    if (error == Error::None && (target.speed < 1 || target.speed > machine.maximumSpeed)) {
        error = Error::SpeedOutOfRange;
    }
    if (error == Error::None && !sensor) {
        error = Error::OutOfRange;
    }
    if (error != Error::None) {
        return Refuse(moment, begin, error);
    }
    Run(*sensor, double{TenthsPerMillimetre} * target.speed, moment, begin, isBlocked, &Counters::movements);
}

TableMotors::Error TableMotors::MotionError(const ConfigurationBlock& configuration) const
{
    const Error error = ConfigurationError(configuration);
    return error == Error::None && !isReady ? Error::WrongMode : error;
}

void TableMotors::Refuse(int64_t moment, int64_t end, Error error)
{
    motion = Motion(motion.PositionAt(moment));
    operation = Operation{end, error, nullptr};
}

void TableMotors::Run(Point sensor, double speed, int64_t moment, int64_t begin, bool isBlocked,
                      uint32_t Counters::*counter)
{
    motion = Motion(motion.PositionAt(moment), sensor, begin, speed, Acceleration);
    if (isBlocked) {
        motion.StopAt((motion.Begin() + motion.End()) / 2);
    }
    isHolding = true;
    operation = Operation{motion.End(), isBlocked ? Error::CurrentLimit : Error::None, counter};
}

TableMotors::Error TableMotors::Finish()
{
    const Operation done = *std::exchange(operation, std::nullopt);
    if (done.counter != nullptr) {
        ++(counters.*done.counter);
        counters.distance += motion.DistanceAt(done.end);
    } else if (!isReady) {
        isReady = done.error == Error::None;
    }
    return done.error;
}

void TableMotors::SwitchOff(int64_t moment)
{
    motion.StopAt(moment);
    operation.reset();
    isReady = false;
    isHolding = false;
}

TableMotors::Error TableMotors::Hold(bool on)
{
    if (on && !isReady) {
        return Error::WrongMode;
    }
    isHolding = on;
    return Error::None;
}

TableMotors::Mode TableMotors::GetMode() const
{
    if (!isReady) {
        return IsRunning() ? Mode::Initializing : Mode::Off;
    }
    return IsRunning() ? Mode::Moving : isHolding ? Mode::Holding : Mode::Ready;
}

}  // namespace J4Bench
