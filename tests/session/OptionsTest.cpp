// The option keys: where each leads, its text forms, and what a wrong value does.
#include "tests/session/Session.h"

#include <utility>

namespace J4Test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

struct OptionsTest : SessionTest {};

TEST_F(OptionsTest, KeysThatNeedNoTableAnswerWithoutOne)
{
    Set("Simulator.TableUnplugged", "yes");
    StartJournal();
    for (const auto& [key, value] :
         std::vector<std::pair<const char*, const char*>>{{"J4TVersion", "Version 1.1.4  Build 104"},
                                                          {"J4TMajorVersion", "1"},
                                                          {"J4TMinorVersion", "1"},
                                                          {"J4TRevisionVersion", "4"},
                                                          {"J4TBuildVersion", "104"},
                                                          {"LastError", "no error"},
                                                          {"J4TUseableWithoutJ4", "no"},
                                                          {"J4TSerialPortLogFile", ""}}) {
        EXPECT_EQ(GetOption(key), value) << key;
    }
    EXPECT_THAT(GetOption("J4TJ4SDKPath"), testing::AnyOf(EndsWith("libsorvane64.so"), EndsWith("sorvane64.dll")));
    EXPECT_THAT(TakeJournal(), IsEmpty()) << "and without the instrument's library";
    EXPECT_EQ(GetOption("J4TMoveSpeed"), "") << "this one is the table's";
    EXPECT_EQ(Application::failures.back().status, J4_ResultDeviceNotConnected);
    Application::failures.clear();
    EXPECT_EQ(GetOption("Please throw an exception in the j4tavla SDK"), "");
    ASSERT_THAT(Application::failures, SizeIs(1));
    EXPECT_EQ(Application::failures[0].function, "J4_GetOption");
    EXPECT_EQ(Application::failures[0].status, J4_ResultException);
    const std::string text = "You wanted a 'throw' in the j4tavla SDK, I did it!";
    EXPECT_THAT(Application::failures[0].message, StartsWith(text));
    EXPECT_THAT(GetOption("LastError"), StartsWith(text));
}

struct Option {
    const char* key;
    std::string start;  ///< how it reads at the start
    struct Write {
        std::string value;
        std::string back;  ///< how it reads then
        Lines journal = {};
    };
    std::vector<Write> writes = {};
    struct Wrong {
        std::string value;
        std::string text;  ///< of the failure, or the word that is no number
        int32_t status = J4_ResultException;
    };
    std::vector<Wrong> wrong = {};
};

std::vector<Option> Options()
{
    const auto readOnly = [](const std::string& id) {
        return std::vector<Option::Wrong>{{"5", "Can't set read only property " + id + ".", J4_ResultResourceFault}};
    };
    return {
        {"J4TMoveSpeed", "300", {{"250", "250"}}, {{"abc", "abc"}, {"3000000000", "3000000000"}}},
        {"J4TScanSpeed", "160", {{"80", "80"}}},
        {"J4TScanDelay", "200", {{" 50ms", "50"}}, {{"-", "-"}}},  // what follows a number is passed over
        {"J4TFirmwareVersion", "561", {}, readOnly("5201")},
        {"J4TSerialNumber", "640001", {}, readOnly("5289")},
        {"J4TMetricAbsHomeMovements", "412", {}, readOnly("5220")},
        {"J4TMetricAbsMovements", "9134"},
        {"J4TMetricAbsDistance", "1523000"},
        {"J4TMetricResets", "37"},
        {"J4TMetricRelHomeMovements", "0"},
        {"J4TMetricRelMovements", "0"},
        {"J4TMetricRelDistance", "0"},
        {"J4THoldPosition", "no", {{"yes", "yes", {"table s1"}}, {"no", "no", {"table s0"}}}},
        {"J4TIsVisorCoordinate", "no", {{"yes", "yes"}, {"true", "no"}, {"1", "yes"}, {"no", "no"}}},
        {"J4TEnableElectrostaticFoil", "no", {{"1", "yes", {"table f1"}}, {"0", "no", {"table f0"}}}},
        {"J4TEnableElectrostaticFoilButton", "yes", {{"no", "no", {"table f2"}}, {"yes", "yes", {"table f3"}}}},
        {"J4TConnection", "yes"},
        {"J4TRecognitionAlgorithm",
         "2",
         {{"0", "0", {"set Recognition no"}}, {"1", "1", {"set Recognition yes"}}, {"2", "2", {"set Recognition yes"}}},
         {{"two", "two"}}},
        {"J4TDeviceType", "J4TSorvaneTable-1"},
        {"J4TJ4SerialNumber", SessionTest::seated},
        {"J4TSerialPortLogFile", "", {{"yes", "FTDI"}, {"0", ""}, {"C:\\log.txt", "C:\\log.txt"}}},
        {"J4TUseableWithoutJ4", "no", {{"1", "yes"}, {"anything", "no"}}},
        {"J4TLastWhiteBaseTransferTime", "1704067200"},
        {"J4TMaxSpeed", "400"},
        {"J4TFlash_1", "360"},
        {"J4TFlash_1003", "300"},
        {"J4TFlash_1004", "500"},
        {"J4TFlash_1013", "400"},
        {"J4TFlash_66549", "400"},  // the low 16 bits count
        {"J4TFlash_1001", "5000"},
        {"J4TFlash_1002", "4000"},
        {"5010", "250", {{"1 2  3", "1 2 3 "}}, {{"x", "x"}, {"1 x", "x"}}},
        {"5011", "80", {{"1.5 2", "1.5 2 "}}},
        {"5041", "1.15", {{"1.3", "1.3"}}, {{"1.x2 y", "y"}}},
        {"5043", "-5", {{"-7", "-7"}}},
        {"5030", "0"},
        {"5040", "1"},
        {"5042", "1"},
        {"5044", "0.2"},
        {"5050", "1"},
        {"5060", "2"},
        {"5202", "260"},
        {"5203", "18"},
        {"5210", "1"},
        {"5211", "-2"},
        {"5218", "250"},
        {"5219", "2"},
        {"5220", "412", {}, readOnly("5220")},
        {"5298", ""},  // of the table, without a value
        {"MeasurementMode", "SingleReflectance", {}, {{"Sideways", "MeasurementMode: 'Sideways' is not ", 6}}}};
}

TEST_F(OptionsTest, DigitsBeyondEveryPropertyNumberAreNoKey)
{
    StartJournal();
    EXPECT_EQ(GetOption("65536"), "");
    EXPECT_THAT(GetOption("LastError"), StartsWith("lexical_cast(): fail to convert '65536' from "));
    EXPECT_EQ(SetOption("65536", "1"), J4_ResultException);
    EXPECT_THAT(TakeJournal(), IsEmpty());
}

TEST_F(OptionsTest, EachKeyReadsWritesAndRefuses)
{
    ASSERT_EQ(J4_IsTableConnected(), 0);
    StartJournal();
    for (const Option& option : Options()) {
        EXPECT_EQ(GetOption(option.key), option.start) << option.key;
        for (const Option::Write& write : option.writes) {
            TakeJournal();
            Set(option.key, write.value);
            EXPECT_THAT(TakeJournal(), ElementsAreArray(write.journal)) << option.key;
            EXPECT_EQ(GetOption(option.key), write.back) << option.key << " " << write.value;
        }
        EXPECT_THAT(Application::failures, IsEmpty()) << option.key;
        const std::string before = GetOption(option.key);
        for (const Option::Wrong& wrong : option.wrong) {
            TakeJournal();
            EXPECT_EQ(SetOption(option.key, wrong.value), wrong.status) << option.key << " " << wrong.value;
            EXPECT_THAT(LinesThatBegin(TakeJournal(), {"table"}), IsEmpty()) << "fails before the table is touched";
            ASSERT_THAT(Application::failures, SizeIs(1)) << option.key;
            EXPECT_EQ(Application::failures[0].function, "J4_SetOption");
            EXPECT_EQ(Application::failures[0].status, wrong.status);
            EXPECT_THAT(Application::failures[0].message,
                        StartsWith(wrong.status == J4_ResultException
                                       ? "lexical_cast(): fail to convert '" + wrong.text + "' from "
                                       : wrong.text));
            EXPECT_EQ(GetOption(option.key), before) << option.key;
            Application::failures.clear();
        }
    }
    TakeJournal();
    Set("J4TWriteToSerialLogFile", "a line");
    EXPECT_THAT(TakeJournal(), IsEmpty());
    Set("J4TEnableWhitebaseCorrection", "0");
    EXPECT_THAT(TakeJournal(), ElementsAre("private 0 0"));
    for (const char* value : {"yes", "maybe"}) {
        Set("J4TEnableWhitebaseCorrection", value);
        EXPECT_THAT(TakeJournal(), ElementsAre("private 0 0", "get 1100", "private 0 1"));
    }
    EXPECT_THAT(GetOption("J4TFlash_3000"), EndsWith(" ")) << "each value of a list is followed by a blank";
    EXPECT_EQ(GetOption("J4TFlash_9999"), "") << "no such value in the block";
    EXPECT_NE(Application::failures.back().status, 0);
}

TEST_F(OptionsTest, WhatTheTableTellsIsAskedAnewEachTime)
{
    Set("J4THoldPosition", "yes");
    EXPECT_EQ(GetOption("5204"), "1");
    Set("5204", "0");
    EXPECT_EQ(GetOption("J4THoldPosition"), "no");
    EXPECT_EQ(J4_GoToHomePosition(), 0);
    EXPECT_EQ(J4_SetPosition(300.0f, 250.0f), 0);
    EXPECT_EQ(GetOption("J4THoldPosition"), "yes") << "a move holds its end";
    EXPECT_EQ(GetOption("J4TMetricRelHomeMovements"), "1");
    EXPECT_NE(GetOption("J4TMetricRelDistance"), "0");
}

TEST_F(OptionsTest, RecognitionKeepsAPresentTableInStep)
{
    StartJournal();
    Set("Recognition", "yes");
    EXPECT_THAT(TakeJournal(), ElementsAre("set Recognition yes")) << "no table is made for it";
    EXPECT_EQ(GetOption("Recognition"), "yes") << "read from the library";
    for (const auto& [before, value, after] : std::vector<std::tuple<const char*, const char*, const char*>>{
             {"2", "no", "0"}, {"0", "yes", "2"}, {"1", "yes", "1"}, {"2", "yes", "2"}}) {
        Set("J4TRecognitionAlgorithm", before);
        Set("Recognition", value);
        EXPECT_EQ(GetOption("J4TRecognitionAlgorithm"), after);
    }
    EXPECT_EQ(SetOption("Recognition", "maybe"), 6) << "a refused value";
    EXPECT_EQ(GetOption("J4TRecognitionAlgorithm"), "2");
}

TEST_F(OptionsTest, EverythingElseIsTheInstrumentsBusiness)
{
    EXPECT_EQ(J4_IsTableConnected(), 0);
    StartJournal();
    for (const std::string key :
         {"4999", "6000", "007", "5046", "5299", "J4TFlash_x", "J4TFlash_", "j4tMoveSpeed", "J4TUnknown",
          "Simulator.Nothing", "LastError", "ExtendedErrorInformation", "J4TVersion", "J4TConnection",
          "J4TJ4SerialNumber", "J4TMaxSpeed", "J4TJ4SDKPath", "Please throw an exception in the j4tavla SDK"}) {
        EXPECT_EQ(SetOption(key, "1"), 5) << key << " is unknown";
        EXPECT_THAT(TakeJournal(),
                    ElementsAre("set " + key + " 1 = 5", "get ExtendedErrorInformation", "get LastError"));
    }
    for (const std::string key : {"4999", "6000", "007", "5046", "5299", "J4TFlash_x", "Recognition", "1100",
                                  "J4TWriteToSerialLogFile", "J4TEnableWhitebaseCorrection", "Reset"}) {
        GetOption(key);
        EXPECT_THAT(TakeJournal(), ElementsAre("get " + key));
    }
}

TEST_F(OptionsTest, AMistypedOptionNeverEndsTheProcess)
{
    MakeReady();
    struct Mistyped {
        const char* key;
        const char* value;
        const char* right;
        std::function<J4_Result()> call;
    };
    const auto scan = [] { return J4_Scan(200.0f, 250.0f, 300.0f, 250.0f); };
    const auto move = [] { return J4_SetPosition(300.0f, 300.0f); };
    const auto where = [] {
        float x = 0.0f;
        return J4_GetPosition(&x, &x);
    };
    const auto calibrate = [] { return J4_GoToHomePosition() == 0 ? J4_Calibrate() : -1; };
    for (const auto& [key, value, right, call] : std::vector<Mistyped>{{"5010", "300.0", "300", move},
                                                                       {"5010", "300.0 1", "300", scan},
                                                                       {"5011", "160.0", "160", scan},
                                                                       {"5012", "200.0", "200", scan},
                                                                       {"5020", "0.0", "0", where},
                                                                       {"5030", "0.0", "0", move},
                                                                       {"5040", "1.0", "1", calibrate},
                                                                       {"5041", "1", "1.15", calibrate},
                                                                       {"5042", "1.0", "1", calibrate},
                                                                       {"5043", "-5.0", "-5", calibrate},
                                                                       {"5044", "1", "0.2", calibrate},
                                                                       {"5050", "1.0", "1", move},
                                                                       {"5060", "2.0", "2", scan}}) {
        Set(key, value);
        EXPECT_EQ(call(), J4_ResultException) << key << " " << value;
        Set(key, right);
        EXPECT_EQ(call(), 0) << key << ": " << GetOption("LastError");
    }
    Set("5020", "1.5");
    EXPECT_EQ(GetOption("J4TIsVisorCoordinate"), "");
    EXPECT_EQ(Application::failures.back().status, J4_ResultException);
    Set("5020", "0");
    Set("5060", "3");
    EXPECT_EQ(scan(), J4_ResultResourceFault);
    EXPECT_EQ(Application::failures.back().message, "No patch recognition specified.");
}

}  // namespace
}  // namespace J4Test
