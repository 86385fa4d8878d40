// Reads the patches of a row where the instrument's own recognition can't: by raw samples over which the layout is laid,
// and by single measurements. Both have checks of their own, and say what they found wrong; a row that was read along a
// line is held against single measurements beside that line.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "tools/ChartFinder.h"
#include "tools/ChartLayout.h"
#include "tools/LineScan.h"
#include "tools/Measurements.h"
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

    /// Single measurements of one patch, in three columns and three rows as far apart as it allows. Three corners that
    /// agree are enough: no scratch runs through all of them, and no speck lies under all of them unless it lies under
    /// everything that can be seen of the patch. Where they don't agree all places are measured.
    static constexpr size_t SpotsOfPatch = 9;
    static constexpr size_t FirstSpots = 3;

    /// Where they are taken, mm, three corners first.
    static std::array<Point, SpotsOfPatch> Spots(const J4Chart::Place& place);

    /// Sets the instrument up for its own recognition.
    /// @param carried  speed, mm/s
    void PrepareRecognition(int carried);

    /// Lays raw samples over the row.
    /// @param carried  speed, mm/s
    /// @return what is wrong; empty when every patch was read
    std::string Fit(const RowPlan::Pass& pass, int carried, Readings& readings);

    /// Measures singly those patches of the row for which there is no reading yet, and beside them as far as something
    /// lies on the row.
    /// @return as above
    std::string Measure(size_t row, Readings& readings);

    /// Holds a row that was read along its line against single measurements beside that line: of the patch where the
    /// travel ended, since a scratch along the row lies under all of it and can't be seen in its own samples, and of
    /// those that are far from their references. One measurement takes a sixth of what a row of thirty takes, so not
    /// every patch gets one.
    /// @param readings  those that it contradicts are taken out
    /// @return what is wrong; empty when nothing is
    std::string Confirm(const RowPlan::Pass& pass, Readings& readings);

    /// Measures again, once each, a few of the patches that an earlier scan has measured, as different from one another
    /// as there are: they tell whether the same chart still lies where it lay, and the layout is the one it was.
    /// @return what is wrong; empty when nothing is
    std::string Recheck(const Measurements& earlier);

private:
    std::optional<PatchReading> MeasureOne(size_t patch);
    std::string MeasureMissing(const ChartLayout::Row& row, Readings& readings);
    bool IsConfirmed(size_t patch, const PatchReading& reading);

    Session& session;
    const ChartLayout& layout;
    RowCheck check;
    LineScan scan;
    ChartFinder::Finding expected;
};

}  // namespace J4Tool
