#include "Generic/Configuration/Properties.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "Generic/Utilities/EndianConversion.h"
#include "Utilities/Exceptions/Exceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/LexicalCast.h"

namespace Kestrelon::DeviceDriver::Generic::Configuration {

using Kestrelon::Utilities::Exceptions::ResourceException;
using Kestrelon::Utilities::Tools::lexical_cast;
using Utilities::EndianConversion;

namespace {

constexpr unsigned KeySize = 2;

template <class Store>
auto Find(Store& store, uint16_t key)
{
    return std::find_if(store.begin(), store.end(), [key](const auto& item) { return item.first == key; });
}

}  // namespace

const Property& Properties::GetProperty(uint16_t key) const
try {
    const auto found = Find(datastore, key);
    if (found == datastore.end()) {
        throw ResourceException("id " + lexical_cast<std::string>(key) + " doesn't exist");
    }
    return found->second;
}
J4T_TRACE_FRAME

void Properties::SetProperty(uint16_t key, const Property& value)
try {
    const auto found = Find(datastore, key);
    if (found == datastore.end()) {
        datastore.emplace_back(key, value);
    } else {
        found->second = value;
    }
}
J4T_TRACE_FRAME

bool Properties::Contains(uint16_t key) const { return Find(datastore, key) != datastore.end(); }

std::list<uint16_t> Properties::GetPropertyKeys() const
try {
    std::list<uint16_t> keys;
    for (const auto& item : datastore) {
        keys.push_back(item.first);
    }
    return keys;
}
J4T_TRACE_FRAME

uint16_t Properties::GetItemCount() const { return static_cast<uint16_t>(datastore.size()); }

unsigned Properties::SizeOf(int format) const
{
    unsigned size = 0;
    for (const auto& item : datastore) {
        size += item.second.SizeOf() + (format == FormatWithKeys ? KeySize : 0);
    }
    return size;
}

void Properties::Dump(ByteIterator begin, ByteIterator end, int format, bool bigEndian) const
try {
    if (static_cast<std::ptrdiff_t>(SizeOf(format)) > end - begin) {
        throw ResourceException("Configuration data dump target too small");
    }
    for (const auto& item : datastore) {
        if (format == FormatWithKeys) {
            EndianConversion::ShortToByteArray(item.first, &*begin, bigEndian);
            begin += KeySize;
        }
        const std::vector<uint8_t> bytes = item.second.AsByteVector(bigEndian);
        begin = std::copy(bytes.begin(), bytes.end(), begin);
    }
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::Generic::Configuration
