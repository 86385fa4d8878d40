// One typed configuration value: a number or a vector of numbers, 32-bit integers or floats, that can
// render itself into bytes.
#pragma once

#include <cstdint>
#include <vector>

namespace Kestrelon::DeviceDriver::Generic::Configuration {

class Property {
public:
    /// Elements are 32 bits wide on every platform: the table's flash depends on it.
    using LongVector = std::vector<int32_t>;
    using FloatVector = std::vector<float>;

    enum Type : int { TypeInvalid = -1, TypeLong = 0, TypeLongVector = 1, TypeFloat = 2, TypeFloatVector = 3 };

    Property() = default;
    explicit Property(int32_t value);
    explicit Property(float value);
    explicit Property(const LongVector& values);
    explicit Property(const FloatVector& values);

    int GetType() const { return type; }

    /// Size of the binary form in bytes.
    unsigned SizeOf() const;

    /// The first integer. @throws OutOfRangeException when no integer is held
    int32_t AsLong() const;
    /// The integers; empty when floats are held.
    const LongVector& AsLongVector() const { return longs; }
    /// The first float. @throws OutOfRangeException when no float is held
    float AsFloat() const;
    /// The floats; empty when integers are held.
    const FloatVector& AsFloatVector() const { return floats; }

    /// The numbers and nothing else: no tag, no length, no padding.
    /// @throws RuntimeException for an invalid type
    std::vector<uint8_t> AsByteVector(bool bigEndian) const;

    void Assign(int32_t value);
    void Assign(float value);
    void Assign(const LongVector& values);
    void Assign(const FloatVector& values);

private:
    void AssignInternal(const LongVector& values, int newType);
    void AssignInternal(const FloatVector& values, int newType);

    FloatVector floats;
    LongVector longs;
    int type = TypeInvalid;
};

}  // namespace Kestrelon::DeviceDriver::Generic::Configuration
