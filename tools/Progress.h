// Shows how a scan goes on: a bar for a person at a terminal, lines where the output is kept, one JSON object a line for a
// program.
#pragma once

#include <chrono>
#include <cstdio>

#include "chart/colour/DifferenceSummary.h"
#include "tools/ScanListener.h"

namespace J4Tool {

class Progress : public ScanListener {
public:
    enum class Form { Bar, Lines, Json };

    Progress(std::FILE* output, Form form) : output(output), form(form) {}

    void Step(const std::string& what) override;
    void Notice(const std::string& what) override;
    void RowBegins(const ScanState& state, size_t row, ReadingWay way) override;

    void Started(const ScanState& state) override;
    void RowDone(const ScanState& state, size_t row) override;
    void RowFailed(const ScanState& state, size_t row, int attempt, const std::string& reason, bool again) override;

    /// @param result  "done", "failed" or "interrupted"
    void Ended(const ScanState& state, const std::string& result, const std::string& fileName);

    /// @param words  the same for people
    void Differences(const J4Chart::DifferenceSummary& summary, const std::string& words);

    /// How far the scans of the patches lie from their means.
    void Repeats(size_t repeats, const J4Chart::DifferenceSummary& spreads);

    /// For instance "[####....] 3/6 rows, 75/150 patches, 1:20 left", as long as a line of the terminal may be.
    static std::string Bar(const ScanState& state, double secondsLeft, int width);

private:
    double SecondsLeft(const ScanState& state) const;
    void Draw(const ScanState& state);
    void Line(const std::string& text);

    std::FILE* output;
    Form form;
    bool lineOpen = false;
    std::string now;  ///< which row is read, and how
    size_t rowsAtStart = 0;
    std::chrono::steady_clock::time_point begin;
};

}  // namespace J4Tool
