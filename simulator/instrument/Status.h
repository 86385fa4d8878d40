// How a call to the instrument's library ends: a status and the text that goes with it.
#pragma once

#include <cstdint>
#include <string>

namespace J4Bench {

/// The statuses of the simulated library. It keeps clear of the codes from 9 on that the table's library
/// gives on its own account.
namespace Status {
inline constexpr int32_t Ok = 0;
inline constexpr int32_t DeviceFault = 1;        ///< the selected instrument has been unplugged
inline constexpr int32_t NoSuchDevice = 2;       ///< no instrument has the selected index
inline constexpr int32_t NotCalibrated = 3;      ///< calibrate in this mode first
inline constexpr int32_t CalibrationFailed = 4;  ///< nothing white lies under the instrument
inline constexpr int32_t UnknownOption = 5;      ///< no such key, or one that can't be written
inline constexpr int32_t InvalidValue = 6;       ///< an option's value or an argument is refused
inline constexpr int32_t NoSample = 7;           ///< no sample with this index
inline constexpr int32_t NotInThisMode = 8;      ///< the measurement mode can't do that
}  // namespace Status

struct Outcome {
    int32_t status = Status::Ok;
    std::string text{};  ///< empty after success

    bool Failed() const { return status != Status::Ok; }
};

/// The refusal of an option's value or an argument: "'value' is not wanted."
inline Outcome Refuse(const std::string& value, const std::string& wanted)
{
    return {Status::InvalidValue, "'" + value + "' is not " + wanted + "."};
}

}  // namespace J4Bench
