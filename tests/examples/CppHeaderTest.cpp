// The C++ header on the virtual table: its methods call the functions that they stand for, give what those give, and
// tell every failure of theirs; handlers live as long as their objects.
#include <atomic>
#include <functional>
#include <future>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "c_sdk/include/j4tavla.hpp"
#include "tests/session/RowTest.h"

namespace J4Test {
namespace {

namespace Options = J4Tavla::Options;
using J4Tavla::Error;
using J4Tavla::Table;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

using CppHeaderTest = RowTest;

/// What a call fails with, "FUNCTION STATUS"; an empty text for a call that does not fail.
std::string FailureOf(const std::function<void()>& call)
{
    try {
        call();
    } catch (const Error& error) {
        EXPECT_THAT(error.what(), StartsWith(error.Function() + " failed with status "));
        EXPECT_THAT(error.Trace(), HasSubstr(error.Text())) << error.what();
        return error.Function() + " " + std::to_string(error.Status());
    }
    return "";
}

TEST_F(CppHeaderTest, ValuesAreThoseOfTheFunctions)
{
    PrepareRow();
    Table table;
    const std::vector<J4Tavla::Spectrum> spectra = table.Scan({192.0f, 250.0f}, {288.0f, 250.0f});
    ASSERT_EQ(spectra.size(), std::size(patches));
    EXPECT_EQ(table.Spectra(), spectra);
    for (uint32_t i = 0; i < spectra.size(); ++i) {
        EXPECT_EQ(spectra[i].values, Measured(i));
        EXPECT_NEAR(spectra[i].At(550), patches[i], 0.001f);
    }
    std::array<float, 3> colour{};
    std::array<float, 4> densities{};
    float density = 0.0f;
    int32_t index = -1;
    J4_SetOption("ColorSpaceDescription.Type", "CIEXYZ");
    J4_GetTriStimulus(colour.data(), 2);
    J4_GetDensities(densities.data(), &index, 2);
    J4_GetDensity(&density, 2);
    EXPECT_EQ(table.GetColour(2).values, colour);
    EXPECT_EQ(table.GetColour(2).space, "CIEXYZ");
    const J4Tavla::Densities found = table.GetDensities(2);
    EXPECT_THAT(densities, ElementsAre(found.cyan, found.magenta, found.yellow, found.black));
    EXPECT_EQ(found.index, index);
    EXPECT_EQ(table.GetDensity(2), density);
    table.SetSubstrate(spectra[2]);
    EXPECT_NEAR(table.GetDensity(2), 0.0f, 1e-6f);
    EXPECT_EQ(table.KeyPressed(), J4_KeyPressed());

    table.MoveTo({210.0f, 250.0f});
    EXPECT_EQ(table.GetPosition().x, 210.0f);
    table.Set(Options::MeasurementMode, "SingleReflectance");
    EXPECT_NEAR(table.Measure().At(380), patches[0], 0.001f);
    EXPECT_EQ(table.SampleCount(), 1u);
    table.Set(Options::MeasurementMode, "ScanningReflectance");
    table.Set(Options::PatchRecognition, J4Tavla::Recognition::None);
    EXPECT_EQ(table.MeasureSamples(7).size(), 7u);

    table.WriteRaw(";a0");
    EXPECT_THAT(table.ReadRaw(14, 100), StartsWith(":$a0"));
    EXPECT_EQ(table.Private(1500, nullptr), 0);
    table.SynchronizeWhiteBases(spectra[1]);
    EXPECT_NEAR(Numbers("J4TFlash_3000").at(17), patches[1], 0.001f);
}

TEST_F(CppHeaderTest, ASpectrumKnowsItsWavelengths)
{
    J4Tavla::Spectrum spectrum;
    spectrum.values.back() = 0.5f;
    EXPECT_EQ(J4Tavla::Spectrum::Wavelength(17), 550);
    EXPECT_EQ(spectrum.At(730), 0.5f);
    for (const int wavelength : {370, 379, 385, 740, -10}) {
        EXPECT_THROW(static_cast<void>(spectrum.At(wavelength)), std::out_of_range) << wavelength;
    }
}

TEST_F(CppHeaderTest, OptionsHaveTheirTypes)
{
    Table table;
    table.Set(Options::ScanSpeed, 80);
    EXPECT_EQ(GetOption("J4TScanSpeed"), "80");
    EXPECT_EQ(table.Get(Options::ScanSpeed), 80);
    table.Set(Options::HoldPosition, true);
    EXPECT_TRUE(table.Get(Options::HoldPosition));
    table.Set(Options::HoldPosition, false);
    EXPECT_EQ(GetOption("J4THoldPosition"), "no");
    table.Set(Options::PatchRecognition, J4Tavla::Recognition::BySamples);
    EXPECT_EQ(GetOption("J4TRecognitionAlgorithm"), "1");
    table.Set(Options::UserUnit, J4Tavla::Unit::Inch);
    EXPECT_EQ(table.Get(Options::UserUnit), J4Tavla::Unit::Inch);
    EXPECT_EQ(table.Get(Options::TableInstrument), seated);
    EXPECT_EQ(table.Get(Options::SerialNumber), 640001);
    table.Set(Options::PlacementFactor, 2.0f);
    EXPECT_EQ(table.Get(Options::PlacementFactor), 2.0f);
    table.GoHome();
    table.Calibrate();  // which a factor without a point would make fail
    EXPECT_GT(table.Get(Options::IntegrationTime), 0.001f);
    EXPECT_THROW(table.Get(J4Tavla::ReadOnly<int32_t>{"J4TVersion"}), Error)
        << "104 is a number, the whole text is none";
    using namespace std::string_literals;
    EXPECT_THROW(table.GetOption("J4TScanSpeed\0"s), std::invalid_argument);
    EXPECT_THROW(table.SetOption("J4TScanSpeed\0x"s, "90"), std::invalid_argument);
    EXPECT_THROW(table.SetOption("J4TScanSpeed", "90\0"s), std::invalid_argument);
    EXPECT_EQ(table.Get(Options::ScanSpeed), 80);
}

TEST_F(CppHeaderTest, EachFailureNamesItsFunction)
{
    Table table;
    const auto all = [&](const std::vector<std::pair<std::string, std::function<void()>>>& calls) {
        for (const auto& [failure, call] : calls) {
            EXPECT_EQ(FailureOf(call), failure);
        }
    };
    Set("Simulator.Instruments", "0");
    Set("Simulator.SeatedInstrument", "none");
    all({
        {"J4_IsTableConnected 100", [&] { table.CheckTable(); }},
        {"J4_GoToHomePosition 100", [&] { table.GoHome(); }},
        {"J4_SetPosition 100",
         [&] {
             table.MoveTo({200.0f, 200.0f});
         }},
        {"J4_GetPosition 100", [&] { table.GetPosition(); }},
        {"J4_Scan 100",
         [&] {
             table.Scan({190.0f, 250.0f}, {290.0f, 250.0f});
         }},
        {"J4_SynchronizeWhitebases 100", [&] { table.SynchronizeWhiteBases({}); }},
        {"J4_IsConnected 2", [&] { table.CheckInstrument(); }},
        {"J4_Calibrate 2", [&] { table.Calibrate(); }},
        {"J4_TriggerMeasurement 2", [&] { table.Measure(); }},
        {"J4_TriggerCountedScan 2", [&] { table.MeasureSamples(1); }},
        {"J4_GetSpectrum 7", [&] { table.GetSpectrum(0); }},
        {"J4_GetTriStimulus 7", [&] { table.GetColour(0); }},
        {"J4_GetDensities 7", [&] { table.GetDensities(0); }},
        {"J4_GetDensity 7", [&] { table.GetDensity(0); }},
        {"J4_SetSubstrate 6", [&] { table.SetSubstrate({}); }},
        {"J4_SetOption 5", [&] { table.SetOption("No such option", "1"); }},
        {"J4_GetOption 10", [&] { table.GetOption(""); }},
        {"J4_GetOption 100", [&] { table.Get(Options::MoveSpeed); }},
    });
}

TEST_F(CppHeaderTest, AnErrorTellsTheStatusByNameAndTheTextAsItIs)
{
    Table table;
    try {
        table.GetOption("Please throw an exception in the j4tavla SDK");
        FAIL();
    } catch (const Error& error) {
        EXPECT_THAT(error.what(), StartsWith("J4_GetOption failed with status 9: You wanted a 'throw' in the j4tavla"));
        EXPECT_THAT(error.what(), testing::Not(testing::EndsWith("\n")));
        EXPECT_STREQ(error.Name(), "J4_ResultException");
        EXPECT_THAT(error.Text(), testing::EndsWith("\n"));
    }
}

TEST_F(CppHeaderTest, HandlersAreCalledAsLongAsTheyAreKept)
{
    std::vector<std::string> heard;
    {
        Table table;
        EXPECT_THROW(Table(), std::logic_error);
        EXPECT_THROW(static_cast<void>(table.OnFailure(nullptr)), std::invalid_argument);
        EXPECT_THROW(static_cast<void>(table.OnDeviceMessage(nullptr)), std::invalid_argument);
        {
            const J4Tavla::Registration outer = table.OnFailure([&](const Error& error) {
                heard.push_back(error.Function());
                // A call in a handler, which fails or not, leaves the failure that it is told of.
                if (heard.size() == 1) {
                    EXPECT_EQ(FailureOf([&] { table.GetOption(""); }), "J4_GetOption 10");
                    EXPECT_EQ(table.GetOption("J4TBuildVersion"), "104");
                    EXPECT_THROW(table.Reset(), std::logic_error);
                }
            });
            const J4Tavla::Registration messages = table.OnDeviceMessage([&](int32_t message, const std::string& text) {
                heard.push_back(std::to_string(message) + " " + text);
            });
            EXPECT_EQ(FailureOf([&] { table.GetSpectrum(0); }), "J4_GetSpectrum 7");
            EXPECT_THAT(heard, ElementsAre("J4_GetSpectrum", "J4_GetOption"));
            table.Reset();
            heard.clear();
            table.SetOption("Simulator.Unplug", "240117");
            FailureOf([&] { table.GetDensity(0); });
            EXPECT_THAT(heard, ElementsAre("1 240117", "J4_GetDensity"));
            table.SetOption("Simulator.Unplug", "none");
            const J4Tavla::Registration thrower =
                table.OnFailure([](const Error&) { throw std::runtime_error("of the handler"); });
            EXPECT_THROW(table.GetSpectrum(0), std::runtime_error);
            EXPECT_EQ(table.SampleCount(), 0u) << "what was thrown is thrown once";
        }
        heard.clear();
        EXPECT_EQ(FailureOf([&] { table.GetSpectrum(0); }), "J4_GetSpectrum 7");
        EXPECT_THAT(heard, ElementsAre());
        EXPECT_THAT(Application::failures, ElementsAre());
    }
    Application::RegisterHandlers();
    Table().CheckTable();
    J4_GetSpectrum(nullptr, 0);
    EXPECT_EQ(Application::failures.size(), 1u) << "the handlers of before are back";
}

TEST_F(CppHeaderTest, AHandlerIsCalledNoMoreWhenItsRegistrationHasEnded)
{
    Table table;
    std::optional<J4Tavla::Registration> second;
    std::string heard;
    std::optional<J4Tavla::Registration> first = table.OnFailure([&](const Error&) {
        heard += "first ";
        second.reset();
        first.reset();
        heard += "ended ";
    });
    second = table.OnFailure([&](const Error&) { heard += "second "; });
    FailureOf([&] { table.GetSpectrum(0); });
    FailureOf([&] { table.GetSpectrum(0); });
    EXPECT_EQ(heard, "first ended ");

    // What another thread is in the midst of, the end of a registration waits for.
    std::promise<void> begun;
    std::atomic<bool> hasEnded{false};
    std::atomic<bool> calledAfterwards{false};
    first = table.OnFailure([&](const Error&) {
        begun.set_value();
        for (int i = 0; i < 1000 && !hasEnded; ++i) {
            std::this_thread::yield();
        }
    });
    second = table.OnFailure([&](const Error&) { calledAfterwards = hasEnded.load(); });
    std::thread caller([&] { FailureOf([&] { table.GetSpectrum(0); }); });
    begun.get_future().wait();
    second.reset();
    hasEnded = true;
    caller.join();
    EXPECT_FALSE(calledAfterwards);
}

TEST_F(CppHeaderTest, ThreadsTakeTurns)
{
    Table table;
    std::atomic<int> wrong{0};
    const auto work = [&](const std::string& key, const std::string& value) {
        for (int i = 0; i < 500; ++i) {
            wrong += table.GetOption(key) != value;
            wrong += FailureOf([&] { table.GetSpectrum(9); }) != "J4_GetSpectrum 7";
        }
    };
    std::thread other(work, "J4TVersion", "Version 1.1.4  Build 104");
    work("J4TBuildVersion", "104");
    other.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace J4Test
