#include "src/Flash/j4TableFlashData.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "Generic/Utilities/EndianConversion.h"
#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/StaticObject.h"
#include "src/SpectrumLength.h"

namespace Kestrelon::DeviceDriver::J4T {

using Generic::Configuration::Properties;
using Generic::Configuration::Property;
using Generic::Utilities::EndianConversion;
using Utilities::Exceptions::ResourceException;

namespace {

constexpr uint32_t WordSize = 4;
constexpr uint32_t SmallestBlock = 16;
constexpr uint32_t LargestBlock = 8192;

/// Word at an offset; bytes beyond the data count as 0.
uint32_t WordAt(const std::vector<uint8_t>& data, std::size_t offset)
{
    uint8_t bytes[WordSize] = {};
    if (offset < data.size()) {
        const std::size_t available = std::min<std::size_t>(WordSize, data.size() - offset);
        std::copy_n(data.begin() + static_cast<std::ptrdiff_t>(offset), available, bytes);
    }
    uint32_t word = 0;
    EndianConversion::ByteArrayToLong(bytes, word, false);
    return word;
}

Property::LongVector LongsAt(const std::vector<uint8_t>& data, std::size_t offset, std::size_t count)
{
    Property::LongVector values(count);
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = static_cast<int32_t>(WordAt(data, offset + WordSize * i));
    }
    return values;
}

Property::FloatVector FloatsAt(const std::vector<uint8_t>& data, std::size_t offset, std::size_t count)
{
    Property::FloatVector values(count);
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = std::bit_cast<float>(WordAt(data, offset + WordSize * i));
    }
    return values;
}

Properties MakeDefaults()
{
    Properties defaults;
    const auto addLongs = [&defaults](uint16_t first, uint16_t last) {
        for (uint16_t id = first; id <= last; ++id) {
            defaults.SetProperty(id, Property(int32_t{-1}));
        }
    };
    // The order is the layout.
    addLongs(1, 3);
    addLongs(1001, 1014);
    addLongs(2001, 2005);
    defaults.SetProperty(FlashId::WhiteBase, Property(Property::FloatVector(SpectrumLength, 0.0f)));
    addLongs(3001, 3002);
    defaults.SetProperty(FlashId::CalibratedIntegrationTime, Property(0.0f));
    defaults.SetProperty(3099, Property(Property::LongVector(25, -1)));
    addLongs(3100, 3102);
    addLongs(FlashId::Checksum, FlashId::Checksum);
    return defaults;
}

}  // namespace

j4TableFlashData::j4TableFlashData(const std::vector<uint8_t>& data)
try {
    ParseData(data);
}
J4T_TRACE_FRAME

uint32_t j4TableFlashData::GetConfigDataSize(const std::vector<uint8_t>& data)
try {
    if (data.size() < WordSize) {
        throw EEPromException("Too less flash data.");
    }
    const uint32_t size = WordAt(data, 0);
    if (size < SmallestBlock || size > LargestBlock) {
        throw EEPromException("Invalid flash size.");
    }
    return size;
}
J4T_TRACE_FRAME

const Properties& j4TableFlashData::GetDefaultProperties()
try {
    return Utilities::Tools::StaticObject<MakeDefaults>::Get();
}
J4T_TRACE_FRAME

void j4TableFlashData::ParseData(const std::vector<uint8_t>& data)
try {
    const uint32_t size = GetConfigDataSize(data);
    SetProperty(FlashId::Size, Property(static_cast<int32_t>(size)));
    if (data.size() < size) {
        throw EEPromException("Too less flash data.");
    }
    std::size_t offset = WordSize;
    const std::size_t end = size - WordSize;
    for (const auto& [key, defaultValue] : GetDefaultProperties().GetDatastore()) {
        if (key == FlashId::Size || key == FlashId::Checksum) {
            continue;
        }
        Property value = defaultValue;
        switch (value.GetType()) {
        case Property::TypeLong:
            value.Assign(LongsAt(data, offset, 1).front());
            break;
        case Property::TypeFloat:
            value.Assign(FloatsAt(data, offset, 1).front());
            break;
        case Property::TypeLongVector:
            value.Assign(LongsAt(data, offset, value.AsLongVector().size()));
            break;
        case Property::TypeFloatVector:
            value.Assign(FloatsAt(data, offset, value.AsFloatVector().size()));
            break;
        default:
            throw ResourceException("Unknown default Property (id " + std::to_string(key) + ")");
        }
        SetProperty(key, value);
        offset += value.SizeOf();
        if (offset >= end) {
            break;
        }
    }
    if (offset < end) {
        SetProperty(FlashId::UnknownWords, Property(LongsAt(data, offset, (end - offset) / WordSize)));
    }
    SetProperty(FlashId::Checksum, Property(static_cast<int32_t>(WordAt(data, end))));
}
J4T_TRACE_FRAME

std::vector<uint8_t> j4TableFlashData::Dump(int format) const
try {
    std::vector<uint8_t> bytes(SizeOf(format));
    Properties::Dump(bytes.begin(), bytes.end(), format, false);
    return bytes;
}
J4T_TRACE_FRAME

std::list<uint16_t> j4TableFlashData::KeysWithoutChecksum() const
{
    std::list<uint16_t> keys = GetPropertyKeys();
    keys.remove(FlashId::Checksum);
    return keys;
}

uint32_t j4TableFlashData::CalculateChecksum() const
try {
    uint32_t sum = 0;
    for (const uint16_t key : KeysWithoutChecksum()) {
        for (const uint8_t byte : GetProperty(key).AsByteVector(true)) {
            sum -= byte;
        }
    }
    return sum;
}
J4T_TRACE_FRAME

void j4TableFlashData::CheckChecksum() const
try {
    if (static_cast<uint32_t>(GetProperty(FlashId::Checksum).AsLong()) != CalculateChecksum()) {
        throw EEPromException("Checksum error in flash.");
    }
}
J4T_TRACE_FRAME

void j4TableFlashData::UpdateChecksum()
try {
    Properties items;
    for (const uint16_t key : KeysWithoutChecksum()) {
        items.SetProperty(key, GetProperty(key));
    }
    GetDatastore() = items.GetDatastore();
    SetProperty(FlashId::Checksum, Property(static_cast<int32_t>(CalculateChecksum())));
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::J4T
