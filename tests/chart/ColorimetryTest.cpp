#include "chart/colour/Colorimetry.h"

#include <gtest/gtest.h>

#include <tuple>

#include "chart/cgats/CgatsFile.h"
#include "chart/colour/ScreenColour.h"

namespace J4Chart {
namespace {

Spectrum Flat(float value)
{
    Spectrum spectrum;
    spectrum.fill(value);
    return spectrum;
}

TEST(Colorimetry, TablesAreThoseOfTheCie)
{
    const std::string folder = "/usr/share/colord/";  // of Debian's colord-data
    const std::tuple<const char*, size_t, double CieBand::*> cases[] = {
        {"cmf/CIE1931-2deg-XYZ.cmf", 0, &CieBand::x},
        {"cmf/CIE1931-2deg-XYZ.cmf", 1, &CieBand::y},
        {"cmf/CIE1931-2deg-XYZ.cmf", 2, &CieBand::z},
        {"illuminant/CIE-D50.sp", 0, &CieBand::d50},
    };
    for (const auto& [name, row, column] : cases) {
        const CgatsFile file = CgatsFile::Read(folder + name);
        const CgatsTable& table = file.Tables().front();
        for (int band = 0; band < CieBands; ++band) {
            const std::string field = "SPEC_" + std::to_string(CieFirstWavelength + CieWavelengthStep * band);
            const int found = table.FindField(field);
            ASSERT_GE(found, 0) << field;
            const std::string& text = table.rows[row].values[static_cast<size_t>(found)];
            EXPECT_NEAR(cieTable[band].*column, std::stod(text), 1e-7) << name << " row " << row << " " << field;
        }
    }
}

TEST(Colorimetry, WhiteGreyAndBlack)
{
    // The white of D50 (CIE 15): 96.42, 100, 82.51; what 10 nm steps from 380 to 730 nm make of it.
    const Colorimetry::Triple white = Colorimetry::TristimulusValues(Flat(1.0f));
    EXPECT_NEAR(white[0], 96.42, 0.15);
    EXPECT_NEAR(white[1], 100.0, 1e-9);
    EXPECT_NEAR(white[2], 82.51, 0.15);
    EXPECT_NEAR(Colorimetry::Chromaticity(Flat(0.0f))[0], 0.3457, 0.0005);
    EXPECT_NEAR(Colorimetry::Chromaticity(Flat(0.5f))[1], 0.3585, 0.0005);

    for (const auto& [reflectance, lightness] :
         {std::pair(1.0f, 100.0), {0.184187f, 50.0}, {0.0f, 0.0}, {0.005f, 4.5165}}) {
        EXPECT_NEAR(Colorimetry::Distance(Colorimetry::Lab(Flat(reflectance)), {lightness, 0, 0}), 0.0, 0.001);
    }
}

TEST(ScreenColour, CornersOfTheScreensGamut)
{
    // CIELab under D50 of the sRGB primaries, as ICC profiles of sRGB hold them; two colours from the adaptation's cone
    // matrix and the primaries' chromaticities, computed apart; and two that are more vivid than any of them.
    const std::tuple<Colorimetry::Triple, const char*, bool> cases[] = {
        {{100.0, 0.0, 0.0}, "#ffffff", true},      {{0.0, 0.0, 0.0}, "#000000", true},
        {{53.585, 0.0, 0.0}, "#808080", true},     {{54.29, 80.80, 69.89}, "#ff0000", true},
        {{87.82, -79.28, 80.99}, "#00ff00", true}, {{29.57, 68.30, -112.03}, "#0000ff", true},
        {{75.0, 10.0, 60.0}, "#e0b044", true},     {{35.0, -25.0, 40.0}, "#355c02", true},
        {{50.0, -120.0, 20.0}, "#009a50", false},  {{105.0, 0.0, 0.0}, "#ffffff", false},
    };
    for (const auto& [lab, code, inGamut] : cases) {
        EXPECT_EQ(ScreenColourOf(lab).code, code);
        EXPECT_EQ(ScreenColourOf(lab).inGamut, inGamut) << code;
    }
}

}  // namespace
}  // namespace J4Chart
