#include "src/j4TableScanHandle.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <string>

#include "Utilities/Exceptions/SDKError.h"
#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/LexicalCast.h"
#include "Utilities/Tools/StringTools.h"
#include "Utilities/Tools/WrappingArithmetic.h"
#include "src/j4Bridge.h"
#include "src/j4SpectraGuard.h"
#include "src/j4TableHelper.h"
#include "src/j4TableProperties.h"

namespace Kestrelon::DeviceDriver::J4T {

using Communication::j4TableComCommand;
using Communication::j4TableComManager;
using Utilities::Exceptions::ResourceException;
using Utilities::Tools::SmartPointer;
using Utilities::Tools::TruncateToInt32;

namespace {

/// The next multiple of ten above a sample count; a multiple is raised too.
int32_t RaisedToTen(int32_t sampleCount) { return Utilities::Tools::WrapAdd(sampleCount - sampleCount % 10, 10); }

}  // namespace

j4TableScanHandle::j4TableScanHandle(const SmartPointer<j4TableComManager>& comManager) : comManager(comManager) {}

void j4TableScanHandle::Scan(const Position& start, const Position& end, bool isVisor, uint16_t moveSpeed,
                             uint16_t scanSpeed)
try {
    startPosition = Position();
    endPosition = Position();
    rampUpTime = 0;
    rampDownTime = 0;
    rampSpeed = 0;
    integrationMs = 0.0;
    sampleCount = 0;
    SetPatchRecognitionInJ4SDK(patchRecognition);
    comManager->GetMotors()->SetScanDelay(scanDelay);
    startPosition = start;
    endPosition = end;
    MoveToStartPosition(startPosition, isVisor, moveSpeed);
    InternalScan(endPosition, isVisor, scanSpeed);
}
J4T_TRACE_FRAME

void j4TableScanHandle::MoveToStartPosition(const Position& position, bool isVisor, uint16_t speed)
try {
    comManager->GetMotors()->Move(TruncateToInt32(position.x), TruncateToInt32(position.y), speed, isVisor, false);
}
J4T_TRACE_FRAME

void j4TableScanHandle::InternalScan(const Position& position, bool isVisor, uint16_t speed)
try {
    j4TableComCommand command = comManager->GetMotors()->MoveStart(TruncateToInt32(position.x),
                                                                   TruncateToInt32(position.y), speed, isVisor, true);
    try {
        // The table moves from here on: nothing slow may stand between this and the trigger.
        sampleCount = GetScanCharacteristics();
        CorrectSamples(patchRecognition);
        TriggerSamples();
    } catch (...) {
        AbandonScan(command);
        throw;
    }
    // The end report follows the travel's real length.
    command.answerTimeout = command.ackTimeout + rampUpTime + rampDownTime + scanDelay;
    comManager->GetMotors()->MoveEnd(command);
}
J4T_TRACE_FRAME

void j4TableScanHandle::TriggerSamples()
{
    const int32_t status = Library()->J4_TriggerCountedScan(static_cast<uint32_t>(RaisedToTen(sampleCount)));
    if (status != 0) {
        const std::string message = Library()->J4_GetOption("LastError");
        const std::string extended = Library()->J4_GetOption("ExtendedErrorInformation");
        throw SDKError(status, message, Utilities::Tools::DropFirstTwoLines(extended));
    }
}

/// Leaves no half of a scan in the sample store, lets the arm go, and awaits the motion, which can't be
/// called back.
void j4TableScanHandle::AbandonScan(j4TableComCommand& command)
{
    TryStep([] { j4SpectraGuard emptyStore(false, true); });
    TryStep([this] { comManager->GetMotors()->HoldPosition(false); });
    TryStep([&] { comManager->GetMotors()->MoveEnd(command); });
}

int32_t j4TableScanHandle::GetScanCharacteristics()
try {
    const std::string seconds = Library()->J4_GetOption("IntegrationTime");
    integrationMs = static_cast<double>(Utilities::Tools::strict_lexical_cast<float>(seconds)) * 1000.0;
    if (integrationMs == 0.0) {
        throw ScanException("Integration time in j4 is 0.");
    }
    comManager->GetInfo()->GetRampData(rampUpTime, rampDownTime, rampSpeed);
    // With equal ramps the two times add up to the length of the whole travel.
    const double samples = (static_cast<double>(rampUpTime + rampDownTime) + scanDelay) / integrationMs;
    if (std::fabs(samples) > MaximumSamples) {
        throw ScanException(Utilities::Tools::Text("Too many samples in scan (", samples, ")."));
    }
    return TruncateToInt32(samples);
}
J4T_TRACE_FRAME

void j4TableScanHandle::CorrectSamples(uint8_t recognition)
try {
    std::vector<uint16_t> positions;
    switch (recognition) {
    case Recognition::None:
        return;
    case Recognition::BySamples:
        break;
    case Recognition::ByPositions:
        CalculatePatchPositionVector(positions, RaisedToTen(sampleCount));
        break;
    default:
        throw ResourceException("No patch recognition specified.");
    }
    SetPositionsInJ4SDK(positions);
}
J4T_TRACE_FRAME

/// Distance travelled at each sample, in tenths of a millimetre, for a trapezoid speed profile. The list
/// goes on past the end of the travel, where the formula of the deceleration is not bounded.
void j4TableScanHandle::CalculatePatchPositionVector(std::vector<uint16_t>& positions, int32_t count) const
try {
    positions.assign(static_cast<std::size_t>(count), 0);
    double t1 = rampUpTime / 1000.0;
    const double t2 = rampDownTime / 1000.0;
    const double v = rampSpeed * 10.0;
    if (t1 == 0.0) {
        t1 = 1e-12;
    }
    for (int32_t i = 0; i < count; ++i) {
        const double t = i * integrationMs / 1000.0;
        double s = 0.0;
        if (t <= t1) {
            s = t * t * v / t1 * 0.5;
        } else if (t <= t2) {
            s = (t - t1 * 0.5) * v;
        } else if (t > t2) {
            s = t * v - v * t1 * 0.5 - (t - t2) * (t - t2) * v / t1 * 0.5;
        } else {
            throw ScanException("invalid ramp data for position vector calculation.");
        }
        positions[static_cast<std::size_t>(i)] = static_cast<uint16_t>(TruncateToInt32(s));
    }
}
J4T_TRACE_FRAME

void j4TableScanHandle::SetPatchRecognitionInJ4SDK(uint8_t recognition)
try {
    Library()->J4_SetOption("Recognition", recognition != Recognition::None ? "yes" : "no");
}
J4T_TRACE_FRAME

void j4TableScanHandle::SetPositionsInJ4SDK(const std::vector<uint16_t>& positions)
try {
    const auto copy = std::make_unique<uint16_t[]>(positions.size());
    std::copy(positions.begin(), positions.end(), copy.get());
    J4PositionList list{copy.get(), positions.size()};
    Library()->J4_Private(PrivateOperation::Positions, &list);
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::J4T
