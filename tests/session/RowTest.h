// A session with a row of four patches on the chart: the table is ready, and scans of it find what lies there.
#pragma once

#include <cstdio>
#include <fstream>

#include "tests/session/Session.h"
#include "tests/support/ChartText.h"

namespace J4Test {

struct RowTest : SessionTest {
    /// Reflectance of each patch.
    static constexpr float patches[] = {0.2f, 0.6f, 0.1f, 0.4f};

    /// A row of four patches of 20 mm from x 200 to 280, at y 250, and the table ready to scan it.
    static void PrepareRow()
    {
        constexpr const char* chartFile = "session_row.cgats";
        std::vector<FlatPatch> row;
        for (const float reflectance : patches) {
            row.push_back({"patch", 210.0 + 20.0 * static_cast<double>(row.size()), 250.0, 20.0, 20.0,
                           static_cast<double>(reflectance)});
        }
        std::ofstream(chartFile) << ChartText(row);
        Set("Simulator.ChartFile", chartFile);
        std::remove(chartFile);
        MakeReady();
        Set("MeasurementMode", "ScanningReflectance");
    }

    static J4_Result ScanRow() { return J4_Scan(192.0f, 250.0f, 288.0f, 250.0f); }

    static void ExpectPatches()
    {
        ASSERT_EQ(J4_GetNumberOfAvailableSamples(), 4);
        for (uint32_t i = 0; i < std::size(patches); ++i) {
            EXPECT_THAT(Measured(i), testing::Each(testing::FloatNear(patches[i], 0.001f))) << "patch " << i;
        }
    }
};

}  // namespace J4Test
