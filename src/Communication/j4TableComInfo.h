// Asks the table about itself: state, firmware, lifetime counters, ramps of the move, controller.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "src/Communication/j4TableCommunication.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

/// Low three bits of the table's first status byte.
enum J4TableMode : uint8_t {
    J4TableModeNotReady = 0,
    J4TableModeNotInitialized = 1,
    J4TableModeHold = 4,  ///< the motors hold the position; all other values mean ready
};

class j4TableComInfo : public j4TableCommunication {
public:
    using j4TableCommunication::j4TableCommunication;

    /// The status bytes.
    std::vector<uint8_t> GetStatus();
    J4TableMode GetMode();
    /// @throws RuntimeException for an empty status
    static J4TableMode ConvertStatusToMode(const std::vector<uint8_t>& status);

    /// The second value is the firmware's version.
    void GetFirmware(uint32_t& first, uint32_t& second, uint32_t& third);

    /// Lifetime reference runs, movements, distance, resets; then reference runs, movements, distance
    /// since the last service.
    void GetTableMetrics(std::array<uint32_t, 7>& metrics);

    /// Ramps of the running or last move.
    /// @param rampUpTime    end of the acceleration, ms
    /// @param rampDownTime  start of the deceleration, ms
    /// @param rampSpeed     speed between them, mm/s
    void GetRampData(uint32_t& rampUpTime, uint32_t& rampDownTime, uint16_t& rampSpeed);

    void GetControllerDeviation(std::array<int32_t, 6>& deviations);
    void GetControllerInfo(uint32_t& first, uint32_t& second);
};

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
