#include "tools/BlockReader.h"

#include <algorithm>

#include "Utilities/Tools/HexStringHelper.h"
#include "src/Communication/j4TableComFlash.h"
#include "src/Flash/j4TableFlashData.h"
#include "src/TableOperation.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace TableOperation = Kestrelon::DeviceDriver::J4T::TableOperation;
using Kestrelon::DeviceDriver::J4T::j4TableFlashData;
using Kestrelon::DeviceDriver::J4T::Communication::j4TableComFlash;
using Kestrelon::DeviceDriver::J4T::Communication::j4TableCommunication;
using Kestrelon::Utilities::Tools::HexStringHelper;

namespace {

constexpr uint32_t Timeout = 2000;  // ms
constexpr size_t HeaderSize = 5;    // start, acknowledge, command, sub-command, error
constexpr size_t EndSize = 3;       // checksum, carriage return

[[noreturn]] void Fail(const std::string& reason)
{
    throw ToolError(ExitCode::Device, "reading the table's configuration failed: " + reason,
                    "Try again; nothing was written.");
}

}  // namespace

void BlockReader::Transfer(int32_t operation, J4PrivateTableRequest& record) const
{
    functions.Private(operation, &record);
    if (record.failed != 0) {
        Fail(record.errorText);
    }
}

std::string BlockReader::Ask(const std::string& request, int32_t expected) const
{
    std::string text = ";" + request;
    J4PrivateTableRequest record{};
    record.data = text.data();
    record.length = static_cast<int32_t>(text.size());
    Transfer(TableOperation::Write, record);

    record = {};
    record.length = expected + static_cast<int32_t>(HeaderSize + EndSize);
    record.timeout = Timeout;
    Transfer(TableOperation::Read, record);
    const std::string reply(record.data, static_cast<size_t>(record.length));
    const bool isWhole = reply.size() == static_cast<size_t>(expected) + HeaderSize + EndSize &&
                         reply.starts_with(":$" + request.substr(0, 2)) && reply.ends_with('\r') &&
                         j4TableCommunication::CheckChecksum(reply.substr(0, reply.size() - 1));
    if (!isWhole) {
        Fail("the table's answer is missing or damaged");
    }
    if (reply[HeaderSize - 1] != '0') {
        Fail(std::string("the table answers with error ") + reply[HeaderSize - 1]);
    }
    return reply.substr(HeaderSize, static_cast<size_t>(expected));
}

Block BlockReader::ReadMemory(uint32_t address, uint32_t count) const
{
    Block bytes;
    while (bytes.size() < count) {
        const uint32_t part = std::min(count - static_cast<uint32_t>(bytes.size()), j4TableComFlash::LargestRead);
        const std::string request = "u8" +
                                    HexStringHelper::ToHexString(address + static_cast<uint32_t>(bytes.size()), 8) +
                                    HexStringHelper::ToHexString(part, 4);
        const Block read = HexStringHelper::ByteBlockFromHexString(Ask(request, static_cast<int32_t>(2 * part)));
        bytes.insert(bytes.end(), read.begin(), read.end());
    }
    return bytes;
}

Block BlockReader::Read() const
{
    try {
        const std::string place = Ask("k2", 14);
        const uint32_t address = HexStringHelper::LongFromHexString(place.substr(2, 4));
        const uint32_t size = j4TableFlashData::GetConfigDataSize(ReadMemory(address, 4));
        return ReadMemory(address, size);
    } catch (const ToolError&) {
        throw;
    } catch (const std::exception& error) {
        Fail(error.what());
    }
}

}  // namespace J4Tool
