#include "src/Communication/j4TableComInfo.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Utilities/Exceptions/Exceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/HexStringHelper.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

using Utilities::Exceptions::RuntimeException;
using Utilities::Tools::HexStringHelper;

std::vector<uint8_t> j4TableComInfo::GetStatus()
try {
    std::string reply = Ask(Commands::GetStatus);
    if (reply.size() % 2 != 0) {
        reply += '0';
    }
    return HexStringHelper::ByteBlockFromHexString(reply);
}
J4T_TRACE_FRAME

J4TableMode j4TableComInfo::GetMode()
try {
    return ConvertStatusToMode(GetStatus());
}
J4T_TRACE_FRAME

J4TableMode j4TableComInfo::ConvertStatusToMode(const std::vector<uint8_t>& status)
try {
    if (status.empty()) {
        throw RuntimeException("Status empty");
    }
    return static_cast<J4TableMode>(status.front() & 7);
}
J4T_TRACE_FRAME

void j4TableComInfo::GetFirmware(uint32_t& first, uint32_t& second, uint32_t& third)
try {
    const std::string reply = Ask(Commands::GetFirmware);
    first = HexStringHelper::LongFromHexString(reply.substr(0, 4));
    second = HexStringHelper::LongFromHexString(reply.substr(4, 4));
    third = HexStringHelper::ShortFromHexString(reply.substr(8, 2));
}
J4T_TRACE_FRAME

void j4TableComInfo::GetTableMetrics(std::array<uint32_t, 7>& metrics)
try {
    const std::string reply = Ask(Commands::GetTableMetrics);
    for (std::size_t i = 0; i < metrics.size(); ++i) {
        metrics[i] = HexStringHelper::LongFromHexString(reply.substr(8 * i, 8));
    }
}
J4T_TRACE_FRAME

void j4TableComInfo::GetRampData(uint32_t& rampUpTime, uint32_t& rampDownTime, uint16_t& rampSpeed)
try {
    const std::string reply = Ask(Commands::GetRampData);
    rampUpTime = HexStringHelper::LongFromHexString(reply.substr(0, 8));
    rampDownTime = HexStringHelper::LongFromHexString(reply.substr(8, 8));
    rampSpeed = HexStringHelper::ShortFromHexString(reply.substr(16, 4));
}
J4T_TRACE_FRAME

void j4TableComInfo::GetControllerDeviation(std::array<int32_t, 6>& deviations)
try {
    const std::string reply = Ask(Commands::GetControllerDeviation);
    for (std::size_t i = 0; i < deviations.size(); ++i) {
        deviations[i] = HexStringHelper::SignedShortFromHexString(reply.substr(4 * i, 4));
    }
}
J4T_TRACE_FRAME

void j4TableComInfo::GetControllerInfo(uint32_t& first, uint32_t& second)
try {
    const std::string reply = Ask(Commands::GetControllerInfo);
    first = HexStringHelper::ShortFromHexString(reply.substr(0, 4));
    second = HexStringHelper::ShortFromHexString(reply.substr(4, 4));
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
