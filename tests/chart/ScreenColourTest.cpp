#include "chart/colour/ScreenColour.h"

#include <gtest/gtest.h>

namespace J4Chart {
namespace {

TEST(ScreenColour, CornersOfTheScreensGamut)
{
    struct Case {
        double l, a, b;  // CIELab under D50 of the sRGB primaries, as ICC profiles of sRGB hold them
        const char* code;
        bool inGamut;
    };
    const Case cases[] = {
        {100.0, 0.0, 0.0, "#ffffff", true},
        {0.0, 0.0, 0.0, "#000000", true},
        {53.585, 0.0, 0.0, "#808080", true},
        {54.29, 80.80, 69.89, "#ff0000", true},
        {87.82, -79.28, 80.99, "#00ff00", true},
        {29.57, 68.30, -112.03, "#0000ff", true},
        // from the adaptation's cone matrix and the primaries' chromaticities, computed apart
        {75.0, 10.0, 60.0, "#e0b044", true},
        {35.0, -25.0, 40.0, "#355c02", true},
        // more vivid than any of them
        {50.0, -120.0, 20.0, "#009a50", false},
        {105.0, 0.0, 0.0, "#ffffff", false},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.code);
        const ScreenColour colour = ScreenColourOf({test.l, test.a, test.b});
        EXPECT_EQ(colour.code, test.code);
        EXPECT_EQ(colour.inGamut, test.inGamut);
    }
}

}  // namespace
}  // namespace J4Chart
