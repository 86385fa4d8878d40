// Hears how a scan goes on.
#pragma once

#include <cstddef>
#include <string>

#include "tools/PatchReading.h"

namespace J4Tool {

/// How far a scan is.
struct ScanState {
    size_t rowsDone = 0;
    size_t rows = 0;
    size_t patchesDone = 0;
    size_t patches = 0;
    size_t repeat = 1;   ///< of the row in hand, counted from 1
    size_t repeats = 1;  ///< how often each row is scanned
};

class ScanListener {
public:
    virtual ~ScanListener() = default;

    /// What is being done now beside the rows, for instance "calibrating".
    virtual void Step(const std::string& what) = 0;

    /// Something that a person has to know.
    virtual void Notice(const std::string& what) = 0;

    virtual void RowBegins(const ScanState& state, size_t row, ReadingWay way) = 0;

    virtual void Started(const ScanState& state) = 0;
    virtual void RowDone(const ScanState& state, size_t row) = 0;

    /// @param attempt  counted from 1
    /// @param again    the row will be tried once more
    virtual void RowFailed(const ScanState& state, size_t row, int attempt, const std::string& reason, bool again) = 0;
};

}  // namespace J4Tool
