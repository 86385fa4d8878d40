#include "chart/ChartReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <tuple>
#include <utility>

#include "tests/support/ChartText.h"

namespace J4Chart {
namespace {

using J4Test::CgatsText;
using J4Test::ChartText;
using J4Test::Replaced;

Chart Read(const std::string& text, const ChartReader::Wanted& wanted)
{
    std::istringstream input(text);
    return ChartReader::Read(CgatsFile::Read(input), wanted);
}

ChartReader::Wanted Wanted(bool places, bool spectra, bool colours = false)
{
    ChartReader::Wanted wanted;
    wanted.places = places;
    wanted.spectra = spectra;
    wanted.colours = colours;
    return wanted;
}

/// Two patches of 10 by 8 mm, the second beside the first.
const std::string two = ChartText({{"A1", 20, 30, 10, 8, 0.5}, {"A2", 32, 30, 10, 8, 0.25}});

TEST(ChartReader, EveryFormOfAChartHasTheSameContent)
{
    const std::string grid = "LAYOUT_ROWS 1\nPATCH_SIZE \"10 8\"\nPATCH_GAP \"2 0\"\nLAYOUT_START \"20 30\"\n" +
                             Replaced(two, "\tX\tY\tWIDTH\tHEIGHT", "\tA\tB\tC\tD");
    const std::string other = CgatsText("SAMPLE_ID", "x\n");
    for (const std::string& form : {
             two,
             Replaced(two, "SAMPLE_NAME", "SAMPLE_ID"),
             Replaced(two, "SPECTRAL_NM", "SPEC_"),
             "LAYOUT_ORIGIN CENTRE\nSPECTRAL_NORM 1\nMATERIAL \"a b\"\n" + two,
             "LAYOUT_ORIGIN \"CORNER\"\n" +
                 Replaced(Replaced(Replaced(two, "\t20", "\t15"), "\t32", "\t27"), "\t30", "\t26"),
             "SPECTRAL_NORM \"100.0\"\n" + Replaced(Replaced(two, "0.5", "50"), "0.25", "25"),
             grid,
             Replaced(grid, "LAYOUT_ROWS 1", "LAYOUT_COLUMNS \"2\""),
             other + two,
             Replaced(other, "x\n", "") + two,
         }) {
        SCOPED_TRACE(form);
        const Chart chart = Read(form, Wanted(true, true));
        ASSERT_EQ(chart.patches.size(), 2u);
        EXPECT_EQ(chart.patches[0].name, "A1");
        EXPECT_EQ(chart.patches[0].spectrum->at(35), 0.5f);
        EXPECT_EQ(chart.patches[1].spectrum->at(0), 0.25f);
        EXPECT_EQ(chart.places.at(0).centre.y, 30.0);
        EXPECT_EQ(chart.places.at(1).centre.x, 32.0);
        EXPECT_EQ(chart.places[1].Width(), 10.0);
        EXPECT_EQ(chart.places[1].Height(), 8.0);
    }
}

TEST(ChartReader, TakesAllThatAFileTells)
{
    const Chart chart =
        Read(CgatsText(
                 "SAMPLE_ID SAMPLE_NAME SCAN_ROW SCAN_COLUMN CMYK_C 6CLR_1 NOTE LAB_L LAB_A LAB_B XYZ_X XYZ_Y XYZ_Z",
                 "7 red 2 3 0.50 1 CMYK 50 1 -2 10 11 12\n", "PAPER_REFLECTANCE \"0.9\"\nSERIES \"a\"\nSERIES \"b\"\n"),
             {});
    const Patch& patch = chart.patches.at(0);
    EXPECT_EQ(patch.name, "red");
    EXPECT_EQ(patch.id, "7");
    EXPECT_EQ(patch.line, 9);
    EXPECT_EQ(patch.lab, (Colorimetry::Triple{50, 1, -2}));
    EXPECT_EQ(patch.xyz, (Colorimetry::Triple{10, 11, 12}));
    EXPECT_EQ(chart.deviceFields, (std::vector<std::string>{"CMYK_C", "6CLR_1"}));
    EXPECT_EQ(patch.device, (std::vector<std::string>{"0.50", "1"}));
    EXPECT_EQ(chart.rowPlaces.at(0).row, 2u);
    EXPECT_EQ(chart.rowPlaces.at(0).column, 3u);
    EXPECT_EQ(chart.paper->at(35), 0.9f);
    EXPECT_EQ(chart.Condition("SERIES"), "b");
    EXPECT_TRUE(chart.places.empty());
}

TEST(ChartReader, ColoursFromWhateverTheFileHas)
{
    std::string spectrum;
    for (int band = 0; band < SpectrumLength; ++band) {
        spectrum += " 0.184187";  // in all bands: L* 50
    }
    const std::pair<std::string, std::string> cases[] = {
        {"LAB_L LAB_A LAB_B" + J4Test::SpectralFields(), "9 9 9" + spectrum},
        {"XYZ_X XYZ_Y XYZ_Z LAB_L LAB_A LAB_B", "9 9 9 50 0 0"},
        {"XYZ_X XYZ_Y XYZ_Z LAB_L", "17.76 18.4187 15.20 9"},
        {"SPECTRAL_NM380 LAB_L LAB_A LAB_B", "0.5 50 0 0"},
    };
    for (const auto& [fields, values] : cases) {
        SCOPED_TRACE(fields);
        const Chart chart = Read(CgatsText("SAMPLE_ID " + fields, "1 " + values + "\n"), Wanted(false, false, true));
        EXPECT_NEAR(Colorimetry::Distance(*chart.patches[0].Colour(), {50, 0, 0}), 0.0, 0.1);
    }
    EXPECT_FALSE(Patch().Colour());
    // Those of another light are none of this chart's where they are not asked for.
    const std::string other =
        CgatsText("SAMPLE_ID LAB_L LAB_A LAB_B", "1 9 9 9\n", "WEIGHTING_FUNCTION ILLUMINANT,A\n");
    EXPECT_FALSE(Read(other, {}).patches[0].Colour());
}

/// A file with one patch of Lab 9, 9, 9 and a spectrum that is straight, 0.1 at 300 nm and 0.1 more each 100 nm.
std::string Straight(int first, int last, int step, const char* colours = "LAB_L LAB_A LAB_B")
{
    std::string fields = std::string("SAMPLE_ID ") + colours;
    std::string values = *colours == 0 ? "1" : "1 9 9 9";
    for (int wavelength = first; wavelength <= last; wavelength += step) {
        fields += " NM" + std::to_string(wavelength);
        values += " " + std::to_string((wavelength - 200) / 1000.0);
    }
    return CgatsText(fields, values + "\n");
}

TEST(ChartReader, TakesSpectraOfOtherRangesAndSteps)
{
    const std::tuple<int, int, int, BandRange> cases[] = {
        {380, 730, 10, {0, 35}}, {400, 700, 10, {2, 32}}, {360, 780, 5, {0, 35}},
        {380, 730, 1, {0, 35}},  {395, 715, 20, {2, 33}}, {391, 713, 7, {2, 33}},
    };
    for (const auto& [first, last, step, bands] : cases) {
        SCOPED_TRACE(std::to_string(first) + " to " + std::to_string(last) + " in " + std::to_string(step));
        const Chart chart = Read(Straight(first, last, step), Wanted(false, false, true));
        EXPECT_EQ(chart.bands, bands);
        for (int band = 0; band < SpectrumLength; ++band) {
            const int lastTaken = first + (last - first) / step * step;
            const int wavelength = std::clamp(FirstWavelength + WavelengthStep * band, first, lastTaken);
            EXPECT_NEAR((*chart.patches[0].spectrum)[static_cast<size_t>(band)], (wavelength - 200) / 1000.0, 1e-6)
                << band;
        }
    }
    // What doesn't cover the range is no spectrum: the patch's own colour counts, or there is none.
    const Chart lab = Read(Straight(410, 700, 10), Wanted(false, false, true));
    EXPECT_FALSE(lab.patches[0].spectrum);
    EXPECT_EQ((*lab.patches[0].Colour())[0], 9.0);
}

TEST(ChartReader, BendsAreInterpolatedByACubic)
{
    std::string fields = "SAMPLE_ID";
    std::string values = "1";
    const auto cubic = [](int wavelength) {
        const double x = (wavelength - 550) / 200.0;
        return 0.5 + 0.3 * x - 0.2 * x * x - 0.1 * x * x * x;
    };
    for (int wavelength = 375; wavelength <= 735; wavelength += 20) {
        fields += " NM" + std::to_string(wavelength);
        values += " " + std::to_string(cubic(wavelength));
    }
    const Chart chart = Read(CgatsText(fields, values + "\n"), Wanted(false, false, true));
    for (int band = 2; band < SpectrumLength - 2; ++band) {  // the first and the last interval have three samples
        EXPECT_NEAR((*chart.patches[0].spectrum)[static_cast<size_t>(band)], cubic(380 + 10 * band), 2e-6) << band;
    }
}

TEST(ChartReader, RefusalsNameLineAndReason)
{
    const auto lab = [](const char* values, const char* head = "") {
        return CgatsText("SAMPLE_ID LAB_L LAB_A LAB_B", std::string("1 ") + values + "\n", head);
    };
    const auto bare = [](const char* head) { return CgatsText("SAMPLE_ID", "a\nb\nc\n", head); };
    const std::string factor = "' is not a reflectance factor from -0.1 to 2 (percentages need SPECTRAL_NORM \"100\")";
    struct Case {
        std::string text;
        std::string reason;
    };
    const Case printed[] = {
        {Replaced(two, "SPECTRAL_NM550", "SPECTRAL_NM555"), "the field SPECTRAL_NM550 is missing"},
        {Replaced(two, "SPECTRAL_NM390", "NM380"), "the field SPECTRAL_NM390 is missing"},
        {Replaced(two, "SAMPLE_NAME", "NAME"), "the field SAMPLE_NAME or SAMPLE_ID is missing"},
        {Replaced(two, "\tWIDTH", "\tBREADTH"), "the field WIDTH is missing"},
        {Replaced(two, "0.25", "0,25"), "line 9: SPECTRAL_NM380 '0,25" + factor},
        {Replaced(two, "0.25", "25"), "line 9: SPECTRAL_NM380 '25" + factor},
        {Replaced(two, "0.25", "nan"), "line 9: SPECTRAL_NM380 'nan" + factor},
        {Replaced(two, "0.25", "-0.11"), "line 9: SPECTRAL_NM380 '-0.11" + factor},
        {"SPECTRAL_NORM \"100\"\n" + Replaced(two, "0.25", "201"),
         "line 10: SPECTRAL_NM380 '201' is not a reflectance factor from -10 to 200 (SPECTRAL_NORM is 100)"},
        {"SPECTRAL_NORM \"0\"\n" + two, "line 1: SPECTRAL_NORM '0' is not a number from 0.01 to 65535"},
        {Replaced(two, "A2\t32", "A2\tleft"), "line 9: X 'left' is not a place from -10000 to 10000 mm"},
        {Replaced(two, "A2\t32", "A2\t1e300"), "line 9: X '1e300' is not a place from -10000 to 10000 mm"},
        {Replaced(two, "\t10\t", "\t0\t"), "line 8: WIDTH '0' is not a length from 0.1 to 10000 mm"},
        {"LAYOUT_ORIGIN \"MIDDLE\"\n" + two, "line 1: LAYOUT_ORIGIN 'MIDDLE' is neither CENTRE nor CORNER"},
        {"PAPER_REFLECTANCE \"0.9 0.8\"\n" + two, "line 1: PAPER_REFLECTANCE has 2 values instead of 1 or 36"},
        {"PAPER_REFLECTANCE white\n" + two,
         "line 1: PAPER_REFLECTANCE 'white' is not a reflectance factor from 0 to 2"},
        {CgatsText("SAMPLE_ID", "a\n"),
         "there are neither places (X, Y, WIDTH, HEIGHT) nor a number of columns (LAYOUT_COLUMNS)"},
        {"SPECK \"1 2 3\"\n" + two, "line 1: SPECK has 3 values instead of 4"},
        {"SPECK \"1 2 0.1 0\"\n" + two, "line 1: SPECK '0.1' is not a width from 0.2 to 1000 mm"},
        {"SCRATCH \"1 2 3 nan 1 0\"\n" + two, "line 1: SCRATCH 'nan' is not a place from -10000 to 10000 mm"},
        {"SCRATCH \"1 2 3 4 1 2.1\"\n" + two, "line 1: SCRATCH '2.1' is not a reflectance factor from 0 to 2"},
        {bare("LAYOUT_COLUMNS 2.9\n"), "line 2: LAYOUT_COLUMNS '2.9' is not a whole number from 1 to 99999"},
        {bare("LAYOUT_COLUMNS 0\n"), "line 2: LAYOUT_COLUMNS '0' is not a whole number from 1 to 99999"},
        {bare("LAYOUT_COLUMNS 1e300\n"), "line 2: LAYOUT_COLUMNS '1e300' is not a whole number from 1 to 99999"},
        {bare("LAYOUT_COLUMNS 2\n"),
         "the size of the patches (PATCH_SIZE) and the place of the first one (LAYOUT_START) are missing"},
        {bare("LAYOUT_COLUMNS 2\nLAYOUT_ROWS 3\n"), "3 patches do not fill 3 rows of 2"},
        {bare("PATCH_SIZE \"1 2 3\"\nLAYOUT_COLUMNS 1\n"), "line 2: PATCH_SIZE has 3 values instead of 2"},
        {bare("PATCH_SIZE \"0 2\"\n"), "line 2: PATCH_SIZE '0' is not a length from 0.1 to 10000 mm"},
    };
    const Case coloured[] = {
        {lab("50 x 0"), "line 6: LAB_A 'x' is not a colour value from -1000 to 1000"},
        {lab("1e200 0 0"), "line 6: LAB_L '1e200' is not a colour value from -1000 to 1000"},
        {lab("50 0 inf"), "line 6: LAB_B 'inf' is not a colour value from -1000 to 1000"},
        {CgatsText("SAMPLE_ID LAB_L LAB_A LAB_B LAB_A", "1 50 0 0 1\n"), "the field LAB_A stands there twice"},
        {CgatsText("SAMPLE_ID NM380 SPEC_380 LAB_L LAB_A LAB_B", "1 0 1 50 0 0\n"),
         "the field SPEC_380 stands there twice"},
        {CgatsText("SAMPLE_ID SCAN_ROW SCAN_COLUMN LAB_L LAB_A LAB_B", "1 1.5 1 50 0 0\n"),
         "line 6: SCAN_ROW '1.5' is not a whole number from 1 to 99999"},
        {CgatsText("SAMPLE_ID CMYK_C", "1 50\n"), "no patches with spectra, LAB or XYZ values"},
        {Straight(410, 700, 10, ""), "the spectra have 410 to 700 nm and do not cover 400 to 700 nm"},
        {Straight(380, 690, 10, ""), "the spectra have 380 to 690 nm and do not cover 400 to 700 nm"},
        {Straight(380, 755, 25, ""), "the spectra have nothing between 380 and 405 nm; steps up to 20 nm are taken"},
        {lab("50 0 0", "WEIGHTING_FUNCTION \"ILLUMINANT,D65;OBSERVER,10 degree\"\n"),
         "line 2: the colours are for ILLUMINANT,D65;OBSERVER,10 degree, and there are no spectra; those for D50 and 2 "
         "degrees are wanted"},
        {lab("50 0 0", "WEIGHTING_FUNCTION \"ILLUMINANT, C\"\n"),
         "line 2: the colours are for ILLUMINANT, C, and there are no spectra; those for D50 and 2 degrees are wanted"},
    };
    const auto expectRefusal = [](const Case& test, const ChartReader::Wanted& wanted) {
        try {
            Read(test.text, wanted);
            ADD_FAILURE() << "accepted: " << test.reason;
        } catch (const CgatsError& error) {
            EXPECT_EQ(error.what(), test.reason);
        }
    };
    for (const Case& test : printed) {
        expectRefusal(test, Wanted(true, true));
    }
    for (const Case& test : coloured) {
        expectRefusal(test, Wanted(false, false, true));
    }
}

TEST(ChartReader, MeasuredNoiseIsNoFault)
{
    const Chart chart = Read(Replaced(two, "0.25", "-0.0004"), Wanted(true, true));
    EXPECT_EQ(chart.patches[1].spectrum->at(0), -0.0004f);
}

}  // namespace
}  // namespace J4Chart
