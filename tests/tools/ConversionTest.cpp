#include "tools/convert/Conversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "chart/ChartReader.h"
#include "chart/cgats/CgatsFile.h"
#include "chart/csv/CsvFile.h"
#include "tests/support/ChartText.h"

namespace J4Tool {
namespace {

using J4Chart::BandRange;
using J4Chart::CgatsFile;
using J4Chart::CgatsTable;
using J4Chart::Chart;
using J4Chart::ChartReader;
using J4Chart::ColourConditions;
using J4Test::CgatsText;
using J4Test::Replaced;

CgatsFile Read(const std::string& text)
{
    std::istringstream input(text);
    return CgatsFile::Read(input);
}

CgatsTable Converted(const Conversion& conversion, const std::string& text)
{
    const CgatsFile file = Read(text);
    return conversion.Of(file.Tables().front(), ChartReader::Read(file, {}));
}

/// Two patches, with noise below 0 and with reflectances that no short decimal is.
std::string Measured()
{
    std::vector<double> bands;
    for (int band = 0; band < 36; ++band) {
        bands.push_back(band % 5 == 0 ? -0.00002 * band : 0.1234567 + 0.0123456 * band);
    }
    return Replaced(J4Test::ChartText({{"A1", 20, 30, 10, 8, 0.5, bands}, {"A2", 32, 30, 10, 8, 0.25}},
                                      "SCAN_SPEED \"60\"\nLAYOUT_ORIGIN CENTRE\n"),
                    "\tX\tY\tWIDTH\tHEIGHT", "\tCMYK_K\tY\tWIDTH\tHEIGHT");
}

TEST(Conversion, WhatIsReadBackEqualsWhatWasRead)
{
    const Chart read = ChartReader::Read(Read(Measured()), {});
    for (const char* prefix : {"SPECTRAL_NM", "SPECTRAL_NM_", "SPECTRAL_", "SPEC_", "NM_", "nm"}) {
        for (const int scale : {1, 100}) {
            for (const BandRange& bands : {BandRange{}, BandRange{2, 32}}) {
                SCOPED_TRACE(prefix + std::to_string(scale));
                Conversion conversion;
                conversion.spectralPrefix = prefix;
                conversion.spectralScale = scale;
                conversion.bands = bands;
                const CgatsTable table = Converted(conversion, Measured());
                EXPECT_EQ(table.FindField(prefix + std::to_string(380)) >= 0, bands == BandRange{});
                CgatsFile file;
                file.Add(table);
                ChartReader::Wanted wanted;
                wanted.spectra = wanted.otherBands = true;
                const Chart back = ChartReader::Read(Read(file.Text(' ')), wanted);
                EXPECT_EQ(back.bands, bands);
                EXPECT_EQ(back.Condition("SCAN_SPEED"), "60");
                ASSERT_EQ(back.patches.size(), read.patches.size());
                for (size_t i = 0; i < read.patches.size(); ++i) {
                    EXPECT_EQ(back.patches[i].name, read.patches[i].name);
                    EXPECT_EQ(back.patches[i].device, read.patches[i].device);
                    for (size_t band = bands.first; band <= bands.last; ++band) {
                        EXPECT_EQ((*back.patches[i].spectrum)[band], (*read.patches[i].spectrum)[band]) << band;
                    }
                    EXPECT_NEAR((*back.patches[i].lab)[0], (*read.patches[i].Colour())[0], 0.00006);
                }
            }
        }
    }
}

TEST(Conversion, ColoursAreTheFilesOwnOrThoseOfTheConditions)
{
    const std::string colours = "XYZ_X XYZ_Y XYZ_Z LAB_L LAB_A LAB_B";
    std::string spectrum;
    for (int band = 0; band < 36; ++band) {
        spectrum += " 0.184187";  // grey: L* 50 for whatever light
    }
    const auto text = [&](const std::string& fields, const std::string& values, const std::string& head = {}) {
        return CgatsText("SAMPLE_ID " + fields + J4Test::SpectralFields(), "1 " + values + spectrum + "\n", head);
    };
    Conversion other;
    other.conditions = ColourConditions(ColourConditions::Illuminant::A, ColourConditions::Observer::Degrees10);
    struct Case {
        Conversion conversion;
        std::string text;
        const char* lightness;
        const char* z;
        const char* function;
    };
    const std::string stated = "WEIGHTING_FUNCTION \"ILLUMINANT, D65\"\nWEIGHTING_FUNCTION \"OBSERVER, 10 degree\"\n";
    const Case cases[] = {
        {{}, text(colours, "1 2 3 4 5 6"), "4", "3", ""},
        {{}, text("LAB_L", "4"), "50.0000", "15.1851", "ILLUMINANT,D50;OBSERVER,2 degree"},
        {{}, text("LAB_L", "4", stated), "50.0000", "19.7617", "ILLUMINANT,D65;OBSERVER,10 degree"},
        {other, text(colours, "1 2 3 4 5 6"), "50.0000", "6.4829", "ILLUMINANT,A;OBSERVER,10 degree"},
    };
    for (const Case& test : cases) {
        const CgatsTable table = Converted(test.conversion, test.text);
        const auto value = [&table](const char* field) {
            return std::stod(table.rows.at(0).values.at(static_cast<size_t>(table.FindField(field))));
        };
        EXPECT_NEAR(value("LAB_L"), std::stod(test.lightness), 0.0002);
        EXPECT_NEAR(value("XYZ_Z"), std::stod(test.z), 0.01);
        EXPECT_EQ(table.ValueOf("WEIGHTING_FUNCTION"), test.function);
    }
}

TEST(Conversion, PlainTablesHaveNothingOfTheScan)
{
    Conversion conversion;
    conversion.plain = true;
    const CgatsTable table =
        Converted(conversion, CgatsText("SAMPLE_NAME X Y WIDTH HEIGHT SCAN_ROW REPEAT_SPREAD CMYK_C LAB_L",
                                        "a 1 2 3 4 5 6 7 8\n", "LAYOUT_ROTATION 1\nPATCH_GAP \"1 1\"\nSERIES x\n"));
    EXPECT_EQ(table.fields, (std::vector<std::string>{"SAMPLE_ID", "SAMPLE_NAME", "CMYK_C", "LAB_L"}));
    EXPECT_EQ(table.rows.at(0).values, (std::vector<std::string>{"1", "a", "7", "8"}));
    ASSERT_EQ(table.keywords.size(), 1u);
    EXPECT_EQ(table.keywords[0].name, "SERIES");
}

TEST(Conversion, RefusalsNameLineAndReason)
{
    Conversion all;
    all.bands = BandRange{};
    Conversion lit;
    lit.conditions = ColourConditions();
    Conversion visible;
    visible.bands = BandRange{2, 32};
    const std::string thirtyOne = Replaced(Replaced(Replaced(Measured(), "NM380", "A"), "NM390", "B"), "NM73", "C");
    const std::tuple<Conversion, std::string, std::string> cases[] = {
        {all, thirtyOne, "line 7: the spectra have 400 to 720 nm; 380 to 730 nm can't be made of them"},
        {visible, CgatsText("SAMPLE_ID LAB_L", "1 2\n"), "line 3: there are no spectra whose bands could be chosen"},
        {lit, CgatsText("SAMPLE_ID LAB_L", "1 2\n"), "line 3: there are no spectra to compute colours of"},
        {{}, CgatsText("SAMPLE_ID CMYK_C", "1 2,5\n"), "line 6: CMYK_C '2,5' is not a number"},
    };
    for (const auto& [conversion, text, reason] : cases) {
        try {
            Converted(conversion, text);
            ADD_FAILURE() << "accepted: " << reason;
        } catch (const J4Chart::CgatsError& error) {
            EXPECT_EQ(error.what(), reason);
        }
    }
}

}  // namespace
}  // namespace J4Tool
