// The device object of one scanning table: owns the channel and the flash access, brings the motors to a
// ready state, and pairs the table with the one instrument, out of all that are connected, that sits in it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Generic/EventListener.h"
#include "Utilities/Tools/SmartPointer.h"
#include "src/Communication/j4TableComManager.h"
#include "src/Flash/j4TableFlashDataHandle.h"
#include "src/Position.h"
#include "src/j4TableProperties.h"
#include "src/j4TableScanHandle.h"

namespace Kestrelon::DeviceDriver::J4T {

/// Every Position in it is in PositionUnitTenthMillimetre.
class j4Table : public Generic::EventListener {
public:
    using Property = Generic::Configuration::Property;

    /// Connects to the table and, unless useableWithoutJ4 is set, pairs it.
    /// @param listener     told of device messages; may be null
    /// @param deviceIndex  which table, counted from 0
    j4Table(Generic::EventListener* listener, uint16_t deviceIndex);
    /// Leaves the table with its hold released, the foil off and the foil button working.
    ~j4Table() override;
    j4Table(const j4Table&) = delete;
    j4Table& operator=(const j4Table&) = delete;

    /// Tables work without an instrument in them; for the whole process.
    static bool useableWithoutJ4;

    void MessageFromDevice(int32_t message, const std::string& text) override;

    /// Set up completely: true after construction, false when setting it up anew has failed.
    bool IsReady() const { return ready; }
    uint16_t GetDeviceIndex() const { return deviceIndex; }
    /// Serial number of the instrument in the table; empty while none is paired.
    const std::string& GetPairedSerialNumber() const { return pairedSerialNumber; }
    const Utilities::Tools::SmartPointer<Communication::j4TableComManager>& GetComManager() const { return comManager; }

    /// A table that came back after a plug-out is paired again here.
    bool IsTableConnected();
    /// Whether the instrument in use is the one in the table.
    bool IsActiveJ4ConnectedToTable();

    Position GetPosition();
    void SetPosition(const Position& position);
    void GoToHomePosition();

    /// Calibrates both reflectance modes on the white tile and checks placement and tile; any other mode
    /// gets one plain calibration. @throws J4CalibrationFailedException
    void Calibrate();
    /// Writes a new white base to the flash and sets the table up anew.
    void SynchronizeWhitebases(const std::vector<float>& whiteBase);
    /// Measures along a row; the samples stay in the instrument's library.
    void Scan(const Position& start, const Position& end);

    /// Makes the instrument's results in the current mode refer to the table's white base.
    void SetCorrecturVectorInJ4SDK();
    void ResetCorrecturVectorInJ4SDK();

    // Numbered properties: 5201 to 5298 are read from the table each time, all others are stored here.
    Property GetProperty(uint16_t id);
    void SetProperty(uint16_t id, const Property& value);
    bool HasProperty(uint16_t id) const;
    /// A value of the configuration block.
    Property GetFlashProperty(uint16_t id);

private:
    void Initialize();
    void UnInitialize();
    void TableToReadyMode(bool isRetry);
    void SetLimits();
    void SetupJ4();
    void PrepareCurrentJ4ForTable();
    void PrepareMode(const std::string& modes, const std::string& mode);
    void SwitchJ4SDK2TableJ4(std::string& previousDeviceType);
    bool IsCurrentJ4Connected2Table();
    void CalibrateWithPlacementCheck();
    void WhiteTileDirtCheck();

    Property GetFluctuatingProperty(uint16_t id);
    void SetFluctuatingProperty(uint16_t id, const Property& value);
    int32_t FlashLong(uint16_t id);
    bool IsVisor() const;
    /// A stored speed in mm/s.
    uint16_t Speed(uint16_t id) const;

    uint16_t deviceIndex;
    Generic::EventListener* listener;
    j4TableProperties properties;
    std::string pairedSerialNumber;
    Utilities::Tools::SmartPointer<Communication::j4TableComManager> comManager;
    Utilities::Tools::SmartPointer<j4TableFlashDataHandle> flashHandle;
    Utilities::Tools::SmartPointer<j4TableScanHandle> scanHandle;
    bool ready = false;
};

}  // namespace Kestrelon::DeviceDriver::J4T
