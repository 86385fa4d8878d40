#include "chart/colour/Colorimetry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include "chart/cgats/CgatsFile.h"
#include "chart/colour/ColourConditions.h"
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
    const std::tuple<const char*, size_t, double CieRow::*> cases[] = {
        {"cmf/CIE1931-2deg-XYZ.cmf", 0, &CieRow::x},    {"cmf/CIE1931-2deg-XYZ.cmf", 1, &CieRow::y},
        {"cmf/CIE1931-2deg-XYZ.cmf", 2, &CieRow::z},    {"cmf/CIE1964-10deg-XYZ.cmf", 0, &CieRow::x10},
        {"cmf/CIE1964-10deg-XYZ.cmf", 1, &CieRow::y10}, {"cmf/CIE1964-10deg-XYZ.cmf", 2, &CieRow::z10},
        {"illuminant/CIE-D50.sp", 0, &CieRow::d50},     {"illuminant/CIE-D65.sp", 0, &CieRow::d65},
        {"illuminant/CIE-F11.sp", 0, &CieRow::f11},
    };
    for (const auto& [name, row, column] : cases) {
        const CgatsFile file = CgatsFile::Read(folder + name);
        const CgatsTable& table = file.Tables().front();
        for (int line = 0; line < CieRows; ++line) {
            const std::string field = "SPEC_" + std::to_string(CieFirstWavelength + CieRowStep * line);
            const int found = table.FindField(field);
            ASSERT_GE(found, 0) << field;
            const std::string& text = table.rows[row].values[static_cast<size_t>(found)];
            EXPECT_NEAR(cieTable[line].*column, std::stod(text), 1e-7) << name << " row " << row << " " << field;
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

TEST(ColourConditions, WhitesAreThoseOfTheCie)
{
    using enum ColourConditions::Illuminant;
    using enum ColourConditions::Observer;
    // CIE 15, or ASTM E308 where that has none.
    const std::tuple<ColourConditions::Illuminant, ColourConditions::Observer, Colorimetry::Triple> cases[] = {
        {D50, Degrees10, {96.720, 100.0, 81.427}},  {D65, Degrees2, {95.047, 100.0, 108.883}},
        {D65, Degrees10, {94.811, 100.0, 107.304}}, {A, Degrees2, {109.850, 100.0, 35.585}},
        {A, Degrees10, {111.144, 100.0, 35.200}},   {F11, Degrees2, {100.962, 100.0, 64.350}},
        {F11, Degrees10, {103.863, 100.0, 65.607}},
    };
    for (const auto& [illuminant, observer, white] : cases) {
        const ColourConditions conditions(illuminant, observer);
        EXPECT_LT(Colorimetry::Distance(conditions.White(), white), 0.05) << conditions.Text();
        EXPECT_LT(Colorimetry::Distance(conditions.Lab(Flat(0.184187f)), {50, 0, 0}), 0.001) << conditions.Text();
        const auto stated = ColourConditions::StatedBy({{"WEIGHTING_FUNCTION", conditions.Text()}});
        ASSERT_TRUE(stated);
        EXPECT_EQ(*stated, conditions);
    }
    EXPECT_EQ(ColourConditions().Lab(Flat(0.3f)), Colorimetry::Lab(Flat(0.3f)));
    EXPECT_FALSE(ColourConditions::StatedBy({{"WEIGHTING_FUNCTION", "ILLUMINANT,D50"}}));
    EXPECT_FALSE(ColourConditions::StatedBy({{"WEIGHTING_FUNCTION", "ILLUMINANT,D75;OBSERVER,2"}}));
}

/// A spectrum that has no bends finer than those of inks.
double Ink(double wavelength) { return 0.45 + 0.4 * std::sin((wavelength - 380.0) / 60.0); }

TEST(ColourConditions, ColoursAreThoseOfFineSums)
{
    // The sums over the whole of the tables with what the ink has at each wavelength, not at the bands alone.
    Spectrum bands;
    for (size_t band = 0; band < bands.size(); ++band) {
        bands[band] = static_cast<float>(Ink(380.0 + 10.0 * static_cast<double>(band)));
    }
    const std::tuple<ColourConditions::Illuminant, double CieRow::*> lights[] = {
        {ColourConditions::Illuminant::D50, &CieRow::d50},
        {ColourConditions::Illuminant::D65, &CieRow::d65},
        {ColourConditions::Illuminant::F11, &CieRow::f11}};
    for (const auto& [illuminant, power] : lights) {
        Colorimetry::Triple sums{};
        double diffuser = 0.0;
        for (int row = 0; row < CieRows; ++row) {
            const CieRow& cie = cieTable[row];
            const double light = cie.*power * Ink(std::min(380.0 + 5.0 * row, 730.0));
            sums = {sums[0] + light * cie.x10, sums[1] + light * cie.y10, sums[2] + light * cie.z10};
            diffuser += cie.*power * cie.y10;
        }
        const ColourConditions conditions(illuminant, ColourConditions::Observer::Degrees10);
        for (size_t k = 0; k < sums.size(); ++k) {
            EXPECT_NEAR(conditions.TristimulusValues(bands)[k], 100.0 * sums[k] / diffuser, 0.002);
        }
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
