// A scan with ramp data, integration times and failures that the test chooses.
#include "tests/frame/FrameTest.h"

#include "Utilities/Exceptions/TableExceptions.h"

namespace J4Test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

struct ScriptedScanTest : FrameTest {
    void SetUp() override
    {
        FrameTest::SetUp();
        Connect();
    }

    /// 100 mm at 160 mm/s: ramps of 100 ms, the second one begins at 625 ms.
    static J4_Result ScanRow() { return J4_Scan(200.0f, 250.0f, 300.0f, 250.0f); }

    /// What follows the start of the motion.
    static Lines AfterTheStart()
    {
        const Lines journal = TakeJournal();
        const auto start = std::find_if(journal.begin(), journal.end(),
                                        [](const std::string& line) { return line.starts_with("table m2"); });
        return start == journal.end() ? Lines{} : Lines(start + 1, journal.end());
    }
};

TEST_F(ScriptedScanTest, TheCountIsAlwaysAboveTheTravel)
{
    struct Count {
        const char* integrationTime;
        const char* delay;  // travel and delay last 725 ms and this
        const char* count;
    };
    for (const Count& count : {Count{"0.03125", "200", "30"},  // 29.6
                               {"0.03125", "525", "50"},       // 40 exactly
                               {"0.0625", "525", "30"},        // 20 exactly
                               {"0.0625", "524", "20"},        // 19.98
                               {"2", "0", "10"},               // none
                               {"-0.03125", "200", "-10"}}) {
        library.options["IntegrationTime"] = count.integrationTime;
        EXPECT_EQ(J4_SetOption("J4TRecognitionAlgorithm", "1"), 0);
        EXPECT_EQ(J4_SetOption("J4TScanDelay", count.delay), 0);
        TakeJournal();
        EXPECT_EQ(ScanRow(), 0) << GetOption("LastError");
        const std::string sent =
            count.count[0] == '-' ? std::to_string(static_cast<uint32_t>(std::stoi(count.count))) : count.count;
        EXPECT_THAT(AfterTheStart(),
                    ElementsAre("get IntegrationTime", "table a3", "private 5 0", "J4_TriggerCountedScan " + sent));
    }
}

TEST_F(ScriptedScanTest, PositionsFollowTheTrapezoid)
{
    EXPECT_EQ(ScanRow(), 0);
    ASSERT_THAT(library.positions, SizeIs(30));
    // Tenths of a millimetre at multiples of 31.25 ms: 0.5 a t^2, then 160 mm/s, then the same ramp down, truncated
    // (919.99 at the end of the plateau).
    for (const auto& [index, tenths] :
         std::vector<std::pair<size_t, uint16_t>>{{0, 0},
                                                  {1, 7},
                                                  {3, 70},
                                                  {4, 120},
                                                  {10, 420},
                                                  {20, 919},
                                                  {21, 962},
                                                  {22, 988},
                                                  {23, 999},
                                                  {24, 995},
                                                  {29, 737}}) {  // beyond the travel the formula falls again
        EXPECT_EQ(library.positions[index], tenths) << index;
    }
}

TEST_F(ScriptedScanTest, AFailureAfterTheStartEmptiesTheStoreAndAwaitsTheArm)
{
    struct Wrong {
        const char* name;
        std::function<void(ScriptedLibrary&)> script;
        int32_t status;
        const char* message;
        Lines before;  // between the start and the clean-up
    };
    const Lines asked = {"get IntegrationTime"};
    for (const Wrong& wrong : std::vector<Wrong>{
             {"status",
              [](ScriptedLibrary& library) { library.Answer("J4_TriggerCountedScan", 7); },
              7,
              "library text",
              {"get IntegrationTime", "table a3", "private 5 30", "J4_TriggerCountedScan 30", "get LastError",
               "get ExtendedErrorInformation"}},
             {"no time", [](ScriptedLibrary& library) { library.options["IntegrationTime"] = "0"; }, 9,
              "Integration time in j4 is 0.\n", asked},
             {"text", [](ScriptedLibrary& library) { library.options["IntegrationTime"] = "abc"; }, 9,
              "lexical_cast(): fail to convert 'abc' from ", asked},
             {"rest", [](ScriptedLibrary& library) { library.options["IntegrationTime"] = "0.005 s"; }, 9,
              "lexical_cast(): fail to convert '0.005 s' from ", asked},
             {"thrown",
              [](ScriptedLibrary& library) { library.Throw("J4_Private 5 30", WhiteBaseException("positions")); },
              103,
              "positions",
              {"get IntegrationTime", "table a3", "private 5 30"}},
             {"handler",
              [](ScriptedLibrary& library) { library.CallErrorHandler("J4_TriggerCountedScan", "Scan", 12, "lamp"); },
              12,
              "Scan failed: lamp",
              {"get IntegrationTime", "table a3", "private 5 30", "J4_TriggerCountedScan 30",
               "get ExtendedErrorInformation"}}}) {
        SetUp();
        wrong.script(library);
        library.samples.assign(3, std::vector<float>(J4_SPECTRUM_LENGTH, 0.5f));
        TakeJournal();
        EXPECT_EQ(ScanRow(), wrong.status) << wrong.name;
        EXPECT_THAT(AfterTheStart(), testing::ElementsAreArray(Joined({wrong.before, {"private 1 0", "table s0"}})))
            << wrong.name;
        ASSERT_THAT(Application::failures, SizeIs(1));
        EXPECT_THAT(Application::failures[0].message, StartsWith(wrong.message));
        EXPECT_EQ(J4_GetNumberOfAvailableSamples(), 0);
        float x = 0.0f;
        float y = 0.0f;
        EXPECT_EQ(J4_GetPosition(&x, &y), 0) << "the line is clean";
        EXPECT_EQ(x, 300.0f) << "the motion was awaited to its end";
        EXPECT_EQ(y, 250.0f);
        library.script.clear();
        library.options["IntegrationTime"] = "0.03125";
        EXPECT_EQ(ScanRow(), 0) << GetOption("LastError");
    }
}

TEST_F(ScriptedScanTest, EachStepOfTheCleanUpIsTried)
{
    library.Answer("J4_TriggerCountedScan", 7);
    library.Throw("J4_Private 1 0", DeviceErrorException("store"));
    ExpectFailure(ScanRow(), {"J4_Scan", 7, "library text"});
    float x = 0.0f;
    EXPECT_EQ(J4_GetPosition(&x, &x), 0) << "the motion was awaited all the same";
}

TEST_F(ScriptedScanTest, TheHeadingOfTheLibrarysTextIsDroppedWhereThereIsOne)
{
    library.Answer("J4_TriggerCountedScan", 7);
    for (const auto& [extended, kept, dropped] :
         std::vector<std::tuple<const char*, const char*, const char*>>{{"first\nsecond\nthird", "\tthird", "second"},
                                                                        {"first\nsecond", "\tfirst\nsecond", "third"},
                                                                        {"alone", "\talone", "third"}}) {
        library.options["ExtendedErrorInformation"] = extended;
        EXPECT_EQ(ScanRow(), 7);
        const std::string text = GetOption("ExtendedErrorInformation");
        EXPECT_THAT(text, HasSubstr(kept));
        EXPECT_THAT(text, Not(HasSubstr(dropped)));
    }
}

TEST_F(ScriptedScanTest, AMoveToTheStartThatFailsTouchesNoSample)
{
    library.samples.assign(3, std::vector<float>(J4_SPECTRUM_LENGTH, 0.5f));
    Bench().GetFaults().positionNotReached = true;
    TakeJournal();
    ExpectFailure(ScanRow(), {"J4_Scan", J4_ResultPositionNotReached, "Current limit reached."});
    EXPECT_THAT(LinesThatBegin(TakeJournal(), {"J4_Trigger", "private 1", "table m2"}), IsEmpty());
    EXPECT_EQ(J4_GetNumberOfAvailableSamples(), 3);
    Bench().GetFaults().positionNotReached = false;
    EXPECT_EQ(ScanRow(), 0);
}

}  // namespace
}  // namespace J4Test
