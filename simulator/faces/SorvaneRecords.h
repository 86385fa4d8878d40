// The records that a caller hands to the private operations of the instrument's library. Their layouts are
// the caller's; nothing here may be moved.
#pragma once

#include <cstddef>
#include <cstdint>

namespace J4Bench {

/// Operation 0: install or remove the correction of the current measurement mode.
struct J4CorrectionRequest {
    uint8_t active;       ///< 1 installs, 0 removes
    const char* name;     ///< "j4TavlaCorrection"
    const float* vector;  ///< 36 factors; null when active is 0
};

/// Operation 1: replace the sample store.
struct J4SampleList {
    const float* const* samples;  ///< each points to 36 values
    int32_t count;
};

/// Operation 5: the travel at each sample of the next counted scan.
struct J4PositionList {
    const uint16_t* positions;  ///< tenths of a millimetre
    uint64_t count;
};

static_assert(offsetof(J4CorrectionRequest, name) == 8 && offsetof(J4CorrectionRequest, vector) == 16);
static_assert(offsetof(J4SampleList, count) == 8);
static_assert(offsetof(J4PositionList, count) == 8);

}  // namespace J4Bench
