// A small keyed store of Property values that keeps the order of insertion, because that order is the
// layout of its binary form.
#pragma once

#include <cstdint>
#include <list>
#include <utility>
#include <vector>

#include "Generic/Configuration/Property.h"

namespace Kestrelon::DeviceDriver::Generic::Configuration {

class Properties {
public:
    using Datastore = std::list<std::pair<uint16_t, Property>>;
    using ByteIterator = std::vector<uint8_t>::iterator;

    /// Dump format with each value's key in front; any other number means values alone.
    static constexpr int FormatWithKeys = 0;
    static constexpr int FormatValuesOnly = 1;

    const Datastore& GetDatastore() const { return datastore; }
    Datastore& GetDatastore() { return datastore; }

    /// @throws ResourceException for an unknown key
    const Property& GetProperty(uint16_t key) const;

    /// Overwrites in place, or appends a new key at the end.
    void SetProperty(uint16_t key, const Property& value);

    bool Contains(uint16_t key) const;

    /// All keys in list order.
    std::list<uint16_t> GetPropertyKeys() const;
    uint16_t GetItemCount() const;

    /// Size of a dump in bytes.
    unsigned SizeOf(int format) const;

    /// Writes all values in list order; bytes behind the last one are left alone.
    /// @throws ResourceException when the target is too small, before anything is written
    void Dump(ByteIterator begin, ByteIterator end, int format, bool bigEndian) const;

private:
    Datastore datastore;
};

}  // namespace Kestrelon::DeviceDriver::Generic::Configuration
