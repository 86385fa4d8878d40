// A moment in time, as the table's flash stores it: seconds since 1 January 1970, UTC.
#pragma once

#include <cstdint>
#include <string>

namespace Kestrelon::Utilities::Tools {

class DateTime {
public:
    /// Reads the clock.
    DateTime();

    /// Stores the current time.
    void SetNow();

    /// The low 32 bits of the time; negative after the year 2038.
    int32_t GetLongTime() const;

private:
    int64_t time = 0;
    std::string dateTimeFormat = "%Y-%m-%d/%H:%M:%S";
    std::string dateFormat = "%Y-%m-%d";
    std::string timeFormat = "%H:%M:%S";
};

}  // namespace Kestrelon::Utilities::Tools
