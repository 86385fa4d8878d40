// Reads the patches of a row where the instrument's own recognition can't: by raw samples over which the layout is laid,
// and by single measurements. Both have checks of their own, and say what they found wrong.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "tools/ChartFinder.h"
#include "tools/ChartLayout.h"
#include "tools/LineScan.h"
#include "tools/PatchReading.h"
#include "tools/RowCheck.h"
#include "tools/RowPlan.h"
#include "tools/Session.h"

namespace J4Tool {

class RowReader {
public:
    /// For each patch of a row, in its order; nothing where it could not be told.
    using Readings = std::vector<std::optional<PatchReading>>;

    RowReader(Session& session, const ChartLayout& layout);

    /// Where the chart was found, and by how much samples lag.
    void Expect(const ChartFinder::Finding& finding) { expected = finding; }

    /// Measurements of one patch, across the row, of which two have to agree: a speck or a scratch then does no harm.
    static constexpr size_t SpotsOfPatch = 3;

    /// Where they are taken, mm.
    static std::array<Point, SpotsOfPatch> Spots(const J4Chart::Place& place);

    /// Sets the instrument up for its own recognition.
    /// @param carried  speed, mm/s
    void PrepareRecognition(int carried);

    /// Lays raw samples over the row.
    /// @param carried  speed, mm/s
    /// @return what is wrong; empty when every patch was read
    std::string Fit(const RowPlan::Pass& pass, int carried, Readings& readings);

    /// Measures singly those patches of the row for which there is no reading yet.
    /// @return as above
    std::string Measure(size_t row, Readings& readings);

private:
    std::optional<PatchReading> MeasureOne(size_t patch);

    Session& session;
    const ChartLayout& layout;
    RowCheck check;
    LineScan scan;
    ChartFinder::Finding expected;
};

}  // namespace J4Tool
