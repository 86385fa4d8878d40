#include "chart/colour/Colorimetry.h"

#include <gtest/gtest.h>

#include "chart/cgats/CgatsFile.h"

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
        const CgatsFile file = CgatsFile::Read(folder + test.file);
        const CgatsTable& table = file.Tables().front();
        for (int band = 0; band < CieBands; ++band) {
            const std::string field = "SPEC_" + std::to_string(CieFirstWavelength + CieWavelengthStep * band);
            const int found = table.FindField(field);
            ASSERT_GE(found, 0) << field;
            const std::string& text = table.rows[test.row].values[static_cast<size_t>(found)];
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

TEST(Ciede2000, GivesTheDifferencesOfThePublishedPairs)
{
    // The test data of Sharma, Wu and Dalal, Color Research and Application 30 (2005), table 1.
    struct Case {
        Colorimetry::Triple first, second;
        double difference;
    };
    const Case cases[] = {
        {{50.0000, 2.6772, -79.7751}, {50.0000, 0.0000, -82.7485}, 2.0425},
        {{50.0000, 3.1571, -77.2803}, {50.0000, 0.0000, -82.7485}, 2.8615},
        {{50.0000, 2.8361, -74.0200}, {50.0000, 0.0000, -82.7485}, 3.4412},
        {{50.0000, -1.3802, -84.2814}, {50.0000, 0.0000, -82.7485}, 1.0000},
        {{50.0000, -1.1848, -84.8006}, {50.0000, 0.0000, -82.7485}, 1.0000},
        {{50.0000, -0.9009, -85.5211}, {50.0000, 0.0000, -82.7485}, 1.0000},
        {{50.0000, 0.0000, 0.0000}, {50.0000, -1.0000, 2.0000}, 2.3669},
        {{50.0000, -1.0000, 2.0000}, {50.0000, 0.0000, 0.0000}, 2.3669},
        {{50.0000, 2.4900, -0.0010}, {50.0000, -2.4900, 0.0009}, 7.1792},
        {{50.0000, 2.4900, -0.0010}, {50.0000, -2.4900, 0.0010}, 7.1792},
        {{50.0000, 2.4900, -0.0010}, {50.0000, -2.4900, 0.0011}, 7.2195},
        {{50.0000, 2.4900, -0.0010}, {50.0000, -2.4900, 0.0012}, 7.2195},
        {{50.0000, -0.0010, 2.4900}, {50.0000, 0.0009, -2.4900}, 4.8045},
        {{50.0000, -0.0010, 2.4900}, {50.0000, 0.0010, -2.4900}, 4.8045},
        {{50.0000, -0.0010, 2.4900}, {50.0000, 0.0011, -2.4900}, 4.7461},
        {{50.0000, 2.5000, 0.0000}, {50.0000, 0.0000, -2.5000}, 4.3065},
        {{50.0000, 2.5000, 0.0000}, {73.0000, 25.0000, -18.0000}, 27.1492},
        {{50.0000, 2.5000, 0.0000}, {61.0000, -5.0000, 29.0000}, 22.8977},
        {{50.0000, 2.5000, 0.0000}, {56.0000, -27.0000, -3.0000}, 31.9030},
        {{50.0000, 2.5000, 0.0000}, {58.0000, 24.0000, 15.0000}, 19.4535},
        {{50.0000, 2.5000, 0.0000}, {50.0000, 3.1736, 0.5854}, 1.0000},
        {{50.0000, 2.5000, 0.0000}, {50.0000, 3.2972, 0.0000}, 1.0000},
        {{50.0000, 2.5000, 0.0000}, {50.0000, 1.8634, 0.5757}, 1.0000},
        {{50.0000, 2.5000, 0.0000}, {50.0000, 3.2592, 0.3350}, 1.0000},
        {{60.2574, -34.0099, 36.2677}, {60.4626, -34.1751, 39.4387}, 1.2644},
        {{63.0109, -31.0961, -5.8663}, {62.8187, -29.7946, -4.0864}, 1.2630},
        {{61.2901, 3.7196, -5.3901}, {61.4292, 2.2480, -4.9620}, 1.8731},
        {{35.0831, -44.1164, 3.7933}, {35.0232, -40.0716, 1.5901}, 1.8645},
        {{22.7233, 20.0904, -46.6940}, {23.0331, 14.9730, -42.5619}, 2.0373},
        {{36.4612, 47.8580, 18.3852}, {36.2715, 50.5065, 21.2231}, 1.4146},
        {{90.8027, -2.0831, 1.4410}, {91.1528, -1.6435, 0.0447}, 1.4441},
        {{90.9257, -0.5406, -0.9208}, {88.6381, -0.8985, -0.7239}, 1.5381},
        {{6.7747, -0.2908, -2.4247}, {5.8714, -0.0985, -2.2286}, 0.6377},
        {{2.0776, 0.0795, -1.1350}, {0.9033, -0.0636, -0.5514}, 0.9082},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::PrintToString(test.first) + " " + testing::PrintToString(test.second));
        EXPECT_NEAR(Colorimetry::Ciede2000(test.first, test.second), test.difference, 0.00005);
        EXPECT_NEAR(Colorimetry::Ciede2000(test.second, test.first), test.difference, 0.00005);
    }
}

}  // namespace
}  // namespace J4Chart
