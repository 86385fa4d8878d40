#include "simulator/world/Bench.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <string>

#include "simulator/instrument/Status.h"
#include "simulator/table/TableUnit.h"

namespace J4Bench {
namespace {

TEST(Bench, ResetMakesAFreshWorldInWhichTimeGoesOn)
{
    Bench bench;
    const auto old = bench.TableAt(0);
    bench.Clock().Advance(5000);
    bench.GetFaults().tableSilent = true;
    bench.GetJournal().Enable(true);
    bench.GetJournal().Add({JournalEntry::Kind::Usb, "something"});
    bench.SetTableCount(3);
    bench.SetInstrumentCount(0);
    bench.GetNoise().SetDeviation(0.1);
    bench.GetChart().SetOffset({{10, 20}, 3});
    bench.Reset();
    EXPECT_EQ(bench.TableCount(), 1u);
    EXPECT_NE(bench.TableAt(0), old);
    EXPECT_FALSE(bench.GetFaults().tableSilent);
    EXPECT_FALSE(bench.GetJournal().Enabled());
    EXPECT_EQ(bench.GetJournal().Take(), "");
    EXPECT_EQ(bench.GetNoise().Deviation(), 0.0);
    EXPECT_EQ(bench.GetChart().Offset().degrees, 0.0);
    EXPECT_EQ(bench.Clock().Now(), 5000);
    EXPECT_NE(bench.CarriageOf(bench.SeatedInstrument(0)), nullptr) << "an instrument sits in the table";
}

TEST(Bench, OptionsOfTheEnvironmentAreAllSetOrNothingWorks)
{
    const std::string unseated = "Simulator.Tables=2;Simulator.SeatedInstrument=none;;240118";
    for (const char* settings : {"", ";", "Simulator.Noise=0.25", ";Simulator.Noise=0.5;;", "Simulator.Noise=0.5;"}) {
        Bench bench;
        bench.Configure("HERE", settings);
        EXPECT_EQ(bench.Refusal().empty(), std::string(settings) != ";Simulator.Noise=0.5;;") << bench.Refusal();
    }
    Bench bench;
    bench.Configure("HERE", unseated + ";Simulator.Noise=0.25;Simulator.Drift=0.5");
    EXPECT_EQ(bench.SeatedInstrument(1), "240118") << bench.Refusal();
    EXPECT_EQ(bench.GetNoise().Deviation(), 0.25);
    EXPECT_EQ(bench.Library().IsConnected(), Status::Ok);

    const struct {
        const char* settings;
        const char* text;
    } wrong[] = {
        {"Simulator.Noise=0.1;Simulator.Noice=0.1", "HERE: There is no option 'Simulator.Noice'."},
        {"Recognition=yes", "HERE: There is no option 'Recognition'."},
        {"Simulator.Clock=5", "HERE: The option 'Simulator.Clock' can only be read."},
        {"Simulator.Noise", "HERE: 'Simulator.Noise' is not of the form KEY=VALUE."},
        {"Simulator.Noise= 0.1", "HERE: Simulator.Noise: ' 0.1' is not a number from 0 to 1."},
        {"Simulator.ChartFile=a;;b=c", "HERE: Simulator.ChartFile: Chart file 'a;b=c': the file can't be opened."},
    };
    for (const auto& [settings, text] : wrong) {
        Bench refused;
        refused.Configure("HERE", settings);
        for (int resets = 0; resets < 2; ++resets) {
            EXPECT_EQ(refused.Refusal(), text);
            EXPECT_NE(refused.Library().IsConnected(), Status::Ok);
            EXPECT_NE(refused.Library().SetOption("Simulator.Noise", "0"), Status::Ok) << "before anything is measured";
            EXPECT_STREQ(refused.Library().GetOption("LastError"), text);
            refused.Reset();
        }
    }
}

TEST(Bench, ATraceHasALineForEachEventAndOutlivesAReset)
{
    const std::string file = testing::TempDir() + "trace.jsonl";
    Bench bench;
    bench.GetJournal().Enable(true);
    EXPECT_EQ(bench.Library().SetOption("Simulator.TraceFile", (file + "/none").c_str()), Status::InvalidValue);
    ASSERT_EQ(bench.Library().SetOption("Simulator.TraceFile", file.c_str()), Status::Ok);
    EXPECT_STREQ(bench.Library().GetOption("Simulator.TraceFile"), file.c_str());
    bench.GetJournal().Take();
    bench.Clock().Advance(1500);
    bench.Library().SetOption("a\"b\n\x01", "\xff");
    bench.Reset();
    bench.GetJournal().Add({.kind = JournalEntry::Kind::Received, .name = ":\xe4\x7f", .table = "640001"}, 7);
    bench.GetJournal().Add({.kind = JournalEntry::Kind::Samples, .name = "Sorvane0", .begin = 1, .count = 9});
    std::ostringstream written;
    written << std::ifstream(file, std::ios::binary).rdbuf();
    const std::string text = written.str();
    EXPECT_EQ(text.substr(text.find('\n', text.find("TraceFile")) + 1),
              R"({"time":1500,"kind":"library","name":"J4_SetOption","arguments":["a\"b\n\u0001",")"
              "\xef\xbf\xbd"
              R"("],"status":5,"result":"There is no option 'a\"b\n\u0001'."})"
              "\n"
              R"({"time":7,"kind":"received","table":"640001","name":":)"
              "\xc3\xa4\x7f\"}\n"
              R"({"time":1500,"kind":"samples","name":"Sorvane0","begin":1,"count":9})"
              "\n");
    EXPECT_EQ(text.substr(0, text.find('\n')), R"({"time":0,"kind":"trace","version":1})");
    EXPECT_EQ(bench.Library().SetOption("Simulator.TraceFile", "none"), Status::Ok);
    EXPECT_STREQ(bench.Library().GetOption("Simulator.TraceFile"), "");
}

TEST(Bench, TimeScaleIsARealPace)
{
    BenchClock clock;
    clock.SetTimeScale(0.5);
    const auto before = std::chrono::steady_clock::now();
    clock.Advance(40000);
    clock.AdvanceTo(10);
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(19));
    EXPECT_EQ(clock.Now(), 40000);
}

}  // namespace
}  // namespace J4Bench
