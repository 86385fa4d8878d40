#include "tools/RowCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "chart/colour/Colorimetry.h"
#include "tests/tools/LayoutText.h"
#include "tools/DensityOrder.h"

namespace J4Tool {
namespace {

using Spectra = std::vector<RowCheck::Spectrum>;

Spectra RowOf(size_t row, size_t columns, float offset = 0.0f)
{
    Spectra spectra(columns);
    for (size_t column = 0; column < columns; ++column) {
        spectra[column].fill(ReflectanceOf(row, column) + offset);
    }
    return spectra;
}

Spectra Reversed(Spectra spectra)
{
    std::reverse(spectra.begin(), spectra.end());
    return spectra;
}

/// As if the first patch had melted into the paper, and the paper counted as a patch at the other end.
Spectra Shifted(Spectra spectra)
{
    spectra.erase(spectra.begin());
    spectra.emplace_back().fill(0.85f);
    return spectra;
}

TEST(RowCheck, FindsWhatWasReadInstead)
{
    constexpr size_t columns = 8;
    const RowCheck check(GridLayout(4, columns));
    struct Case {
        const char* what;
        Spectra measured;
        const char* fault;
    };
    const Case cases[] = {
        {"the row", RowOf(1, columns), ""},
        {"the row, printed a little off", RowOf(1, columns, 0.01f), ""},
        {"one patch too few", RowOf(1, columns - 1), "7 patches were found instead of 8"},
        {"one patch too many", RowOf(1, columns + 1), "9 patches were found instead of 8"},
        {"nothing", {}, "0 patches were found instead of 8"},
        {"the row before once more", RowOf(0, columns), "row 1 was read instead"},
        {"the next row backwards", Reversed(RowOf(2, columns)), "row 3 was read instead, in the wrong direction"},
        {"backwards", Reversed(RowOf(1, columns)), "the row was read in the wrong direction"},
        {"the first melted away", Shifted(RowOf(1, columns)), "the patches are shifted by one, the first is missing"},
        {"the last melted away", Reversed(Shifted(Reversed(RowOf(1, columns)))),
         "the patches are shifted by one, the last is missing"},
        {"a print far from the references", RowOf(1, columns, 0.1f), ""},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(check.Fault(1, test.measured), test.fault) << test.what;
    }
}

TEST(RowCheck, ChartsThatTellNothingAboutTheDirectionAreGood)
{
    const std::string fields = "SAMPLE_ID X Y WIDTH HEIGHT";
    // No references; and a row that is the same from both sides, printed far off.
    const RowCheck without(LayoutOf(CgatsText(fields, "a 10 10 8 8\nb 20 10 8 8\nc 30 10 8 8\n")));
    EXPECT_EQ(without.Fault(0, RowOf(2, 3)), "");
    EXPECT_EQ(without.Fault(0, RowOf(2, 2)), "2 patches were found instead of 3");
    EXPECT_EQ(without.Fault(0, RowOf(2, 4)), "4 patches were found instead of 3");
    const RowCheck symmetric(LayoutOf(
        CgatsText(fields + " LAB_L LAB_A LAB_B", "a 10 10 8 8 50 0 0\nb 20 10 8 8 30 0 0\nc 30 10 8 8 50 0 0\n")));
    EXPECT_EQ(symmetric.Fault(0, RowOf(2, 3)), "");
}

TEST(DensityOrder, AnotherOrderIsNoticedWhereColoursTellIt)
{
    // Inks that take the red, the green or the blue light; told with filters that are somewhat others.
    const auto inks = [](const std::array<size_t, 4>& order, bool coloured) {
        Measurements measurements;
        for (size_t patch = 0; patch < 12; ++patch) {
            PatchReading& reading = measurements.emplace_back().emplace();
            for (size_t band = 0; band < reading.spectrum.size(); ++band) {
                const size_t third = band < 12 ? 2 : band < 22 ? 1 : 0;
                const double coverage = static_cast<double>(patch / 3 + 1) / 4.0;
                reading.spectrum[band] =
                    static_cast<float>(!coloured || third == patch % 3 ? 1.0 - 0.9 * coverage : 0.9);
            }
            const double y = J4Chart::Colorimetry::TristimulusValues(reading.spectrum)[1] / 100.0;
            const double told[] = {reading.spectrum[30], reading.spectrum[17], reading.spectrum[5], y};
            for (size_t i = 0; i < order.size(); ++i) {
                reading.densities = reading.densities.value_or(J4Chart::Densities{});
                (*reading.densities)[i] = -1.05 * std::log10(told[order[i]]) + 0.02;
            }
        }
        return measurements;
    };
    EXPECT_EQ(DensityOrderDoubt(inks({0, 1, 2, 3}, true)), "");
    EXPECT_EQ(DensityOrderDoubt(inks({3, 0, 1, 2}, false)), "") << "greys don't tell";
    EXPECT_EQ(DensityOrderDoubt(Measurements(3)), "");
    const std::string doubt = DensityOrderDoubt(inks({3, 0, 1, 2}, true));
    EXPECT_NE(doubt.find("are its numbers 2, 3, 4, 1;"), std::string::npos) << doubt;
}

}  // namespace
}  // namespace J4Tool
