// Moving the arm: units, visor coordinates, the work area, raw access to the line, and a table that fails.
#include "tests/session/Session.h"

#include <utility>

namespace J4Test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct PositionTest : SessionTest {
    void SetUp() override
    {
        SessionTest::SetUp();
        ASSERT_EQ(J4_IsTableConnected(), 0);
        ASSERT_EQ(J4_GoToHomePosition(), 0);
        StartJournal();
    }

    static Lines Moves() { return LinesThatBegin(TakeJournal(), {"table m", "table i", "table p"}); }
};

TEST_F(PositionTest, CoordinatesAreInTheChosenUnit)
{
    struct Unit {
        const char* value;
        float x, y;
        const char* sent;
    };
    for (const Unit& unit : {Unit{"0", 300.0f, 250.5f, "table m0 0bb809c9012c"},
                             {"1", 2000.0f, 3000.0f, "table m0 07d00bb8012c"},
                             {"1", 2000.9f, 2999.9f, "table m0 07d00bb7012c"},  // truncated, as 3047.9999 below
                             {"2", 10.0f, 12.0f, "table m0 09ec0be7012c"}}) {
        Set("5030", unit.value);
        TakeJournal();
        EXPECT_EQ(J4_SetPosition(unit.x, unit.y), 0) << GetOption("LastError");
        EXPECT_THAT(Moves(), ElementsAre(unit.sent));
        ExpectPosition(unit.x, unit.y, unit.value[0] == '0' ? 0.0f : unit.value[0] == '1' ? 0.95f : 0.004f);
    }
    Set("5030", "3");
    TakeJournal();
    ExpectFailure(J4_SetPosition(300.0f, 300.0f), {"J4_SetPosition", J4_ResultResourceFault, "Invalid unit"});
    ExpectFailure(J4_Scan(300.0f, 300.0f, 310.0f, 300.0f), {"J4_Scan", J4_ResultResourceFault, "Invalid unit"});
    EXPECT_THAT(Moves(), IsEmpty());
    float x = 7.0f;
    float y = 8.0f;
    ExpectFailure(J4_GetPosition(&x, &y), {"J4_GetPosition", J4_ResultResourceFault, "Invalid unit in properties."});
    EXPECT_EQ(x, 7.0f) << "written only after success";
    EXPECT_EQ(y, 8.0f);
    Set("5030", "0");
    EXPECT_EQ(J4_GetPosition(&x, &y), 0);
}

TEST_F(PositionTest, TheOriginMeansTheTile)
{
    EXPECT_EQ(J4_SetPosition(300.0f, 300.0f), 0);
    TakeJournal();
    for (const float edge : {0.0f, 0.04f, -0.04f}) {
        EXPECT_EQ(J4_SetPosition(edge, edge), 0);
        EXPECT_THAT(Moves(), ElementsAre("table i1"));
        ExpectPosition(100.0f, 80.0f);
        TakeJournal();
    }
    for (const auto& [x, y] : {std::pair(0.05f, 0.0f), std::pair(0.0f, -0.05f)}) {
        EXPECT_EQ(J4_SetPosition(x, y), J4_ResultIllegalPosition) << "an ordinary target, inside the tower";
        EXPECT_THAT(Moves(), IsEmpty());
    }
}

TEST_F(PositionTest, VisorCoordinatesAreTheTablesOwnBusiness)
{
    Set("J4TIsVisorCoordinate", "yes");
    TakeJournal();
    EXPECT_EQ(J4_SetPosition(300.0f, 350.0f), 0) << GetOption("LastError");
    EXPECT_THAT(Moves(), ElementsAre("table m1 0bb80dac012c"));
    ExpectPosition(300.0f, 350.0f, 0.15f);
    EXPECT_THAT(Moves(), ElementsAre("table p1"));
    Set("J4TIsVisorCoordinate", "no");
    float x = 0.0f;
    float y = 0.0f;
    EXPECT_EQ(J4_GetPosition(&x, &y), 0);
    EXPECT_GT(std::hypot(x - 300.0f, y - 350.0f), 20.0f) << "the sensor is elsewhere";
}

TEST_F(PositionTest, IllegalTargetsAreRefusedBeforeAByteIsSent)
{
    struct Target {
        float x, y;
        const char* text;
    };
    for (const Target& target : {Target{801.0f, 300.0f, "Invalid x range (8010 != [-1000,8000])."},
                                 {300.0f, -101.0f, "Invalid y range (-1010 != [-1000,8000])."},
                                 {20.0f, 20.0f, "Invalid position (200/200)."},
                                 {700.0f, 700.0f, "Invalid position (7000/7000)."},
                                 {300.0f, 10.0f, "Invalid position (3000/100) tower side region."},
                                 {std::nanf(""), 300.0f, "Invalid position (nan/3000)."},
                                 {300.0f, HUGE_VALF, "Invalid position (3000/inf)."},
                                 {214748368.0f, 300.0f, "Invalid position (2.14748e+09/3000)."}}) {
        TakeJournal();
        const J4_Result result = J4_SetPosition(target.x, target.y);
        EXPECT_THAT(TakeJournal(), IsEmpty()) << target.text;
        EXPECT_EQ(result, J4_ResultIllegalPosition);
        EXPECT_EQ(Application::failures.back().message, target.text);
    }
    ExpectPosition(100.0f, 80.0f);
    Set("5050", "0");
    EXPECT_EQ(J4_SetPosition(std::nanf(""), 300.0f), J4_ResultIllegalPosition);
    EXPECT_EQ(J4_Scan(300.0f, 300.0f, 300.0f, -HUGE_VALF), J4_ResultIllegalPosition);
    TakeJournal();
    EXPECT_EQ(J4_SetPosition(300.0f, -101.0f), J4_ResultIllegalPosition) << "now the table itself refuses it";
    EXPECT_EQ(Application::failures.back().message, "Position out of range.");
    EXPECT_THAT(Moves(), ElementsAre("table m0 0bb8fffffc0e012c")) << "a negative coordinate has eight digits";
}

TEST_F(PositionTest, ATableThatFailsIsUsableAgain)
{
    for (const Fault& fault : faults) {
        float x = 0.0f;
        for (const auto& [name, call] : std::vector<std::pair<const char*, std::function<J4_Result()>>>{
                 {"J4_GetPosition", [&] { return J4_GetPosition(&x, &x); }},
                 {"J4_SetPosition", [] { return J4_SetPosition(300.0f, 300.0f); }},
                 {"J4_GoToHomePosition", [] { return J4_GoToHomePosition(); }}}) {
            Set(fault.key, fault.value);
            ExpectFailure(call(), {name, fault.status, fault.text});
            Set(fault.key, fault.healed);
            LetTheLineFallSilent();
            EXPECT_EQ(call(), 0) << name << " after " << fault.key << ": " << GetOption("LastError");
        }
    }
    Set("Simulator.PositionNotReached", "yes");
    ExpectFailure(J4_SetPosition(300.0f, 300.0f),
                  {"J4_SetPosition", J4_ResultPositionNotReached, "Current limit reached."});
    EXPECT_EQ(J4_GoToHomePosition(), J4_ResultDeviceFault);
    EXPECT_THAT(Application::failures.back().message, HasSubstr("Can't find white plate ("));
    Set("Simulator.PositionNotReached", "no");
    EXPECT_EQ(J4_GoToHomePosition(), 0);
    ExpectPosition(100.0f, 80.0f);
}

TEST_F(PositionTest, ATableThatFailsAtTheStartIsUsableAgain)
{
    for (const Fault& fault : faults) {
        Set("Reset", "All");
        Application::RegisterHandlers();
        const bool comesOnce = std::string(fault.key) == "Simulator.CorruptReplies";
        Set(fault.key, fault.value);
        EXPECT_EQ(J4_IsTableConnected(), comesOnce ? 0 : fault.status) << fault.key << ": one reset and one retry";
        Set(fault.key, fault.healed);
        EXPECT_EQ(J4_IsTableConnected(), 0) << fault.key << ": " << GetOption("LastError");
        EXPECT_EQ(GetOption("J4TConnection"), "yes");
    }
    Application::failures.clear();
    Set("Simulator.TableUnplugged", "yes");
    ExpectFailure(J4_IsTableConnected(), {"J4_IsTableConnected", J4_ResultDeviceNotConnected, "no error"});
    EXPECT_EQ(GetOption("J4TConnection"), "no");
    Set("Simulator.TableUnplugged", "no");
    EXPECT_EQ(J4_IsTableConnected(), 0);
}

TEST_F(PositionTest, RawAccessReachesTheLine)
{
    char data[] = ";a0 and more that is not sent";
    J4PrivateTableRequest request{};
    request.data = data;
    request.length = 3;
    request.failed = 7;
    TakeJournal();
    J4_Private(1001, &request);
    EXPECT_EQ(request.failed, 0);
    EXPECT_STREQ(request.errorText, "");
    EXPECT_THAT(TakeJournal(), ElementsAre("table a0"));

    request.length = -1;
    J4_Private(1001, &request);
    EXPECT_EQ(request.failed, 1);
    EXPECT_STREQ(request.errorText, "Invalid number of bytes: -1");
    EXPECT_THAT(TakeJournal(), IsEmpty());

    request.length = 14;
    request.timeout = 4000000000u;
    J4_Private(1002, &request);
    EXPECT_EQ(request.failed, 0);
    EXPECT_EQ(std::string(request.data, static_cast<size_t>(request.length)).substr(0, 4), ":$a0");
    EXPECT_EQ(request.length, 14);
    EXPECT_EQ(request.timeout, 60000u);

    request.length = 5;
    request.timeout = 100;
    J4_Private(1002, &request);
    EXPECT_EQ(request.failed, 0);
    EXPECT_EQ(request.length, 0) << "silence is no failure";

    Set("Simulator.TableUnplugged", "yes");
    const size_t failures = Application::failures.size();
    request.data = data;
    request.length = 3;
    J4_Private(1001, &request);
    EXPECT_EQ(request.failed, 1);
    EXPECT_THAT(request.errorText, HasSubstr("Device is removed."));
    EXPECT_EQ(Application::failures.size(), failures) << "the record alone tells of it";
    EXPECT_EQ(GetOption("LastError"), "no error");
    Set("Simulator.TableUnplugged", "no");

    J4PrivateTableRequest untouched{};
    untouched.failed = 7;
    untouched.length = 8;
    TakeJournal();
    for (const int32_t operation : {1000, 1003, 1500, 1999}) {
        EXPECT_EQ(J4_Private(operation, &untouched), 0);
    }
    EXPECT_EQ(untouched.failed, 7);
    EXPECT_EQ(untouched.length, 8);
    EXPECT_EQ(untouched.errorText, nullptr);
    EXPECT_THAT(TakeJournal(), IsEmpty());
    EXPECT_EQ(J4_Private(1001, nullptr), 0) << "and the process lives";
    for (const int32_t operation : {999, 2000, -1}) {
        EXPECT_EQ(J4_Private(operation, nullptr), 6) << "the instrument's library refuses it";
    }
    EXPECT_EQ(J4_IsTableConnected(), 0);
}

}  // namespace
}  // namespace J4Test
