// The tool on the virtual table, from the arguments to files and exit codes.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "chart/cgats/CgatsFields.h"
#include "chart/cgats/CgatsFile.h"
#include "tests/tools/LayoutText.h"
#include "tests/tools/ToolRun.h"
#include "tools/ExitCode.h"

namespace J4Tool {
namespace {

constexpr const char* Samples = "/usr/share/colord/ref/CIE-TCS.sp";

int Code(ExitCode code) { return static_cast<int>(code); }

void WriteFile(const std::string& fileName, const std::string& content)
{
    std::ofstream(fileName, std::ios::binary) << content;
}

/// Rows of vivid patches of 10 by 8 mm with gaps of 1 mm, named "R1C1" and so on.
std::string VividChart(size_t rows, size_t columns)
{
    std::ostringstream text;
    text << "CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_NAME X Y WIDTH HEIGHT";
    for (size_t band = 0; band < 36; ++band) {
        text << " " << J4Chart::SpectralField(band);
    }
    text << "\nEND_DATA_FORMAT\nBEGIN_DATA\n";
    for (size_t row = 0; row < rows; ++row) {
        for (size_t column = 0; column < columns; ++column) {
            text << "R" << row + 1 << "C" << column + 1 << " " << 180 + 11 * column << " " << 160 + 9 * row << " 10 8";
            const size_t seed = row * 131 + column * 37;
            for (size_t band = 0; band < 36; ++band) {
                const size_t third = band / 12;
                text << " " << 0.06 + 0.06 * static_cast<double>((seed * (third + 3) + third * 5 + seed / 7) % 11);
            }
            text << "\n";
        }
    }
    text << "END_DATA\n";
    return text.str();
}

class ToolProgram : public testing::Test {
protected:
    ToolProgram()
    {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
        std::filesystem::current_path(folder);
        WriteFile("chart.cgats", VividChart(4, 10));
    }

    ~ToolProgram() override { std::filesystem::current_path(before); }

    const std::filesystem::path before = std::filesystem::current_path();
    const std::filesystem::path folder = before / "tool_program_test";
};

/// What was measured against what lies on the chart, by names.
void ExpectMeasured(const std::string& measuredFile, const std::string& chartFile, double tolerance)
{
    J4Chart::CgatsFile measured;
    J4Chart::CgatsFile chart;
    J4Chart::CgatsFile::Error error;
    ASSERT_TRUE(measured.Read(measuredFile, error)) << error.Text();
    ASSERT_TRUE(chart.Read(chartFile, error)) << error.Text();
    const J4Chart::CgatsTable& table = measured.Tables().front();
    const J4Chart::CgatsTable& wanted = chart.Tables().front();
    ASSERT_EQ(table.rows.size(), wanted.rows.size());
    const size_t name = static_cast<size_t>(table.FindField("SAMPLE_NAME"));
    const auto bands = J4Chart::FindSpectralFields(table);
    const auto wantedBands = J4Chart::FindSpectralFields(wanted);
    for (size_t i = 0; i < table.rows.size(); ++i) {
        EXPECT_EQ(table.rows[i].values[name], wanted.rows[i].values[0]);
        for (size_t band = 0; band < bands.size(); ++band) {
            double value = 0.0;
            double wantedValue = 1.0;
            ASSERT_TRUE(J4Chart::ParseNumber(table.rows[i].values[static_cast<size_t>(bands[band])], value));
            ASSERT_TRUE(
                J4Chart::ParseNumber(wanted.rows[i].values[static_cast<size_t>(wantedBands[band])], wantedValue));
            ASSERT_NEAR(value, wantedValue, tolerance) << table.rows[i].values[name] << " band " << band;
        }
    }
}

TEST_F(ToolProgram, TellsAboutTableAndPlaces)
{
    struct Case {
        const char* arguments;
        const char* said;
    };
    const Case cases[] = {
        {"info --virtual", "Table's serial number         640001"},
        {"--virtual info --json", "\"instrumentModes\":[\"SingleReflectance\",\"ScanningReflectance\""},
        {"--virtual info --json --unit inch", "\"xMax\":31.49"},
        {"--virtual home", "x 100.0 mm, y 80.0 mm"},
        {"--virtual move 254 254 --unit mm", "x 254.0 mm, y 254.0 mm"},
        {"--virtual move 10 10 --unit inch", "x 10.000 inch, y 10.000 inch"},
        {"--virtual position --json", "{\"x\":200.0,\"y\":200.0,\"unit\":\"mm\"}"},
        {"--virtual calibrate", "Instrument 240118 is calibrated."},
        {"--virtual get J4TScanSpeed", "160\n"},
        {"--virtual set J4TScanSpeed 120 --json", "{\"key\":\"J4TScanSpeed\",\"value\":\"120\"}"},
        {"--virtual get J4TScanSpeed --option J4TScanSpeed=99", "99\n"},
        {"spot 180 160 --virtual chart.cgats --json", "\"lab\":[67.614"},
        {"--virtual whitebase", "380 nm  0.86000"},
        {"--help", "130  ended by Ctrl-C"},
        {"--version", "j4tavla 1."},
    };
    for (const Case& test : cases) {
        const ToolRun run(test.arguments);
        EXPECT_EQ(run.exitCode, 0) << test.arguments << "\n" << run.errors;
        EXPECT_TRUE(run.Said(test.said)) << test.arguments << "\n" << run.output;
    }
}

TEST_F(ToolProgram, EndsWithACodeForEachKindOfFailure)
{
    WriteFile("broken.cgats",
              "CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_ID X\nEND_DATA_FORMAT\nBEGIN_DATA\na 1 2\nEND_DATA\n");
    struct Case {
        const char* arguments;
        ExitCode code;
        const char* complaint;
    };
    const Case cases[] = {
        {"", ExitCode::Usage, "subcommand is required"},
        {"fly", ExitCode::Usage, ""},
        {"--virtual move 1", ExitCode::Usage, "Y is required"},
        {"--virtual info --unit yard", ExitCode::Usage, "--unit"},
        {"--virtual info --option nothing", ExitCode::Usage, "KEY=VALUE"},
        {"--virtual scan -o m.cgats", ExitCode::Usage, "LAYOUT is required"},
        {"--virtual scan broken.cgats -o m.cgats", ExitCode::File, "line 6: 3 values instead of 2"},
        {"--virtual scan missing.cgats -o m.cgats", ExitCode::File, "can't be opened"},
        {"--virtual scan chart.cgats -o m.cgats --resume", ExitCode::File, "no file 'm.cgats.partial'"},
        {"--virtual scan chart.cgats -o missing/m.cgats", ExitCode::File, "writing 'missing/m.cgats' failed"},
        {"--virtual whitebase --write broken.cgats --yes", ExitCode::File, "line 6: 3 values instead of 2"},
        {"info --library missing.so", ExitCode::Library, "was not found"},
        {"--virtual info --option Simulator.TableUnplugged=yes", ExitCode::NotConnected, "J4_ResultDeviceNotConnected"},
        {"--virtual home --option Simulator.SeatedInstrument=none", ExitCode::NotConnected, "status 100"},
        {"--virtual calibrate --option Simulator.DirtyTile=yes", ExitCode::Calibration, "J4_ResultNotCalibrated"},
        {"--virtual move 2000 0", ExitCode::Position, "status 102 (J4_ResultIllegalPosition)"},
        {"--virtual home --option Simulator.TableBusy=yes", ExitCode::Device, "status"},
        {"--virtual get NoSuchOption", ExitCode::Device, "no such option"},
        {"--virtual set J4TScanSpeed fast", ExitCode::Device, "setting the option J4TScanSpeed to 'fast' failed"},
        {"--virtual scan chart.cgats -o m.cgats --margin 300", ExitCode::Position, "--margin"},
        {"--virtual scan chart.cgats -o m.cgats --option J4TScanSpeed=9999", ExitCode::Device,
         "J4_ResultResourceFault"},
        {"--virtual scan chart.cgats -o m.cgats --corners <chart.cgats", ExitCode::NotConfirmed, "nobody is at the"},
    };
    for (const Case& test : cases) {
        const ToolRun run(test.arguments);
        EXPECT_EQ(run.exitCode, Code(test.code)) << test.arguments << "\n" << run.errors;
        EXPECT_TRUE(run.Complained(test.complaint)) << test.arguments << "\n" << run.errors;
    }
    const ToolRun json("--virtual move 2000 0 --json");
    EXPECT_TRUE(json.Complained("\"exitCode\":7,\"status\":102,\"statusName\":\"J4_ResultIllegalPosition\""))
        << json.errors;
    EXPECT_FALSE(std::filesystem::exists("m.cgats"));
    EXPECT_FALSE(std::filesystem::exists("m.cgats.partial"));
}

TEST_F(ToolProgram, ScansTheColourSamplesOnAGrid)
{
    if (!std::filesystem::exists(Samples)) {
        GTEST_SKIP() << "no colour samples on this machine";
    }
    // The file has no places: the arguments lay it out. What lies on the table then is not in it, so the chart is
    // written by hand from the same samples.
    J4Chart::CgatsFile samples;
    J4Chart::CgatsFile::Error error;
    ASSERT_TRUE(samples.Read(Samples, error));
    const J4Chart::CgatsTable& table = samples.Tables().front();
    const auto bands = J4Chart::FindSpectralFields(table);
    std::string chart = "CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_NAME X Y WIDTH HEIGHT";
    for (size_t band = 0; band < bands.size(); ++band) {
        chart += " " + J4Chart::SpectralField(band);
    }
    chart += "\nEND_DATA_FORMAT\nBEGIN_DATA\n";
    for (size_t i = 0; i < table.rows.size(); ++i) {
        chart += table.rows[i].values[0] + " " + std::to_string(220 + 29 * (i % 5)) + " " +
                 std::to_string(250 + 29 * (i / 5)) + " 25 25";
        for (const int band : bands) {
            chart += " " + table.rows[i].values[static_cast<size_t>(band)];
        }
        chart += "\n";
    }
    WriteFile("samples.cgats", chart + "END_DATA\n");
    const std::string grid =
        std::string("--virtual --chart samples.cgats scan ") + Samples + " -o m.cgats --columns 5 ";
    for (const char* place : {"--patch 25,25 --gap 4,4 --start 220,250", "--corners 220,250,336,250,220,308"}) {
        const ToolRun run(grid + place);
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        ExpectMeasured("m.cgats", "samples.cgats", 1e-5);
    }
}

TEST_F(ToolProgram, ScansAThousandPatches)
{
    WriteFile("large.cgats", VividChart(25, 40));
    const ToolRun run("scan --virtual large.cgats -o large_measured.cgats");
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_TRUE(run.Said("{\"event\":\"start\",\"rowsDone\":0,\"rows\":25,\"patchesDone\":0,\"patches\":1000}"));
    EXPECT_TRUE(
        run.Said("\"patchesDone\":1000,\"patches\":1000,\"result\":\"done\",\"file\":\"large_measured.cgats\""));
    ExpectMeasured("large_measured.cgats", "large.cgats", 1e-5);
}

TEST_F(ToolProgram, RowsThatFailAreTriedAgainAndLeftToAResume)
{
    // The layout has two rows in the wrong order: what is read there fits the other row.
    std::string chart = ContentOf("chart.cgats");
    std::string layout = chart;
    const auto rename = [&layout](const std::string& from, const std::string& to) {
        for (size_t at = layout.find(from); at != std::string::npos; at = layout.find(from, at + 1)) {
            layout.replace(at, from.size(), to);
        }
    };
    rename(" 169 10 8 ", " swap 10 8 ");
    rename(" 178 10 8 ", " 169 10 8 ");
    rename(" swap 10 8 ", " 178 10 8 ");
    WriteFile("layout.cgats", layout);
    const ToolRun wrong("--virtual --chart chart.cgats scan layout.cgats -o m.cgats --retries 1");
    EXPECT_EQ(wrong.exitCode, Code(ExitCode::Check)) << wrong.errors;
    EXPECT_TRUE(wrong.Said("\"event\":\"retry\"")) << wrong.output;
    EXPECT_TRUE(wrong.Said("\"row\":2,\"attempt\":2,\"reason\":\"row 3 was read instead\"")) << wrong.output;
    EXPECT_TRUE(wrong.Complained("2 rows failed in every attempt"));
    EXPECT_FALSE(std::filesystem::exists("m.cgats"));

    const ToolRun again("--virtual --chart chart.cgats scan layout.cgats -o m.cgats");
    EXPECT_EQ(again.exitCode, Code(ExitCode::File)) << "an earlier scan must not be lost without a word";
    const ToolRun resumed("--virtual --chart layout.cgats scan layout.cgats -o m.cgats --resume");
    EXPECT_EQ(resumed.exitCode, 0) << resumed.errors;
    EXPECT_TRUE(resumed.Said("\"event\":\"start\",\"rowsDone\":2,\"rows\":4,\"patchesDone\":20")) << resumed.output;
    ExpectMeasured("m.cgats", "layout.cgats", 1e-5);
    EXPECT_FALSE(std::filesystem::exists("m.cgats.partial"));
}

TEST_F(ToolProgram, NoisySplitsOfPatchesPassByScanningAgain)
{
    const std::string command =
        "--virtual chart.cgats scan -o m.cgats --retries 20 --option 5040=0 --option 5042=0 "
        "--option Simulator.Noise=0.0025 --option Simulator.NoiseSeed=3";
    const ToolRun run(command);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_TRUE(run.Said("\"event\":\"retry\"")) << run.output;
    EXPECT_TRUE(run.Said("patches were found instead of 10")) << run.output;
    ExpectMeasured("m.cgats", "chart.cgats", 0.01);
}

TEST_F(ToolProgram, AnOldFileStaysWhereANewOneFails)
{
    WriteFile("m.cgats", "old");
    EXPECT_NE(ToolRun("--virtual scan chart.cgats -o m.cgats --option Simulator.PositionNotReached=yes").exitCode, 0);
    EXPECT_EQ(ContentOf("m.cgats"), "old");
    EXPECT_EQ(ToolRun("--virtual scan chart.cgats -o m.cgats").exitCode, 0);
    EXPECT_NE(ContentOf("m.cgats"), "old");
    EXPECT_FALSE(std::filesystem::exists("m.cgats.tmp"));
}

TEST_F(ToolProgram, WhiteBasesAreSavedBeforeTheyAreReplaced)
{
    EXPECT_EQ(ToolRun("--virtual whitebase --save old.cgats").exitCode, 0);
    std::string next = ContentOf("old.cgats");
    const size_t first = next.find("1\t0.86");
    ASSERT_NE(first, std::string::npos) << next;
    WriteFile("next.cgats", next.replace(first, 6, "1\t0.90"));
    const auto backups = [] {
        size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(".")) {
            count += entry.path().filename().string().starts_with("whitebase-640001-") ? 1 : 0;
        }
        return count;
    };
    const ToolRun unasked("--virtual whitebase --write next.cgats <old.cgats");
    EXPECT_EQ(unasked.exitCode, Code(ExitCode::NotConfirmed)) << unasked.errors;
    EXPECT_FALSE(unasked.Said("0.90000"));
    EXPECT_EQ(backups(), 1u);
    const ToolRun written("--virtual whitebase --write next.cgats --yes");
    EXPECT_EQ(written.exitCode, 0) << written.errors;
    EXPECT_TRUE(written.Said("380 nm  0.90000")) << written.output;
    EXPECT_GE(backups(), 1u);
}

}  // namespace
}  // namespace J4Tool
