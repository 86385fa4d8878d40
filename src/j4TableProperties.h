// The run-time settings of one table: speeds, delays, thresholds. They are kept nowhere on the table and
// start from the same defaults each time.
#pragma once

#include <cstdint>

#include "Generic/Configuration/Properties.h"

namespace Kestrelon::DeviceDriver::J4T {

/// Ids of the table's properties.
namespace PropertyId {
inline constexpr uint16_t MoveSpeed = 5010;             ///< mm/s
inline constexpr uint16_t ScanSpeed = 5011;             ///< mm/s
inline constexpr uint16_t ScanDelay = 5012;             ///< ms
inline constexpr uint16_t IsVisorCoordinate = 5020;     ///< 1: positions are those of the visor
inline constexpr uint16_t UserUnit = 5030;              ///< a PositionUnit, 0 to 2
inline constexpr uint16_t PlacementCheck = 5040;        ///< not 0: on
inline constexpr uint16_t PlacementFactor = 5041;       ///< largest factor on the integration time
inline constexpr uint16_t DirtCheck = 5042;             ///< not 0: on
inline constexpr uint16_t DirtCheckOffset = 5043;       ///< in y, tenths of a millimetre
inline constexpr uint16_t DirtCheckLimit = 5044;        ///< largest colour difference
inline constexpr uint16_t DirtCheckDifference = 5045;   ///< of the last check; stored only then
inline constexpr uint16_t CheckRange = 5050;            ///< 0: targets are not checked
inline constexpr uint16_t RecognitionAlgorithm = 5060;  ///< 0 none, 1 by samples, 2 by samples and positions

// Not stored: the table is asked for them at each access.
inline constexpr uint16_t FirstTableValue = 5201;
inline constexpr uint16_t FirmwareVersion = 5201;
inline constexpr uint16_t FirmwareFirst = 5202;
inline constexpr uint16_t FirmwareThird = 5203;
inline constexpr uint16_t HoldPosition = 5204;
inline constexpr uint16_t Foil = 5205;
inline constexpr uint16_t FoilButton = 5206;
inline constexpr uint16_t FirstDeviation = 5210;
inline constexpr uint16_t LastDeviation = 5215;
inline constexpr uint16_t FirstControllerInfo = 5218;
inline constexpr uint16_t SecondControllerInfo = 5219;
inline constexpr uint16_t FirstMetric = 5220;  ///< the seven lifetime counters, in the table's order
inline constexpr uint16_t LastMetric = 5226;
inline constexpr uint16_t SerialNumber = 5289;
inline constexpr uint16_t LastTableValue = 5298;
}  // namespace PropertyId

/// Values of PropertyId::RecognitionAlgorithm.
namespace Recognition {
inline constexpr int32_t None = 0;
inline constexpr int32_t BySamples = 1;
inline constexpr int32_t ByPositions = 2;
}  // namespace Recognition

class j4TableProperties : public Generic::Configuration::Properties {
public:
    using Property = Generic::Configuration::Property;

    /// All settings at their defaults.
    j4TableProperties();
    virtual ~j4TableProperties() = default;
    j4TableProperties(const j4TableProperties&) = default;
    j4TableProperties& operator=(const j4TableProperties&) = default;

    /// @throws ProperyDataException for an id without a default
    Property GetDefaultProperty(uint16_t id) const;
    void SetDefaultProperty(uint16_t id);

    /// Sets all settings back to their defaults.
    void InitializeProperties();
};

}  // namespace Kestrelon::DeviceDriver::J4T
