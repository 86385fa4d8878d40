// The table's factory data, parsed from its block in flash: machine limits, the white base, and the few
// values that the library itself writes back.
//
// The block is a flat sequence of little-endian 32-bit words without tags: the table of defaults tells by
// its order, types and sizes what each word means. The last word is the checksum.
#pragma once

#include <cstdint>
#include <list>
#include <vector>

#include "Generic/Configuration/Properties.h"

namespace Kestrelon::DeviceDriver::J4T {

/// Ids of the values that the library reads or writes; the others are carried along.
namespace FlashId {
inline constexpr uint16_t Size = 1;  ///< of the block in bytes, this word and the checksum included
inline constexpr uint16_t VersionMark = 2;
inline constexpr uint16_t BlockNumber = 3;                   ///< third value of the block's status at the last write
inline constexpr uint16_t ArmLength = 1001;                  ///< tenths of a millimetre
inline constexpr uint16_t SensorReach = 1002;                ///< tenths of a millimetre
inline constexpr uint16_t VisorSide = 1003;                  ///< tenths of a millimetre
inline constexpr uint16_t VisorBack = 1004;                  ///< tenths of a millimetre
inline constexpr uint16_t XMax = 1009;                       ///< millimetres
inline constexpr uint16_t XMin = 1010;                       ///< millimetres
inline constexpr uint16_t YMax = 1011;                       ///< millimetres
inline constexpr uint16_t YMin = 1012;                       ///< millimetres
inline constexpr uint16_t MaxSpeed = 1013;                   ///< mm/s
inline constexpr uint16_t WhiteBase = 3000;                  ///< reflectance of the white tile, 36 values
inline constexpr uint16_t WhiteBaseTime = 3001;              ///< of the last transfer, seconds since 1970
inline constexpr uint16_t CalibratedSerial = 3002;           ///< instrument last calibrated with the placement check
inline constexpr uint16_t CalibratedIntegrationTime = 3003;  ///< its integration time, seconds
inline constexpr uint16_t UnknownWords = 3999;               ///< words beyond the known layout
inline constexpr uint16_t Checksum = 4000;
}  // namespace FlashId

class j4TableFlashData : public Generic::Configuration::Properties {
public:
    using Property = Generic::Configuration::Property;

    /// @throws EEPromException for a block that is no block; the checksum is not tested
    explicit j4TableFlashData(const std::vector<uint8_t>& data);

    /// The block's size in bytes, from its first word.
    /// @throws EEPromException for fewer than 4 bytes or a size out of 16 to 8192
    static uint32_t GetConfigDataSize(const std::vector<uint8_t>& data);

    /// @throws ResourceException for an id that the block does not hold
    Property GetProperty(uint16_t id) const { return Properties::GetProperty(id); }

    /// The values as little-endian bytes; FormatValuesOnly gives the flash image.
    std::vector<uint8_t> Dump(int format) const;

    /// What makes the sum of all bytes before the checksum, and the checksum as a number, 0 modulo 2^32.
    uint32_t CalculateChecksum() const;
    /// @throws EEPromException when the stored checksum does not match
    void CheckChecksum() const;
    /// Stores the checksum of the present values, as the last item. The size word is left alone.
    void UpdateChecksum();

private:
    static const Properties& GetDefaultProperties();
    std::list<uint16_t> KeysWithoutChecksum() const;
    void ParseData(const std::vector<uint8_t>& data);
};

}  // namespace Kestrelon::DeviceDriver::J4T
