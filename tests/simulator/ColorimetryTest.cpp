#include "simulator/instrument/Colorimetry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "Generic/Colour/CieTables.h"
#include "simulator/chart/CgatsFile.h"

namespace J4Bench {
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
    struct Case {
        const char* file;
        size_t row;
        double CieBand::*column;
    };
    const Case cases[] = {
        {"cmf/CIE1931-2deg-XYZ.cmf", 0, &CieBand::x},
        {"cmf/CIE1931-2deg-XYZ.cmf", 1, &CieBand::y},
        {"cmf/CIE1931-2deg-XYZ.cmf", 2, &CieBand::z},
        {"illuminant/CIE-D50.sp", 0, &CieBand::d50},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(std::string(test.file) + " row " + std::to_string(test.row));
        std::ifstream input(folder + test.file);
        CgatsFile file;
        CgatsFile::Error error;
        ASSERT_TRUE(input && file.Read(input, error)) << error.Text();
        for (int band = 0; band < CieBands; ++band) {
            const std::string field = "SPEC_" + std::to_string(CieFirstWavelength + CieWavelengthStep * band);
            const auto found = std::find(file.Fields().begin(), file.Fields().end(), field);
            ASSERT_NE(found, file.Fields().end()) << field;
            const std::string& text = file.Rows()[test.row].values[static_cast<size_t>(found - file.Fields().begin())];
            EXPECT_NEAR(cieTable[band].*test.column, std::stod(text), 1e-7) << field;
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

    struct Case {
        float reflectance;
        double lightness;
    };
    for (const Case& test : {Case{1.0f, 100.0}, Case{0.184187f, 50.0}, Case{0.0f, 0.0}, Case{0.005f, 4.5165}}) {
        const Colorimetry::Triple lab = Colorimetry::Lab(Flat(test.reflectance));
        EXPECT_NEAR(lab[0], test.lightness, 0.001) << test.reflectance;
        EXPECT_NEAR(lab[1], 0.0, 1e-6);
        EXPECT_NEAR(lab[2], 0.0, 1e-6);
    }
}

TEST(Colorimetry, ColouredBandsGoWhereTheyBelong)
{
    // One filter over each third of the spectrum.
    struct Case {
        int from, to;  // nm, dark
        size_t density;
        double hueFrom, hueTo;
    };
    const Case cases[] = {{600, 730, 0, 180, 270}, {500, 590, 1, 290, 360}, {380, 490, 2, 60, 120}};
    for (const Case& test : cases) {
        Spectrum spectrum = Flat(0.8f);
        for (int wavelength = test.from; wavelength <= test.to; wavelength += WavelengthStep) {
            spectrum[static_cast<size_t>((wavelength - FirstWavelength) / WavelengthStep)] = 0.08f;
        }
        const Colorimetry::Densities densities = Colorimetry::DensitiesOf(spectrum);
        EXPECT_EQ(static_cast<size_t>(std::max_element(densities.begin(), densities.end()) - densities.begin()),
                  test.density);
        EXPECT_NEAR(densities[test.density], 1.0969, 0.0001);
        const Colorimetry::Triple lch = Colorimetry::LCh(spectrum);
        const Colorimetry::Triple lab = Colorimetry::Lab(spectrum);
        EXPECT_GT(lch[2], test.hueFrom);
        EXPECT_LT(lch[2], test.hueTo);
        EXPECT_NEAR(lch[1] * lch[1], lab[1] * lab[1] + lab[2] * lab[2], 1e-9);
    }
    EXPECT_NEAR(Colorimetry::DensitiesOf(Flat(0.0f))[3], 4.0, 1e-9);
}

}  // namespace
}  // namespace J4Bench
