// Shows how a scan goes on: a bar for a person at a terminal, one JSON object a line for a program.
#pragma once

#include <chrono>
#include <cstdio>

#include "tools/ScanListener.h"

namespace J4Tool {

class Progress : public ScanListener {
public:
    Progress(std::FILE* output, bool asJson) : output(output), asJson(asJson) {}

    void Started(const ScanState& state) override;
    void RowDone(const ScanState& state, size_t row) override;
    void RowFailed(const ScanState& state, size_t row, int attempt, const std::string& reason, bool again) override;

    /// @param result  "done", "failed" or "interrupted"
    void Ended(const ScanState& state, const std::string& result, const std::string& fileName);

    /// For instance "[####....] 3/6 rows, 75/150 patches, 1:20 left", as long as a line of the terminal may be.
    static std::string Bar(const ScanState& state, double secondsLeft, int width);

private:
    double SecondsLeft(const ScanState& state) const;
    void Draw(const ScanState& state);
    void EndLine();

    std::FILE* output;
    bool asJson;
    bool lineOpen = false;
    size_t rowsAtStart = 0;
    std::chrono::steady_clock::time_point begin;
};

}  // namespace J4Tool
