// The frame around every exported call: arguments, the way from an exception to a status, what is kept of a failure,
// and what passes to the instrument's library, which may be unusable.
#include <cstring>
#include <new>
#include <stdexcept>
#include <typeinfo>

#include "Utilities/Exceptions/SDKError.h"
#include "Utilities/Exceptions/TableExceptions.h"
#include "tests/frame/FrameTest.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::J4T::SDKError;
using testing::AllOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using namespace Kestrelon::Utilities::Exceptions;

const char* const text = "what went wrong";

struct CallsTest : FrameTest {
    /// J4_IsConnected of a library that throws it.
    template <class Exception>
    void ExpectStatus(const Exception& exception, int32_t status, const std::string& message = text)
    {
        library.Throw("J4_IsConnected", exception);
        ExpectFailure(J4_IsConnected(), {"J4_IsConnected", status, message});
    }

    /// For the types without a status of their own, whose name goes into the message.
    template <class Thrown, class Family = Thrown>
    void ExpectStatus9(const Thrown& exception, const std::string& what = text)
    {
        ExpectStatus(exception, J4_ResultException, what + "\n" + typeid(Family).name() + "\n");
    }
};

TEST_F(CallsTest, EachExceptionHasItsStatus)
{
    ExpectStatus(PositionNotReachedException(text), 101);
    ExpectStatus(IllegalPositionException(text), 102);
    ExpectStatus(GeneralCommunicationException(text), 2);
    ExpectStatus(CommunicationTimeoutException(text), 1);
    ExpectStatus(CommunicationDataException(text), 1);
    ExpectStatus(CommunicationException(text), 2);
    ExpectStatus(DeviceErrorException(text), 1);
    ExpectStatus(J4NotConnectedException(text), 100);
    ExpectStatus(J4CalibrationFailedException(text), 3);
    ExpectStatus(WhiteBaseException(text), 103);
    ExpectStatus(EEPromException(text), 1);
    ExpectStatus(ResourceException(text), 10);
    ExpectStatus(ResourceNotAvailableException(text), 10);
    ExpectStatus(SDKError(-17, text, ""), -17);
    ExpectStatus9(TableException(text));
    ExpectStatus9(ScanException(text));
    ExpectStatus9(FirmwareException(text));
    ExpectStatus9(ProperyDataException(text));
    ExpectStatus9(NullPointerException(text));
    ExpectStatus9(RuntimeException(text));
    ExpectStatus9(CalculationProblemException(text));
    ExpectStatus9<std::invalid_argument, InvalidArgumentException>(std::invalid_argument(text));
    ExpectStatus9<int, RuntimeException>(5, "unkown exception caught");
}

TEST_F(CallsTest, ALibraryExceptionIsNotReported)
{
    library.Throw("J4_IsConnected", J4LibraryException(text));
    library.Throw("J4_GetOption Key", J4LibraryException(text));
    EXPECT_EQ(J4_IsConnected(), 0);
    EXPECT_EQ(GetOption("LastError"), "no error");
    EXPECT_EQ(GetOption("Key"), text) << "its text is the option's value";
    EXPECT_EQ(GetOption("LastError"), "no error");
    EXPECT_THAT(Application::failures, IsEmpty());
}

TEST_F(CallsTest, AFailureStaysReadableUntilTheNextCall)
{
    library.Throw("J4_IsConnected", DeviceErrorException(text));
    EXPECT_EQ(J4_IsConnected(), 1);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(GetOption("LastError"), text);
        EXPECT_THAT(GetOption("ExtendedErrorInformation"),
                    AllOf(StartsWith(std::string(text) + "\n" + typeid(DeviceErrorException).name() + "\n\t::"),
                          HasSubstr("j4Bridge::J4_IsConnected(): \\src\\j4Bridge.cpp:"),
                          HasSubstr("j4TableSDK::J4_IsConnected(): \\src\\j4TableSDK.cpp:"),
                          HasSubstr("\n\t::J4_IsConnected(): \\src\\j4T_c_sdk.cpp:")));
    }
    EXPECT_EQ(Application::failures.size(), 1u) << "reading reports nothing";
    EXPECT_EQ(GetOption("AnyOtherKey"), "");
    EXPECT_EQ(GetOption("LastError"), "no error");
    EXPECT_EQ(GetOption("ExtendedErrorInformation"), "no error\n");
}

TEST_F(CallsTest, WhatAHandlerCallsDecidesWhatTheFailedCallReturns)
{
    static std::string read;
    library.Throw("J4_IsConnected", DeviceErrorException(text));
    J4_RegisterErrorHandler([](const char*, int32_t, const char*) { read = GetOption("LastError"); });
    EXPECT_EQ(J4_IsConnected(), 1);
    EXPECT_EQ(read, text);
    EXPECT_EQ(GetOption("LastError"), text);
    J4_RegisterErrorHandler([](const char*, int32_t, const char*) { J4_KeyPressed(); });
    EXPECT_EQ(J4_IsConnected(), 0) << "the status of the call inside";
    EXPECT_EQ(GetOption("LastError"), "no error");
    J4_RegisterErrorHandler([](const char*, int32_t status, const char* message) {
        if (status == 1) {
            J4_GetSpectrum(nullptr, 0);
        }
        read = message;
    });
    EXPECT_EQ(J4_IsConnected(), 10);
    EXPECT_EQ(read, text) << "the outer message is still there";
}

TEST_F(CallsTest, ArgumentsAreTestedBeforeAnythingIsCalled)
{
    float value = 7.0f;
    int32_t index = 7;
    struct Call {
        const char* name;
        const char* text;
        std::function<J4_Result()> call;
    };
    const auto read = [](const char* key) {
        EXPECT_STREQ(J4_GetOption(key), "");
        return J4_Result{J4_ResultResourceFault};  // the handler tells
    };
    const char* const null = "parameter must not be null";
    const char* const empty = "parameter must not be empty";
    for (const Call& call :
         std::vector<Call>{{"J4_GetSpectrum", null, [] { return J4_GetSpectrum(nullptr, 0); }},
                           {"J4_GetTriStimulus", null, [] { return J4_GetTriStimulus(nullptr, 0); }},
                           {"J4_GetDensity", null, [] { return J4_GetDensity(nullptr, 0); }},
                           {"J4_GetDensities", null, [&] { return J4_GetDensities(nullptr, &index, 0); }},
                           {"J4_SetSubstrate", null, [] { return J4_SetSubstrate(nullptr); }},
                           {"J4_GetPosition", null, [&] { return J4_GetPosition(nullptr, &value); }},
                           {"J4_GetPosition", null, [&] { return J4_GetPosition(&value, nullptr); }},
                           {"J4_SetOption", null, [] { return J4_SetOption(nullptr, "value"); }},
                           {"J4_SetOption", null, [] { return J4_SetOption("key", nullptr); }},
                           {"J4_SetOption", empty, [] { return J4_SetOption("", "value"); }},
                           {"J4_SetOption", empty, [] { return J4_SetOption("key", ""); }},
                           {"J4_GetOption", null, [&] { return read(nullptr); }},
                           {"J4_GetOption", empty, [&] { return read(""); }}}) {
        TakeJournal();
        ExpectFailure(call.call(), {call.name, J4_ResultResourceFault, call.text});
        EXPECT_THAT(TakeJournal(), IsEmpty()) << call.name;
    }
    EXPECT_EQ(value, 7.0f);
    EXPECT_EQ(index, 7);
    EXPECT_EQ(J4_GetDensities(&value, nullptr, 0), 0) << "the second result is the library's business";
}

struct Call {
    const char* name;
    std::function<int64_t()> call;
    int64_t alone;               ///< its value while the instrument's library can't be used
    const char* line = nullptr;  ///< in the journal, where it is handed on
    bool hasStatus = true;       ///< of the instrument's library, not another value
};

/// All calls.
std::vector<Call> Calls()
{
    static float values[J4_SPECTRUM_LENGTH];
    return {{"J4_IsConnected", [] { return J4_IsConnected(); }, 104, "J4_IsConnected"},
            {"J4_KeyPressed", [] { return J4_KeyPressed(); }, 2, "J4_KeyPressed", false},
            {"J4_GetNumberOfAvailableSamples", [] { return J4_GetNumberOfAvailableSamples(); }, -1,
             "J4_GetNumberOfAvailableSamples", false},
            {"J4_Calibrate", [] { return J4_Calibrate(); }, 104},
            {"J4_TriggerMeasurement", [] { return J4_TriggerMeasurement(); }, 104, "J4_TriggerMeasurement"},
            {"J4_TriggerCountedScan", [] { return J4_TriggerCountedScan(25); }, 104, "J4_TriggerCountedScan 25"},
            {"J4_GetSpectrum", [] { return J4_GetSpectrum(values, UINT32_MAX); }, 104, "J4_GetSpectrum 4294967295"},
            {"J4_GetTriStimulus", [] { return J4_GetTriStimulus(values, 3); }, 104, "J4_GetTriStimulus 3"},
            {"J4_GetDensities", [] { return J4_GetDensities(values, nullptr, 3); }, 104, "J4_GetDensities 3"},
            {"J4_GetDensity", [] { return J4_GetDensity(values, 3); }, 104, "J4_GetDensity 3"},
            {"J4_SetSubstrate", [] { return J4_SetSubstrate(values); }, 104, "J4_SetSubstrate"},
            {"J4_SetOption", [] { return J4_SetOption("Some", "Thing"); }, 104, "set Some Thing"},
            {"J4_SetOption", [] { return J4_SetOption("Reset", "All"); }, 104},
            {"J4_GetOption", [] { return std::strlen(J4_GetOption("Key")); }, 32, "get Key", false},  // the reason
            {"J4_RegisterErrorHandler",
             [] { return reinterpret_cast<intptr_t>(J4_RegisterErrorHandler(Application::OnError)); }, 0},
            {"J4_RegisterDeviceMessageHandler",
             [] { return reinterpret_cast<intptr_t>(J4_RegisterDeviceMessageHandler(nullptr)); }, 0},
            {"J4_GetPosition", [] { return J4_GetPosition(values, values); }, 104},
            {"J4_SetPosition", [] { return J4_SetPosition(300.0f, 300.0f); }, 104},
            {"J4_GoToHomePosition", [] { return J4_GoToHomePosition(); }, 104},
            {"J4_Scan", [] { return J4_Scan(200.0f, 250.0f, 300.0f, 250.0f); }, 104},
            {"J4_IsTableConnected", [] { return J4_IsTableConnected(); }, 104},
            {"J4_SynchronizeWhitebases", [] { return J4_SynchronizeWhitebases(values); }, 104},
            {"J4_Private", [] { return J4_Private(7, nullptr); }, 0}};
}

TEST_F(CallsTest, WithoutTheLibraryEachCallTriesAgainAndGivesItsDefault)
{
    library.loadFailure = "Can't load library ";
    EXPECT_EQ(J4_SetOption("Reset", "All"), 104) << "the running library goes, and none comes";
    for (const Call& call : Calls()) {
        library.loads = 0;
        EXPECT_EQ(call.call(), call.alone) << call.name;
        EXPECT_GT(library.loads, 0) << call.name;
    }
    for (const char* key : {"LastError", "J4TVersion", "Anything"}) {
        EXPECT_EQ(GetOption(key), "Can't load library sorvane64.dll") << key;
    }
    EXPECT_THAT(Application::failures, IsEmpty()) << "no handler can be called";
    library.loadFailure.clear();
    EXPECT_EQ(J4_IsConnected(), 0) << "it has appeared";
    EXPECT_EQ(GetOption("J4TJ4SDKPath"), "/scripted/sorvane64.dll");
    EXPECT_EQ(J4_IsTableConnected(), 0);
}

TEST_F(CallsTest, ALibraryThatLacksAFunctionIsNoLibrary)
{
    const Lines names = library.resolved;
    EXPECT_EQ(names.size(), ScriptedLibrary::Functions().size());
    for (const std::string& name : names) {
        library.missingFunction = name;
        EXPECT_EQ(J4_SetOption("Reset", "All"), 104) << name;
        EXPECT_EQ(J4_IsConnected(), 104) << name;
        EXPECT_EQ(GetOption("LastError"), "Invalid j4SDK function pointer.") << name;
        library.missingFunction.clear();
        EXPECT_EQ(J4_IsConnected(), 0) << name;
    }
}

TEST_F(CallsTest, AnotherFailureOfTheStartLeavesTheCall)
{
    library.Throw("J4_RegisterErrorHandler", std::runtime_error(text));
    EXPECT_EQ(J4_SetOption("Reset", "All"), 104) << "the reset went well, reading its status did not";
    EXPECT_THROW(J4_IsConnected(), std::runtime_error) << "there is no context to store the failure in";
    EXPECT_THROW(J4_GetOption("LastError"), std::runtime_error);
    library.script.clear();
    EXPECT_EQ(J4_IsConnected(), 0);
}

TEST_F(CallsTest, ForwardedCallsBringHandlersAndTheLibrarysTexts)
{
    for (const Call& call : Calls()) {
        if (call.line == nullptr) {
            continue;
        }
        EXPECT_EQ(J4_SetOption("Reset", "Samples"), 0);
        TakeJournal();
        J4_Private(77, nullptr);
        EXPECT_THAT(TakeJournal(), ElementsAre("private 77 null")) << "not this one";
        call.call();
        EXPECT_THAT(TakeJournal(),
                    ElementsAre("J4_RegisterErrorHandler set", "J4_RegisterDeviceMessageHandler set", call.line));
        EXPECT_EQ(call.call(), 0);
        EXPECT_THAT(TakeJournal(), ElementsAre(call.line)) << "once is enough";
        EXPECT_EQ(GetOption("LastError"), "no error");
        for (const int32_t status : {1, 4711, -3}) {
            if (call.hasStatus) {
                library.Answer(call.name, status);
                const int64_t result = call.call();
                EXPECT_THAT(TakeJournal(), ElementsAre(call.line, "get ExtendedErrorInformation", "get LastError"));
                EXPECT_THAT(GetOption("ExtendedErrorInformation"), HasSubstr("first\nsecond\nthird\nfourth"));
                ExpectFailure(static_cast<J4_Result>(result), {call.name, status, "library text"});
            }
        }
        library.script.clear();
    }
}

TEST_F(CallsTest, ValuesPassAsTheyAre)
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
    library.options["Unknown"].assign(1048576, 'x');
    EXPECT_EQ(GetOption("Unknown"), library.options["Unknown"]);
    EXPECT_THAT(Application::failures, IsEmpty());
    library.options["Unknown"] += "x";
    EXPECT_EQ(GetOption("Unknown"), "");
    ExpectFailure(
        9, {"J4_GetOption", 9, std::string("Text in j4 SDK is too long.\n") + typeid(LengthException).name() + "\n"});

    library.Throw("J4_KeyPressed", DeviceErrorException("gone"));
    EXPECT_EQ(J4_KeyPressed(), 2);
    ExpectFailure(1, {"J4_KeyPressed", 1, "gone"});
    library.Throw("J4_GetNumberOfAvailableSamples", DeviceErrorException("gone"));
    EXPECT_EQ(J4_GetNumberOfAvailableSamples(), -1);
    ExpectFailure(1, {"J4_GetNumberOfAvailableSamples", 1, "gone"});
}

TEST_F(CallsTest, TheLibrarysErrorHandlerThrowsThroughTheLibrary)
{
    for (const char* extended : {"first\nsecond\nthird\nfourth", "third\nfourth"}) {
        library.options["ExtendedErrorInformation"] = extended;
        library.CallErrorHandler("J4_TriggerMeasurement", "J4_TriggerMeasurement", 17, "lamp is broken");
        TakeJournal();
        const J4_Result result = J4_TriggerMeasurement();
        EXPECT_THAT(TakeJournal(), ElementsAre("J4_TriggerMeasurement", "get ExtendedErrorInformation"));
        EXPECT_THAT(GetOption("ExtendedErrorInformation"),
                    AllOf(HasSubstr("third\nfourth"), HasSubstr("J4T::ContextJ4T::libraryErrorHandler(): "),
                          Not(HasSubstr("second"))));
        ExpectFailure(result, {"J4_TriggerMeasurement", 17, "J4_TriggerMeasurement failed: lamp is broken"});
    }
}

TEST_F(CallsTest, DeviceMessagesReachTheApplication)
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

TEST_F(CallsTest, OnlyTheTablesInstrumentRebuildsTheTable)
{
    Connect();
    for (const auto& [message, serial, rebuilt] : std::vector<std::tuple<int32_t, const char*, Lines>>{
             {1, "765432", {}},
             {1, ScriptedLibrary::serialNumber, {"table f0", "table f3", "table a0", "set DeviceType Sorvane0"}},
             {2, ScriptedLibrary::serialNumber, {}}}) {
        library.deviceMessageHandler(message, serial);
        EXPECT_THAT(TakeJournal(), IsEmpty()) << "nothing is built inside the callback";
        EXPECT_EQ(J4_IsTableConnected(), 0);
        EXPECT_THAT(LinesThatBegin(TakeJournal(), {"table f", "table a0", "set DeviceType"}), ElementsAreArray(rebuilt))
            << "the old table is left in order first";
    }
    Bench().SetTableCount(2);
    EXPECT_EQ(SetOption("J4TUseableWithoutJ4", "yes"), 0);
    library.deviceMessageHandler(1, ScriptedLibrary::serialNumber);
    EXPECT_EQ(SetOption("J4TDeviceType", "J4TSorvaneTable2"), 0);
    EXPECT_EQ(GetOption("J4TDeviceType"), "J4TSorvaneTable0") << "the message was about the table that has gone";
}

}  // namespace
}  // namespace J4Test
