#include "tools/Scanner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <new>
#include <utility>

#include "tests/tools/LayoutText.h"
#include "tools/ChartScan.h"
#include "tools/ToolError.h"

namespace J4Tool {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Functions of the library that find flat patches where the layout has them, and do wrong what a test tells them to.
struct ScriptedTable {
    using Spectra = std::vector<Session::Spectrum>;

    /// What happens to one scan: a status, and what becomes of the spectra.
    struct Event {
        int32_t status = 0;
        std::function<void(Spectra&)> change;
    };

    int32_t Scan(float startX, float startY, float endX)
    {
        onScan();
        const Event event = events.empty() ? Event() : events.front();
        events.erase(events.begin(), events.begin() + (events.empty() ? 0 : 1));
        const size_t row = static_cast<size_t>(std::lround((startY - 200.0f) / 10.0f));
        samples.assign(5, {});
        for (size_t column = 0; column < samples.size(); ++column) {
            samples[column].fill(ReflectanceOf(row, column));
        }
        const bool backwards = endX < startX;
        if (backwards) {
            std::reverse(samples.begin(), samples.end());
        }
        scans.push_back(static_cast<char>('A' + row) + std::string(backwards ? "1<" : "1"));
        if (event.change) {
            event.change(samples);
        }
        if (event.status != 0 && handler != nullptr) {
            handler("J4_Scan", event.status, "as the script says");
        }
        return event.status;
    }

    TableFunctions Functions();

    std::vector<Event> events;         ///< of the next scans; without one a scan goes well
    std::vector<std::string> scans;    ///< first patch of each row that was scanned, "<" behind it when backwards
    std::vector<std::string> options;  ///< "KEY=VALUE" as they were set
    std::function<void()> onScan = [] {};
    Spectra samples;
    J4_ErrorHandler handler = nullptr;
};

ScriptedTable* scripted = nullptr;  // one at a time, as the library is

TableFunctions ScriptedTable::Functions()
{
    scripted = this;
    TableFunctions functions;
    functions.Scan = [](float startX, float startY, float endX, float) { return scripted->Scan(startX, startY, endX); };
    functions.GetNumberOfAvailableSamples = [] { return static_cast<int32_t>(scripted->samples.size()); };
    functions.GetSpectrum = [](float* spectrum, uint32_t index) {
        std::copy(scripted->samples[index].begin(), scripted->samples[index].end(), spectrum);
        return 0;
    };
    functions.SetOption = [](const char* key, const char* value) {
        scripted->options.push_back(std::string(key) + "=" + value);
        return 0;
    };
    functions.GetOption = [](const char*) { return ""; };
    functions.RegisterErrorHandler = [](J4_ErrorHandler handler) { return std::exchange(scripted->handler, handler); };
    functions.GetPosition = [](float* x, float* y) {
        *x = 100.0f;
        *y = 80.0f;
        return 0;
    };
    functions.IsTableConnected = [] { return 0; };
    return functions;
}

class Ear : public ScanListener {
public:
    void Step(const std::string&) override {}
    void Notice(const std::string&) override {}
    void Started(const ScanState&) override {}
    void RowBegins(const ScanState&, size_t, ReadingWay) override {}
    void RowDone(const ScanState& state, size_t) override { last = state; }
    void RowFailed(const ScanState&, size_t row, int attempt, const std::string& reason, bool again) override
    {
        failures.push_back(std::to_string(row + 1) + "." + std::to_string(attempt) +
                           (again ? " again: " : " given up: ") + reason);
    }

    ScanState last;
    std::vector<std::string> failures;
};

class ScannerTest : public testing::Test {
protected:
    std::vector<size_t> Run(int retries = 2, size_t repeats = 1)
    {
        Scanner::Settings settings;
        settings.repeats = repeats;
        settings.retries = retries;
        Scanner scanner(session, layout, settings, ear);
        scanner.stop = [this] { return stopped; };
        return scanner.Run(measurements);
    }

    const ChartLayout layout = GridLayout(3, 5);
    ScriptedTable table;
    Session session{table.Functions()};
    Ear ear;
    Measurements measurements = Measurements(15);
    bool stopped = false;
};

TEST_F(ScannerTest, TheFirstMotionBearsWhatIsLeftOfOneBefore)
{
    static std::vector<std::string> failures;  // of the next calls; an empty one, or none, is success
    static size_t calls;
    TableFunctions functions = table.Functions();
    functions.SetPosition = [](float, float) -> J4_Result {
        const std::string failure = calls < failures.size() ? failures[calls] : "";
        ++calls;
        if (failure.empty()) {
            return J4_ResultNoError;
        }
        scripted->handler("J4_SetPosition", J4_ResultDeviceFault, failure.c_str());
        return J4_ResultDeviceFault;
    };
    struct Row {
        std::vector<std::string> failures;
        size_t callsOfTwoMoves;
        int movesThatFail;
    };
    for (const Row& row : {Row{{"Device busy."}, 3, 0},
                           {{"Missing ':'."}, 3, 0},
                           {{"Device busy.", "Missing ':'."}, 3, 1},
                           {{"", "Device busy."}, 2, 1},
                           {{"Can't find white plate (4)."}, 2, 1}}) {
        failures = row.failures;
        calls = 0;
        Session moving(functions);
        int failed = 0;
        for (int move = 0; move < 2; ++move) {
            try {
                moving.Move({200.0, 200.0});
            } catch (const ToolError&) {
                ++failed;
            }
        }
        EXPECT_EQ(calls, row.callsOfTwoMoves) << row.failures.front();
        EXPECT_EQ(failed, row.movesThatFail) << row.failures.front();
    }
}

TEST_F(ScannerTest, EveryPatchGetsItsOwnSpectrumInBothDirections)
{
    EXPECT_TRUE(Run().empty());
    EXPECT_THAT(table.scans, ElementsAre("A1", "B1<", "C1"));
    for (size_t i = 0; i < measurements.size(); ++i) {
        ASSERT_TRUE(measurements[i]) << i;
        EXPECT_NEAR(measurements[i]->spectrum[7], ReflectanceOf(i / 5, i % 5), 1e-5) << i;
    }
    EXPECT_EQ(ear.last.patchesDone, 15u);
    EXPECT_EQ(ear.last.rowsDone, 3u);
}

TEST_F(ScannerTest, AFailedRowIsScannedAgain)
{
    table.events = {{}, {0, [](auto& samples) { samples.pop_back(); }}, {J4_ResultDeviceFault, {}}, {}};
    EXPECT_TRUE(Run().empty());
    EXPECT_THAT(table.scans, ElementsAre("A1", "B1<", "B1<", "B1<", "C1"));
    EXPECT_THAT(ear.failures,
                ElementsAre("2.1 again: 4 patches were found instead of 5", HasSubstr("as the script says")));
    EXPECT_EQ(CountMeasured(measurements), 15u);
}

TEST_F(ScannerTest, ARowThatFailsInEveryAttemptLeavesTheOthers)
{
    const ScriptedTable::Event reversed{0, [](auto& samples) { std::reverse(samples.begin(), samples.end()); }};
    table.events = {reversed, reversed};
    EXPECT_THAT(Run(1), ElementsAre(0u));
    EXPECT_THAT(ear.failures, ElementsAre("1.1 again: the row was read in the wrong direction",
                                          "1.2 given up: the row was read in the wrong direction"));
    EXPECT_THAT(OpenRows(layout, measurements), ElementsAre(0u));
    EXPECT_EQ(CountMeasured(measurements), 10u);

    // The next run takes up what is open.
    table.scans.clear();
    EXPECT_TRUE(Run().empty());
    EXPECT_THAT(table.scans, ElementsAre("A1"));
}

TEST_F(ScannerTest, RepeatedScansOfARowAreAveragedAndARowWithoutAllOfThemIsOpen)
{
    const auto lighter = [](float by) {
        return ScriptedTable::Event{0, [by](auto& samples) {
                                        for (float& value : samples.front()) {
                                            value += by;
                                        }
                                    }};
    };
    // The first patch of the first row is seen at the beginning of one scan, and at the end of the way back.
    table.events = {lighter(0.003f), {0, [](auto& samples) { samples.pop_back(); }}, {}, lighter(0.006f)};
    table.onScan = [this] { stopped = table.scans.size() == 8; };
    EXPECT_TRUE(Run(2, 3).empty());
    EXPECT_THAT(table.scans, ElementsAre("A1", "A1<", "A1<", "A1", "B1<", "B1", "B1<", "C1", "C1<"));
    EXPECT_THAT(ear.failures, ElementsAre("1.1 again: 4 patches were found instead of 5"));
    EXPECT_THAT(OpenRows(layout, measurements), ElementsAre(2u)) << "it was scanned twice and not three times";

    ASSERT_TRUE(measurements[0] && measurements[1]);
    EXPECT_NEAR(measurements[0]->spectrum[7], ReflectanceOf(0, 0) + 0.003f, 1e-6);
    EXPECT_NEAR(measurements[1]->spectrum[7], ReflectanceOf(0, 1), 1e-6);
    EXPECT_NEAR(measurements[1]->repeatSpread, 0.0, 1e-12);
    // Greys differ in lightness alone, and CIEDE2000 weighs that by where it lies.
    const auto lightness = [](float reflectance) { return 116.0 * std::cbrt(static_cast<double>(reflectance)) - 16.0; };
    const double light[] = {lightness(0.033f), lightness(0.03f), lightness(0.036f)};
    const double mean = (light[0] + light[1] + light[2]) / 3.0;
    double wanted = 0.0;
    for (const double value : light) {
        const double square = std::pow((value + mean) / 2.0 - 50.0, 2.0);
        wanted += std::abs(value - mean) / (1.0 + 0.015 * square / std::sqrt(20.0 + square)) / 3.0;
    }
    EXPECT_NEAR(measurements[0]->repeatSpread, wanted, 1e-6);
}

TEST_F(ScannerTest, EndsAtOnceWhereNoAttemptCanHelp)
{
    for (const int32_t status : {J4_ResultDeviceNotConnected, J4_ResultResourceFault, J4_ResultIllegalPosition,
                                 J4_ResultSpectrophotometerNotConnected, J4_ResultFrameFailure}) {
        measurements.assign(15, std::nullopt);
        table.scans.clear();
        table.events = {{}, {status, {}}};
        EXPECT_THROW(Run(), ToolError) << status;
        EXPECT_EQ(table.scans.size(), 2u);
        EXPECT_EQ(CountMeasured(measurements), 5u) << "what was measured before is kept";
    }
}

TEST_F(ScannerTest, AnInterruptionEndsTheRowInHand)
{
    table.onScan = [this] { stopped = table.scans.size() == 1; };
    EXPECT_TRUE(Run().empty());
    EXPECT_THAT(table.scans, ElementsAre("A1", "B1<"));
    EXPECT_EQ(CountMeasured(measurements), 10u);
    session.Release();
    EXPECT_THAT(table.options, ElementsAre("J4THoldPosition=no", "J4TEnableElectrostaticFoil=no"));
}

TEST_F(ScannerTest, WhateverEndsAScanItsRowsAreKeptAndTheTableIsLetGo)
{
    const ChartScan::Files files{OutputFile("scanner_test.cgats", true, {}), MeasurementFile::Form::Cgats,
                                 "scanner_test.cgats.partial"};
    std::FILE* const nowhere = std::tmpfile();
    Progress progress(nowhere, Progress::Form::Json);
    session.Connect();
    table.events = {{}, {0, [](auto&) { throw std::bad_alloc(); }}};
    EXPECT_THROW(ChartScan(session, layout, {}, {}, files, progress).Run(), std::bad_alloc);
    EXPECT_THAT(table.options, ElementsAre("J4THoldPosition=no", "J4TEnableElectrostaticFoil=no"));
    EXPECT_EQ(CountMeasured(MeasurementFile::Load(files.partial, layout, {})), 5u);
    std::fclose(nowhere);
    std::remove(files.partial.c_str());
}

}  // namespace
}  // namespace J4Tool
