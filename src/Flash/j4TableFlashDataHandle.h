// The way to the table's configuration block: reads it once, keeps it, hands out copies, and writes a
// changed block back with the erase and program sequence that the flash needs.
#pragma once

#include <cstdint>
#include <vector>

#include "Utilities/Tools/SmartPointer.h"
#include "src/Communication/j4TableComManager.h"
#include "src/Flash/j4TableFlashData.h"

namespace Kestrelon::DeviceDriver::J4T {

class j4TableFlashDataHandle {
public:
    /// Nothing is read yet.
    explicit j4TableFlashDataHandle(const Utilities::Tools::SmartPointer<Communication::j4TableComManager>& comManager);

    /// A copy of the block, which is read from the table when it is not known yet.
    /// @throws EEPromException for a block that is not usable
    j4TableFlashData GetCachedFlashData();

    /// Writes the block; its version mark, block number and checksum are set. The table's controller is
    /// reset by it, and the next reader reads the flash again.
    /// @throws EEPromException for a block that can't be written, before the table is changed
    void WriteToFlash(j4TableFlashData& data);

    /// The table's white base.
    /// @param white         receives 36 reflectances
    /// @param transferTime  receives when they were written, seconds since 1970
    /// @throws WhiteBaseException when they are not usable
    void GetWhitebaseCorrection(std::vector<float>& white, int32_t& transferTime);

    /// Writes a new white base. @throws WhiteBaseException before anything is written
    void SynchronizeWhitebases(const std::vector<float>& white);

private:
    j4TableFlashData LoadFromFlash();
    static void CheckWhiteData(const std::vector<float>& white);
    static uint32_t CharID2LongID(uint8_t id);

    Utilities::Tools::SmartPointer<j4TableFlashData> cachedData;
    Utilities::Tools::SmartPointer<Communication::j4TableComManager> comManager;
};

}  // namespace Kestrelon::DeviceDriver::J4T
