// The record and the procedure of one scan: the table carries the instrument along a row in one motion
// while the instrument takes samples at its own pace. What connects the two is time: the table's ramp data
// tell where each sample was taken.
#pragma once

#include <cstdint>
#include <vector>

#include "Utilities/Tools/SmartPointer.h"
#include "src/Communication/j4TableComManager.h"
#include "src/Position.h"

namespace Kestrelon::DeviceDriver::J4T {

/// Lives as long as its table and is used for every scan. Positions are in PositionUnitTenthMillimetre.
class j4TableScanHandle {
public:
    explicit j4TableScanHandle(const Utilities::Tools::SmartPointer<Communication::j4TableComManager>& comManager);

    void SetScanDelay(uint16_t delay) { scanDelay = delay; }
    void SetPatchRecognition(uint8_t recognition) { patchRecognition = recognition; }

    /// Moves to start, then scans to end. The samples are in the instrument library's store afterwards; a
    /// failure on the way to end leaves none there.
    /// @param moveSpeed, scanSpeed  mm/s
    void Scan(const Position& start, const Position& end, bool isVisor, uint16_t moveSpeed, uint16_t scanSpeed);

private:
    void MoveToStartPosition(const Position& position, bool isVisor, uint16_t speed);
    void InternalScan(const Position& position, bool isVisor, uint16_t speed);
    void AbandonScan(Communication::j4TableComCommand& command);
    int32_t GetScanCharacteristics();
    void TriggerSamples();
    void CorrectSamples(uint8_t recognition);
    void CalculatePatchPositionVector(std::vector<uint16_t>& positions, int32_t count) const;
    void SetPatchRecognitionInJ4SDK(uint8_t recognition);
    void SetPositionsInJ4SDK(const std::vector<uint16_t>& positions);

    uint16_t scanDelay = 0;        ///< ms that the table waits before it moves
    uint8_t patchRecognition = 0;  ///< 0 none, 1 by samples, 2 by samples and positions
    Position startPosition;
    Position endPosition;
    uint32_t rampUpTime = 0;    ///< end of the acceleration, ms
    uint32_t rampDownTime = 0;  ///< start of the deceleration, ms
    uint16_t rampSpeed = 0;     ///< mm/s
    double integrationMs = 0.0;
    int32_t sampleCount = 0;  ///< samples that the travel lasts
    Utilities::Tools::SmartPointer<Communication::j4TableComManager> comManager;
};

}  // namespace Kestrelon::DeviceDriver::J4T
