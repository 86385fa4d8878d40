// The option keys: where each leads, its text forms, and what a wrong value does.
#include "tests/session/Session.h"

namespace J4Test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

struct OptionsTest : SessionTest {
    static constexpr int32_t unknownOption = 5;  // of the simulated library
    static constexpr int32_t invalidValue = 6;
};

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
}

TEST_F(OptionsTest, TableKeysRead)
{
    for (const auto& [key, value] : std::vector<std::pair<const char*, const char*>>{
             {"J4TMoveSpeed", "300"},
             {"J4TScanSpeed", "160"},
             {"J4TScanDelay", "200"},
             {"J4TFirmwareVersion", "561"},
             {"J4TSerialNumber", "640001"},
             {"J4TMetricAbsHomeMovements", "412"},
             {"J4TMetricAbsMovements", "9134"},
             {"J4TMetricAbsDistance", "1523000"},
             {"J4TMetricResets", "37"},
             {"J4TMetricRelHomeMovements", "0"},
             {"J4TMetricRelMovements", "0"},
             {"J4TMetricRelDistance", "0"},
             {"J4THoldPosition", "no"},
             {"J4TIsVisorCoordinate", "no"},
             {"J4TEnableElectrostaticFoil", "no"},
             {"J4TEnableElectrostaticFoilButton", "yes"},
             {"J4TConnection", "yes"},
             {"J4TRecognitionAlgorithm", "2"},
             {"J4TDeviceType", "J4TSorvaneTable-1"},
             {"J4TJ4SerialNumber", seated},
             {"J4TLastWhiteBaseTransferTime", "1704067200"},
             {"J4TMaxSpeed", "400"},
             {"J4TFlash_1013", "400"},
             {"J4TFlash_66549", "400"},  // the low 16 bits count
             {"J4TFlash_1001", "5000"},
             {"J4TFlash_1002", "4000"},
             {"5010", "300"},
             {"5041", "1.15"},
             {"5043", "-5"},
             {"5202", "260"},
             {"5203", "18"},
             {"5210", "1"},
             {"5211", "-2"},
             {"5218", "250"},
             {"5219", "2"},
             {"5298", ""},  // of the table, without a value
         }) {
        EXPECT_EQ(GetOption(key), value) << key;
        EXPECT_THAT(Application::failures, IsEmpty()) << key;
    }
    EXPECT_THAT(GetOption("J4TFlash_3000"), EndsWith(" ")) << "each value of a list is followed by a blank";
    EXPECT_EQ(J4_GoToHomePosition(), 0);
    EXPECT_EQ(J4_SetPosition(300.0f, 80.0f + 170.0f), 0);
    EXPECT_EQ(GetOption("J4TMetricRelHomeMovements"), "1") << "asked anew each time";
    EXPECT_NE(GetOption("J4TMetricRelDistance"), "0");
}

TEST_F(OptionsTest, TableKeysWrite)
{
    struct Write {
        const char* key;
        const char* value;
        const char* readBack;
        Lines journal;
    };
    EXPECT_EQ(J4_IsTableConnected(), 0);
    for (const Write& write : {Write{"J4TMoveSpeed", "250", "250", {}},
                               {"J4TScanSpeed", "80", "80", {}},
                               {"J4TScanDelay", " 50ms", "50", {}},  // what follows a number is passed over
                               {"J4TIsVisorCoordinate", "yes", "yes", {}},
                               {"J4TIsVisorCoordinate", "true", "no", {}},
                               {"J4TIsVisorCoordinate", "1", "yes", {}},
                               {"J4TIsVisorCoordinate", "no", "no", {}},
                               {"J4THoldPosition", "yes", "yes", {"table s1"}},
                               {"J4THoldPosition", "no", "no", {"table s0"}},
                               {"J4TEnableElectrostaticFoil", "1", "yes", {"table f1"}},
                               {"J4TEnableElectrostaticFoil", "0", "no", {"table f0"}},
                               {"J4TEnableElectrostaticFoilButton", "no", "no", {"table f2"}},
                               {"J4TEnableElectrostaticFoilButton", "yes", "yes", {"table f3"}},
                               {"J4TSerialPortLogFile", "yes", "FTDI", {}},
                               {"J4TSerialPortLogFile", "0", "", {}},
                               {"J4TSerialPortLogFile", "C:\\log.txt", "C:\\log.txt", {}},
                               {"J4TUseableWithoutJ4", "1", "yes", {}},
                               {"J4TUseableWithoutJ4", "anything", "no", {}},
                               {"J4TRecognitionAlgorithm", "0", "0", {"set Recognition no"}},
                               {"J4TRecognitionAlgorithm", "1", "1", {"set Recognition yes"}},
                               {"J4TRecognitionAlgorithm", "2", "2", {"set Recognition yes"}},
                               {"5041", "1.3", "1.3", {}},
                               {"5043", "-7", "-7", {}},
                               {"5010", "1 2  3", "1 2 3 ", {}},
                               {"5011", "1.5 2", "1.5 2 ", {}}}) {
        StartJournal();
        Set(write.key, write.value);
        EXPECT_THAT(TakeJournal(), ElementsAreArray(write.journal)) << write.key;
        EXPECT_EQ(GetOption(write.key), write.readBack) << write.key << " " << write.value;
    }
    StartJournal();
    Set("J4TWriteToSerialLogFile", "a line");
    EXPECT_THAT(TakeJournal(), IsEmpty());
    Set("J4TEnableWhitebaseCorrection", "0");
    EXPECT_THAT(TakeJournal(), ElementsAre("private 0 0"));
    for (const char* value : {"yes", "maybe"}) {
        Set("J4TEnableWhitebaseCorrection", value);
        EXPECT_THAT(TakeJournal(), ElementsAre("private 0 0", "get 1100", "private 0 1"));
    }
}

TEST_F(OptionsTest, HoldFollowsTheTableNotWhatWasWritten)
{
    Set("J4THoldPosition", "yes");
    EXPECT_EQ(GetOption("5204"), "1");
    Set("5204", "0");
    EXPECT_EQ(GetOption("J4THoldPosition"), "no");
    EXPECT_EQ(J4_SetPosition(300.0f, 300.0f), 0);
    EXPECT_EQ(GetOption("J4THoldPosition"), "yes") << "a move holds its end";
}

TEST_F(OptionsTest, RecognitionKeepsAPresentTableInStep)
{
    StartJournal();
    Set("Recognition", "yes");
    EXPECT_THAT(TakeJournal(), ElementsAre("set Recognition yes")) << "no table is made for it";
    EXPECT_EQ(GetOption("Recognition"), "yes") << "read from the library";
    struct Step {
        const char* before;
        const char* value;
        const char* after;
    };
    for (const Step& step : {Step{"2", "no", "0"}, {"0", "yes", "2"}, {"1", "yes", "1"}, {"2", "yes", "2"}}) {
        Set("J4TRecognitionAlgorithm", step.before);
        Set("Recognition", step.value);
        EXPECT_EQ(GetOption("J4TRecognitionAlgorithm"), step.after);
    }
    EXPECT_EQ(SetOption("Recognition", "maybe"), invalidValue);
    EXPECT_EQ(GetOption("J4TRecognitionAlgorithm"), "2");
}

TEST_F(OptionsTest, EverythingElseIsTheInstrumentsBusiness)
{
    EXPECT_EQ(J4_IsTableConnected(), 0);
    for (const char* key :
         {"4999", "6000", "007", "5046", "5299", "J4TFlash_x", "J4TFlash_", "j4tMoveSpeed", "J4TUnknown",
          "Simulator.Nothing", "LastError", "ExtendedErrorInformation", "J4TVersion", "J4TConnection",
          "J4TJ4SerialNumber", "J4TMaxSpeed", "J4TJ4SDKPath", "Please throw an exception in the j4tavla SDK"}) {
        StartJournal();
        const J4_Result result = SetOption(key, "1");
        EXPECT_THAT(TakeJournal(),
                    ElementsAre("set " + std::string(key) + " 1 = 5", "get ExtendedErrorInformation", "get LastError"))
            << key;
        EXPECT_EQ(result, unknownOption) << key;
    }
    for (const char* key : {"4999", "6000", "007", "5046", "5299", "J4TFlash_x", "Recognition", "1100",
                            "J4TWriteToSerialLogFile", "J4TEnableWhitebaseCorrection", "Reset"}) {
        StartJournal();
        const std::string value = GetOption(key);
        EXPECT_THAT(TakeJournal(), ElementsAre("get " + std::string(key))) << key;
    }
}

TEST_F(OptionsTest, AWrongValueIsRefusedAndChangesNothing)
{
    struct Wrong {
        const char* key;
        const char* value;
        int32_t status;
        const char* text;
    };
    const std::string noNumber = "lexical_cast(): fail to convert '";
    for (const Wrong& wrong : {Wrong{"J4TMoveSpeed", "abc", 9, "abc' from "},
                               {"J4TMoveSpeed", "3000000000", 9, "3000000000' from "},
                               {"J4TScanDelay", "-", 9, "-' from "},
                               {"J4TRecognitionAlgorithm", "two", 9, "two' from "},
                               {"5010", "x", 9, "x' from "},
                               {"5010", "1 x", 9, "x' from "},
                               {"5041", "1.x2 y", 9, "y' from "},
                               {"J4TFirmwareVersion", "5", 10, "Can't set read only property 5201."},
                               {"J4TSerialNumber", "5", 10, "Can't set read only property 5289."},
                               {"5220", "5", 10, "Can't set read only property 5220."},
                               {"MeasurementMode", "Sideways", 6, "MeasurementMode: 'Sideways' is not "}}) {
        Application::failures.clear();
        EXPECT_EQ(SetOption(wrong.key, wrong.value), wrong.status) << wrong.key << " " << wrong.value;
        ASSERT_EQ(Application::failures.size(), 1u) << wrong.key;
        EXPECT_EQ(Application::failures[0].function, "J4_SetOption");
        EXPECT_EQ(Application::failures[0].status, wrong.status);
        EXPECT_THAT(Application::failures[0].message,
                    StartsWith(wrong.status == 9 ? noNumber + wrong.text : wrong.text));
    }
    EXPECT_EQ(GetOption("J4TMoveSpeed"), "300");
    EXPECT_EQ(GetOption("J4TScanDelay"), "200");
    EXPECT_EQ(GetOption("J4TRecognitionAlgorithm"), "2");
    EXPECT_EQ(GetOption("5041"), "1.15");
    EXPECT_EQ(GetOption("J4TFlash_9999"), "") << "no such value in the block";
    EXPECT_NE(Application::failures.back().status, 0);
}

TEST_F(OptionsTest, AConversionFailsBeforeTheTableIsTouched)
{
    StartJournal();
    EXPECT_EQ(SetOption("J4TMoveSpeed", "abc"), J4_ResultException);
    EXPECT_THAT(LinesThatBegin(TakeJournal(), {"table", "set", "J4_"}), IsEmpty());
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
    for (const Mistyped& mistyped : std::vector<Mistyped>{{"5010", "300.0", "300", move},
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
        Set(mistyped.key, mistyped.value);
        EXPECT_EQ(mistyped.call(), J4_ResultException) << mistyped.key << " " << mistyped.value;
        Set(mistyped.key, mistyped.right);
        EXPECT_EQ(mistyped.call(), 0) << mistyped.key << ": " << GetOption("LastError");
    }
    Set("5020", "1.5");
    EXPECT_EQ(GetOption("J4TIsVisorCoordinate"), "");
    EXPECT_EQ(Application::failures.back().status, J4_ResultException);
    Set("5020", "0");
    Set("5060", "3");
    EXPECT_EQ(scan(), J4_ResultResourceFault);
    EXPECT_EQ(Application::failures.back().message, "No patch recognition specified.");
    Set("5060", "2");
    EXPECT_EQ(scan(), 0);
}

TEST_F(OptionsTest, TheTestKeyFailsOnPurpose)
{
    EXPECT_EQ(GetOption("Please throw an exception in the j4tavla SDK"), "");
    ASSERT_EQ(Application::failures.size(), 1u);
    EXPECT_EQ(Application::failures[0].function, "J4_GetOption");
    EXPECT_EQ(Application::failures[0].status, J4_ResultException);
    const std::string text = "You wanted a 'throw' in the j4tavla SDK, I did it!";
    EXPECT_THAT(Application::failures[0].message, StartsWith(text));
    EXPECT_THAT(GetOption("LastError"), StartsWith(text));
}

}  // namespace
}  // namespace J4Test
