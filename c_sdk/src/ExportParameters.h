// The arguments of the exported call in hand, as the validator and a debugger see them.
#pragma once

#include <cstdint>

namespace Kestrelon::DeviceDriver::J4T {

/// Plain data, all zero but for what the export sets.
struct ExportParameters {
    struct FloatPosition {
        float x;
        float y;
    };

    const char* key;
    const char* value;
    int32_t index;
    int32_t reserved0;
    float* buffer;
    uint64_t bufferLength;  ///< number of floats at buffer
    uint64_t reserved1;
    uint64_t reserved2;
    int32_t* densityIndex;
    FloatPosition positionA;
    FloatPosition positionB;
    float* outX;
    float* outY;
};

}  // namespace Kestrelon::DeviceDriver::J4T
