// What passes between the exported calls and the instrument's library: statuses, texts, handlers.
#include "tests/frame/FrameTest.h"

#include "Utilities/Exceptions/TableExceptions.h"

namespace J4Test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

struct InstrumentLibraryTest : FrameTest {};

TEST_F(InstrumentLibraryTest, AStatusBringsTheLibrarysTexts)
{
    static float values[J4_SPECTRUM_LENGTH];
    int32_t index = 0;
    struct Call {
        const char* name;
        const char* line;
        std::function<J4_Result()> call;
    };
    for (const Call& call : std::vector<Call>{
             {"J4_IsConnected", "J4_IsConnected", [] { return J4_IsConnected(); }},
             {"J4_TriggerMeasurement", "J4_TriggerMeasurement", [] { return J4_TriggerMeasurement(); }},
             {"J4_TriggerCountedScan", "J4_TriggerCountedScan 25", [] { return J4_TriggerCountedScan(25); }},
             {"J4_GetSpectrum", "J4_GetSpectrum 4294967295", [] { return J4_GetSpectrum(values, 0xffffffffu); }},
             {"J4_GetTriStimulus", "J4_GetTriStimulus 3", [] { return J4_GetTriStimulus(values, 3); }},
             {"J4_GetDensities", "J4_GetDensities 3", [&] { return J4_GetDensities(values, &index, 3); }},
             {"J4_GetDensity", "J4_GetDensity 3", [] { return J4_GetDensity(values, 3); }},
             {"J4_SetSubstrate", "J4_SetSubstrate", [] { return J4_SetSubstrate(values); }},
             {"J4_SetOption", "set Some Thing", [] { return J4_SetOption("Some", "Thing"); }}}) {
        for (const int32_t status : {1, 2, 4711, -3}) {
            library.Answer(call.name, status);
            TakeJournal();
            const J4_Result result = call.call();
            EXPECT_THAT(TakeJournal(), ElementsAre(call.line, "get ExtendedErrorInformation", "get LastError"));
            EXPECT_THAT(GetOption("ExtendedErrorInformation"), HasSubstr("first\nsecond\nthird\nfourth"));
            ExpectFailure(result, {call.name, status, "library text"});
        }
        library.script.clear();
        TakeJournal();
        EXPECT_EQ(call.call(), 0);
        EXPECT_THAT(TakeJournal(), ElementsAre(call.line));
        EXPECT_EQ(GetOption("LastError"), "no error");
    }
}

TEST_F(InstrumentLibraryTest, ValuesPassAsTheyAre)
{
    for (const int32_t value : {0, 1, 2, -5}) {
        library.Answer("J4_KeyPressed", value);
        EXPECT_EQ(J4_KeyPressed(), value);
        library.Answer("J4_Private 77 null", value);
        EXPECT_EQ(J4_Private(77, nullptr), value);
    }
    library.Answer("J4_GetNumberOfAvailableSamples", -2);
    EXPECT_EQ(J4_GetNumberOfAvailableSamples(), -2);
    library.options["Unknown"] = "its own\nanswer";
    EXPECT_EQ(GetOption("Unknown"), "its own\nanswer");
    EXPECT_THAT(Application::failures, IsEmpty());

    library.Throw("J4_KeyPressed", DeviceErrorException("gone"));
    EXPECT_EQ(J4_KeyPressed(), 2);
    ExpectFailure(1, {"J4_KeyPressed", 1, "gone"});
    library.Throw("J4_GetNumberOfAvailableSamples", DeviceErrorException("gone"));
    EXPECT_EQ(J4_GetNumberOfAvailableSamples(), -1);
    ExpectFailure(1, {"J4_GetNumberOfAvailableSamples", 1, "gone"});
}

TEST_F(InstrumentLibraryTest, HandlersAreBroughtBackByTheFirstForwardedCall)
{
    const Lines handlers = {"J4_RegisterErrorHandler set", "J4_RegisterDeviceMessageHandler set"};
    static float values[J4_SPECTRUM_LENGTH];
    for (const auto& [line, call] : std::vector<std::pair<const char*, std::function<void()>>>{
             {"J4_IsConnected", [] { J4_IsConnected(); }},
             {"J4_KeyPressed", [] { J4_KeyPressed(); }},
             {"J4_GetNumberOfAvailableSamples", [] { J4_GetNumberOfAvailableSamples(); }},
             {"J4_TriggerMeasurement", [] { J4_TriggerMeasurement(); }},
             {"J4_TriggerCountedScan 1", [] { J4_TriggerCountedScan(1); }},
             {"J4_GetSpectrum 0", [] { J4_GetSpectrum(values, 0); }},
             {"J4_GetTriStimulus 0", [] { J4_GetTriStimulus(values, 0); }},
             {"J4_GetDensities 0", [] { J4_GetDensities(values, nullptr, 0); }},
             {"J4_GetDensity 0", [] { J4_GetDensity(values, 0); }},
             {"J4_SetSubstrate", [] { J4_SetSubstrate(values); }},
             {"set Key Value", [] { J4_SetOption("Key", "Value"); }},
             {"get Key", [] { J4_GetOption("Key"); }}}) {
        EXPECT_EQ(J4_SetOption("Reset", "Samples"), 0);
        TakeJournal();
        J4_Private(77, nullptr);
        EXPECT_THAT(TakeJournal(), ElementsAre("private 77 null")) << "not this one";
        call();
        EXPECT_THAT(TakeJournal(), ElementsAreArray(Joined({handlers, {line}})));
        call();
        EXPECT_THAT(TakeJournal(), ElementsAre(line)) << "once is enough";
    }
}

TEST_F(InstrumentLibraryTest, AFullResetReachesTheLibraryFirst)
{
    TakeJournal();
    EXPECT_EQ(J4_SetOption("Reset", "All"), 0);
    EXPECT_THAT(TakeJournal(), ElementsAre("set Reset All", "J4_RegisterErrorHandler set"));
    EXPECT_EQ(J4_SetOption("Reset", "J4TAll"), 0);
    EXPECT_THAT(TakeJournal(), ElementsAre("set Reset All", "J4_RegisterErrorHandler set"))
        << "nothing was forwarded before: the device message handler was never given";
    EXPECT_EQ(GetOption("LastError"), "no error");
    EXPECT_EQ(J4_IsConnected(), 0);
    EXPECT_THAT(TakeJournal(),
                ElementsAre("J4_RegisterErrorHandler set", "J4_RegisterDeviceMessageHandler null", "J4_IsConnected"));
}

TEST_F(InstrumentLibraryTest, TheLibrarysErrorHandlerThrowsThroughTheLibrary)
{
    struct Text {
        const char* extended;
        const char* kept;
        const char* dropped;
    };
    for (const Text& text : {Text{"first\nsecond\nthird\nfourth", "third\nfourth", "second"},
                             {"first\nsecond", "first\nsecond", "third"},
                             {"first\nsecond\n", "J4_TriggerMeasurement", "second"},
                             {"alone", "alone", "third"}}) {
        library.options["ExtendedErrorInformation"] = text.extended;
        library.CallErrorHandler("J4_TriggerMeasurement", "J4_TriggerMeasurement", 17, "lamp is broken");
        TakeJournal();
        const J4_Result result = J4_TriggerMeasurement();
        EXPECT_THAT(TakeJournal(), ElementsAre("J4_TriggerMeasurement", "get ExtendedErrorInformation"));
        const std::string extended = GetOption("ExtendedErrorInformation");
        EXPECT_THAT(extended, HasSubstr(text.kept));
        EXPECT_THAT(extended, HasSubstr("J4T::ContextJ4T::libraryErrorHandler(): "));
        EXPECT_THAT(extended, Not(HasSubstr(text.dropped)));
        ExpectFailure(result, {"J4_TriggerMeasurement", 17, "J4_TriggerMeasurement failed: lamp is broken"});
    }
}

TEST_F(InstrumentLibraryTest, DeviceMessagesReachTheApplication)
{
    ASSERT_NE(library.deviceMessageHandler, nullptr);
    library.deviceMessageHandler(9, "anything");
    EXPECT_EQ(Application::messages, (std::vector<DeviceMessage>{{9, "anything"}}));
    J4_RegisterDeviceMessageHandler(nullptr);
    library.deviceMessageHandler(9, "anything");
    EXPECT_EQ(Application::messages.size(), 1u);

    // Within a reset there is no facade; a message then finds nobody to tell and breaks nothing.
    library.script["J4_SetOption Reset All"] = [this] {
        library.deviceMessageHandler(1, ScriptedLibrary::serialNumber);
        return 0;
    };
    J4_RegisterDeviceMessageHandler(Application::OnDeviceMessage);
    EXPECT_EQ(J4_SetOption("Reset", "All"), 0);
    EXPECT_EQ(Application::messages.size(), 2u);
}

TEST_F(InstrumentLibraryTest, OnlyTheTablesInstrumentRebuildsTheTable)
{
    Connect();
    for (const auto& [message, serial, rebuilt] : std::vector<std::tuple<int32_t, const char*, bool>>{
             {1, "765432", false}, {2, ScriptedLibrary::serialNumber, false}, {1, ScriptedLibrary::serialNumber, true}}) {
        library.deviceMessageHandler(message, serial);
        EXPECT_THAT(TakeJournal(), IsEmpty()) << "nothing is built inside the callback";
        EXPECT_EQ(J4_IsTableConnected(), 0);
        const Lines journal = TakeJournal();
        EXPECT_EQ(!journal.empty(), rebuilt);
        if (rebuilt) {
            EXPECT_THAT(LinesThatBegin(journal, {"table f", "table a0", "set DeviceType"}),
                        ElementsAre("table f0", "table f3", "table a0", "set DeviceType Sorvane0"))
                << "the old table is left in order first";
        }
    }
}

}  // namespace
}  // namespace J4Test
