#include "Generic/Configuration/Property.h"

#include <cstddef>

#include "Generic/Utilities/EndianConversion.h"
#include "Utilities/Exceptions/Exceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"

namespace Kestrelon::DeviceDriver::Generic::Configuration {

using Kestrelon::Utilities::Exceptions::RuntimeException;
using Utilities::EndianConversion;

namespace {

constexpr unsigned ElementSize = 4;

}  // namespace

Property::Property(int32_t value)
try {
    Assign(value);
}
J4T_TRACE_FRAME

Property::Property(float value)
try {
    Assign(value);
}
J4T_TRACE_FRAME

Property::Property(const LongVector& values)
try {
    Assign(values);
}
J4T_TRACE_FRAME

Property::Property(const FloatVector& values)
try {
    Assign(values);
}
J4T_TRACE_FRAME

unsigned Property::SizeOf() const
{
    switch (type) {
    case TypeLong:
    case TypeLongVector:
        return ElementSize * static_cast<unsigned>(longs.size());
    case TypeFloat:
    case TypeFloatVector:
        return ElementSize * static_cast<unsigned>(floats.size());
    default:
        return 0;
    }
}

int32_t Property::AsLong() const
try {
    return longs.at(0);
}
J4T_TRACE_FRAME

float Property::AsFloat() const
try {
    return floats.at(0);
}
J4T_TRACE_FRAME

std::vector<uint8_t> Property::AsByteVector(bool bigEndian) const
try {
    std::vector<uint8_t> bytes(SizeOf());
    switch (type) {
    case TypeLong:
    case TypeLongVector:
        for (std::size_t i = 0; i < longs.size(); ++i) {
            EndianConversion::LongToByteArray(static_cast<uint32_t>(longs[i]), bytes.data() + ElementSize * i,
                                              bigEndian);
        }
        break;
    case TypeFloat:
    case TypeFloatVector:
        for (std::size_t i = 0; i < floats.size(); ++i) {
            EndianConversion::FloatToByteArray(floats[i], bytes.data() + ElementSize * i, bigEndian);
        }
        break;
    default:
        throw RuntimeException("Invalid configuration data type.");
    }
    return bytes;
}
J4T_TRACE_FRAME

void Property::Assign(int32_t value)
try {
    AssignInternal(LongVector(1, value), TypeLong);
}
J4T_TRACE_FRAME

void Property::Assign(float value)
try {
    AssignInternal(FloatVector(1, value), TypeFloat);
}
J4T_TRACE_FRAME

void Property::Assign(const LongVector& values)
try {
    AssignInternal(values, TypeLongVector);
}
J4T_TRACE_FRAME

void Property::Assign(const FloatVector& values)
try {
    AssignInternal(values, TypeFloatVector);
}
J4T_TRACE_FRAME

void Property::AssignInternal(const LongVector& values, int newType)
try {
    longs = values;
    floats.clear();
    type = newType;
}
J4T_TRACE_FRAME

void Property::AssignInternal(const FloatVector& values, int newType)
try {
    floats = values;
    longs.clear();
    type = newType;
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::Generic::Configuration
