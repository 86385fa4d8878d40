#include "chart/ToneCurve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "chart/ChartReader.h"
#include "chart/colour/ToneValue.h"
#include "tests/support/ChartText.h"

namespace J4Chart {
namespace {

std::vector<ToneCurve> CurvesOf(const std::string& fields, const std::string& rows, const std::string& head = "",
                                const std::vector<ToneCurve>& like = {})
{
    std::istringstream input(J4Test::CgatsText("SAMPLE_ID " + fields, rows, head));
    ChartReader::Wanted wanted;
    wanted.colours = true;
    const Chart chart = ChartReader::Read(CgatsFile::Read(input), wanted);
    std::vector<const Patch*> patches;
    for (const Patch& patch : chart.patches) {
        patches.push_back(&patch);
    }
    return ToneCurve::Find(DeviceValues(chart), patches, like);
}

TEST(ToneValue, OfReflectancesDensitiesAndTristimulusValues)
{
    EXPECT_NEAR(ToneValue::OfReflectances(0.85, 0.05, 0.45), 50.0, 1e-9);
    EXPECT_NEAR(ToneValue::OfDensities(0.07, 1.45, 0.38), 53.24160, 0.00001);
    // Computed apart, the second solid on the straight piece near black.
    const Colorimetry::Triple& white = Colorimetry::White();
    const auto of = [&](double x, double y, double z) {
        return Colorimetry::Triple{x * white[0], y * white[1], z * white[2]};
    };
    EXPECT_NEAR(ToneValue::OfTristimulus(of(0.9, 0.9, 0.9), of(0.1, 0.2, 0.3), of(0.4, 0.5, 0.6)), 44.70392, 0.00001);
    EXPECT_NEAR(ToneValue::OfTristimulus(of(0.9, 0.9, 0.9), of(0.004, 0.002, 0.3), of(0.4, 0.5, 0.6)), 26.46006,
                0.00001);
}

TEST(ToneCurve, RampsOfSingleInksFromPaperToSolid)
{
    // A halftone reflects the mean of its dots and the paper: at 40 percent nominal it covers 60 and 64 percent.
    const auto row = [](const std::string& id, double ink, double covered) {
        std::ostringstream text;
        text << id << " 0 " << ink << " 0 0 " << -std::log10(covered * 0.1 + (1.0 - covered) * 0.8) << " 0.2 0.1 0.1";
        for (int band = 0; band < SpectrumLength; ++band) {
            const double solid = band >= 20 && band < 26 ? 0.1 : 0.7;
            text << " " << covered * solid + (1.0 - covered) * 0.8;
        }
        return text.str() + "\n";
    };
    const std::string steps = row("a", 25, 0.38) + row("b", 50, 0.7) + row("c", 40, 0.6) + row("d", 40, 0.64);
    const std::string fields = "CMYK_C CMYK_M CMYK_Y CMYK_K D_RED D_GREEN D_BLUE D_VIS" + J4Test::SpectralFields();
    const std::vector<ToneCurve> curves =
        CurvesOf(fields, row("s", 100, 1.0) + steps + row("p", 0, 0.01) + row("q", 0, -0.01));
    ASSERT_EQ(curves.size(), 1u);
    EXPECT_EQ(curves[0].ink, "M");
    EXPECT_EQ(curves[0].light, "reflectance at 580 to 600 nm");
    EXPECT_EQ(curves[0].filter, "red");
    ASSERT_EQ(curves[0].points.size(), 5u);
    const double expected[][2] = {{0, 0}, {25, 38}, {40, 62}, {50, 70}, {100, 100}};
    for (size_t i = 0; i < 5; ++i) {
        const ToneCurve::Point& point = curves[0].points[i];
        EXPECT_EQ(point.nominal, expected[i][0]);
        EXPECT_NEAR(point.toneValue, expected[i][1], 0.01);
        EXPECT_NEAR(*point.ofDensities, expected[i][1], 0.01);
        EXPECT_NEAR(point.Increase(), expected[i][1] - expected[i][0], 0.01);
    }
    EXPECT_NEAR(curves[0].points[4].sctv, 100.0, 1e-9);

    std::vector<ToneCurve> like = curves;
    like[0].light = "reflectance at 570 to 590 nm";  // half of it is light that the ink lets pass
    const ToneCurve other = CurvesOf(fields, row("s", 100, 1.0) + steps + row("p", 0, 0.0), "", like)[0];
    EXPECT_EQ(other.light, like[0].light);
    EXPECT_NEAR(other.points[3].toneValue, 70.0, 0.01);

    EXPECT_TRUE(CurvesOf(fields, row("s", 100, 1.0) + steps).empty()) << "no paper";
    EXPECT_TRUE(CurvesOf(fields, steps + row("p", 0, 0.0)).empty()) << "no solid";
    EXPECT_TRUE(CurvesOf(fields, row("s", 100, 1.0) + row("b", 50, 0.7) + row("c", 40, 0.6) + row("p", 0, 0.0)).empty())
        << "two steps";
    EXPECT_TRUE(CurvesOf(fields, row("s", 100, 0.0) + steps + row("p", 0, 0.0)).empty()) << "a solid like the paper";
}

TEST(ToneCurve, OfColoursAloneAndOfSpotInks)
{
    const std::string rows =
        "p 0 0 0 0 0 95 0 0\ns 0 0 0 0 100 30 60 40\n1 0 0 0 0 25 80 10 8\n2 0 0 0 0 50 65 25 18\n3 0 0 0 0 75 45 45 "
        "30\n"
        "4 10 0 0 0 75 1 0 0\n5 0 0 0 0 none 1 0 0\n";
    const std::string fields = "CMYK_C CMYK_M CMYK_Y CMYK_K SPOT_1 LAB_L LAB_A LAB_B";
    for (const auto& [head, ink] : {std::pair("SPOT_1_NAME \"Deep Red\"\n", "Deep Red"), {"", "SPOT_1"}}) {
        const std::vector<ToneCurve> curves = CurvesOf(fields, rows, head);
        ASSERT_EQ(curves.size(), 1u);
        EXPECT_EQ(curves[0].ink, ink);
        EXPECT_EQ(curves[0].light, "tristimulus value Z");
        EXPECT_EQ(curves[0].filter, "");
        ASSERT_EQ(curves[0].points.size(), 5u) << "a mixture, and a value that is no number, are none of it";
        EXPECT_NEAR(curves[0].solid[1], 60.0, 1e-9);
    }
    // Lights of a screen have no tone values.
    EXPECT_TRUE(CurvesOf("RGB_R RGB_G RGB_B LAB_L LAB_A LAB_B",
                         "a 255 255 255 95 0 0\nb 0 0 0 5 0 0\nc 60 0 0 10 9 9\nd 120 0 0 20 9 9\ne 190 0 0 30 9 9\n"
                         "f 255 0 0 40 9 9\n")
                    .empty());
}

}  // namespace
}  // namespace J4Chart
