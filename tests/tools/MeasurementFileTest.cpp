#include "tools/MeasurementFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

#include "tests/tools/LayoutText.h"
#include "tools/AtomicFile.h"
#include "tools/ToolError.h"
#include "tools/WhiteBaseFile.h"

namespace J4Tool {
namespace {

const MeasurementFile::Conditions Conditions = {{"TABLE_SERIAL", "640001"}, {"INSTRUMENT_SERIAL", "240118"}};
const std::string partialFile = "measurement_file_test.partial";

TEST(MeasurementFile, PartialFilesGiveBackEveryBitToTheirOwnScan)
{
    const ChartLayout layout = GridLayout(2, 3);
    Measurements measurements(layout.Patches().size());
    for (const size_t patch : layout.Rows().front()) {
        measurements[patch].emplace().spectrum.fill(0.1f + 0.1f * static_cast<float>(patch) / 3.0f);
    }
    const std::string text = MeasurementFile::Text(layout, measurements, Conditions, MeasurementFile::Form::Cgats);
    WriteAtomically(partialFile, text);
    EXPECT_EQ(MeasurementFile::Load(partialFile, layout, Conditions), measurements);

    const J4Chart::CgatsTable table = FileOf(text).Tables().front();
    EXPECT_EQ(table.rows.size(), 3u);
    EXPECT_EQ(table.ValueOf("INSTRUMENT_SERIAL"), "240118");
    const std::tuple<size_t, const char*, const char*> values[] = {
        {1, "SCAN_COLUMN", "2"}, {0, "XYZ_Y", "10.0000"}, {0, "LAB_L", "37.8424"}};
    for (const auto& [row, field, value] : values) {
        EXPECT_EQ(table.rows[row].values.at(static_cast<size_t>(table.FindField(field))), value);
    }

    // Ids of the layout's own stay, for references that have no names.
    const ChartLayout own =
        LayoutOf(CgatsText("SAMPLE_ID SAMPLE_NAME X Y WIDTH HEIGHT", "7 a 50 50 10 10\n5 b 60 50 10 10\n"));
    Measurements half(2);
    half[1].emplace().spectrum.fill(0.5f);
    WriteAtomically(partialFile, MeasurementFile::Text(own, half, Conditions, MeasurementFile::Form::Cgats));
    EXPECT_EQ(FileOf(*ContentOf(partialFile)).Tables().front().rows.front().values.front(), "5");
    EXPECT_EQ(MeasurementFile::Load(partialFile, own, Conditions), half);
    WriteAtomically(partialFile, text);

    const auto expectRefusal = [](const ChartLayout& other, const MeasurementFile::Conditions& conditions,
                                  const char* reason) {
        try {
            MeasurementFile::Load(partialFile, other, conditions);
            ADD_FAILURE() << "accepted: " << reason;
        } catch (const ToolError& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr(reason));
        }
    };
    expectRefusal(layout, {{"INSTRUMENT_SERIAL", "240117"}}, "INSTRUMENT_SERIAL is '240118' and not '240117'");
    expectRefusal(GridLayout(3, 2), Conditions, "patch 3 'A3' is not of this layout");
    expectRefusal(GridLayout(1, 2), Conditions, "patch 3 'A3' is not of this layout");
    WriteAtomically(partialFile, text.substr(0, text.size() / 2));
    expectRefusal(layout, Conditions, "line ");
    std::remove(partialFile.c_str());
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
