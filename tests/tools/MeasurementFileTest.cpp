#include "tools/MeasurementFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/LayoutText.h"
#include "tools/AtomicFile.h"
#include "tools/ToolError.h"
#include "tools/WhiteBaseFile.h"

namespace J4Tool {
namespace {

using Form = MeasurementFile::Form;

const MeasurementFile::Conditions Conditions = {{"TABLE_SERIAL", "640001"}, {"INSTRUMENT_SERIAL", "240118"}};

Measurements FirstRowOf(const ChartLayout& layout)
{
    Measurements measurements(layout.Patches().size());
    for (const size_t patch : layout.Rows().front()) {
        measurements[patch].emplace().fill(0.1f + 0.1f * static_cast<float>(patch) / 3.0f);
    }
    return measurements;
}

TEST(MeasurementFile, PartialFilesGiveBackEveryBit)
{
    const ChartLayout layout = GridLayout(2, 3);
    const Measurements measurements = FirstRowOf(layout);
    const std::string text = MeasurementFile::Text(layout, measurements, Conditions, Form::Cgats);
    WriteAtomically("measurement_file_test.partial", text);
    EXPECT_EQ(MeasurementFile::Load("measurement_file_test.partial", layout, Conditions), measurements);

    const J4Chart::CgatsTable table = FileOf(text).Tables().front();
    EXPECT_EQ(table.rows.size(), 3u);
    EXPECT_EQ(table.ValueOf("INSTRUMENT_SERIAL"), "240118");
    EXPECT_EQ(table.rows[1].values[static_cast<size_t>(table.FindField("SCAN_COLUMN"))], "2");
    EXPECT_EQ(table.rows[0].values[static_cast<size_t>(table.FindField("XYZ_Y"))], "10.0000");
    EXPECT_EQ(table.rows[0].values[static_cast<size_t>(table.FindField("LAB_L"))], "37.8424");  // CIE 15, Y = 10
    std::remove("measurement_file_test.partial");
}

TEST(MeasurementFile, PartialFilesOfOthersAreRefused)
{
    const ChartLayout layout = GridLayout(2, 3);
    const std::string text = MeasurementFile::Text(layout, FirstRowOf(layout), Conditions, Form::Cgats);
    WriteAtomically("measurement_file_test.partial", text);
    const auto reason = [](const ChartLayout& other, const MeasurementFile::Conditions& conditions) {
        try {
            MeasurementFile::Load("measurement_file_test.partial", other, conditions);
        } catch (const ToolError& error) {
            return std::string(error.what());
        }
        return std::string("accepted");
    };
    EXPECT_THAT(reason(layout, {{"INSTRUMENT_SERIAL", "240117"}}), testing::HasSubstr("INSTRUMENT_SERIAL is '240118'"));
    EXPECT_THAT(reason(GridLayout(3, 2), Conditions), testing::HasSubstr("patch 3 'A3' is not of this layout"));
    EXPECT_THAT(reason(GridLayout(1, 2), Conditions), testing::HasSubstr("patch 3 'A3' is not of this layout"));
    WriteAtomically("measurement_file_test.partial", text.substr(0, text.size() / 2));
    EXPECT_THAT(reason(layout, Conditions), testing::HasSubstr("line "));
    std::remove("measurement_file_test.partial");
}

TEST(WhiteBaseFile, WhiteBasesReadBackAndBrokenOnesAreRefused)
{
    J4Chart::Spectrum whiteBase{};
    whiteBase.fill(0.1f);
    whiteBase[35] = 0.923456f;
    SaveWhiteBase("white_base_file_test.cgats", whiteBase, "2024-01-01T00:00:00Z", "640001");
    EXPECT_EQ(LoadWhiteBase("white_base_file_test.cgats"), whiteBase);
    whiteBase[3] = 0.0f;
    SaveWhiteBase("white_base_file_test.cgats", whiteBase, "", "");
    EXPECT_THROW(LoadWhiteBase("white_base_file_test.cgats"), ToolError);
    std::remove("white_base_file_test.cgats");
}

}  // namespace
}  // namespace J4Tool
