// From the first call to a paired table: what reaches instrument and wire, in which order.
#include <fstream>

#include "tests/session/Session.h"

namespace J4Test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

struct StartTest : SessionTest {
    /// The test whether the selected instrument sits in the table.
    static Lines CurrentTest()
    {
        return {"get MeasurementMode",
                "J4_GetNumberOfAvailableSamples",
                "table c0",
                "table c1",
                "set MeasurementMode SingleReflectance",
                "J4_TriggerMeasurement = 3",
                "table c2",
                "private 1 0",
                "set MeasurementMode SingleReflectance"};
    }
};

TEST_F(StartTest, TheFirstTableCallConnectsAndFindsTheInstrumentInTheTable)
{
    StartJournal();
    EXPECT_EQ(J4_IsTableConnected(), 0);
    EXPECT_THAT(TakeJournal(), ElementsAreArray(Joined({{"table a0", "table i0", "table s0", "get DeviceType",
                                                         "J4_IsConnected", "set DeviceType Sorvane0", "J4_IsConnected"},
                                                        CurrentTest(),
                                                        {"set DeviceType Sorvane1", "J4_IsConnected"},
                                                        CurrentTest(),
                                                        {"table c0", "get SerialNumber"},
                                                        Preparation("SingleReflectance", flashRead),
                                                        {"J4_RegisterDeviceMessageHandler set"}})));
    EXPECT_EQ(GetOption("J4TJ4SerialNumber"), seated);
    EXPECT_EQ(GetOption("SerialNumber"), seated) << "the table's instrument stays selected";

    TakeJournal();
    EXPECT_EQ(J4_IsTableConnected(), 0);
    EXPECT_THAT(TakeJournal(), IsEmpty()) << "connected once";
}

TEST_F(StartTest, EveryTableCallConnectsByItself)
{
    float x = 0.0f;
    Spectrum white;
    white.fill(0.9f);
    J4PrivateTableRequest request{};
    char data[] = ";a0";
    request.data = data;
    request.length = 3;
    const std::vector<std::function<void()>> calls = {
        [] { J4_Calibrate(); },
        [&] { J4_GetPosition(&x, &x); },
        [] { J4_SetPosition(300.0f, 300.0f); },
        [] { J4_GoToHomePosition(); },
        [] { J4_Scan(200.0f, 250.0f, 300.0f, 250.0f); },
        [] { J4_IsTableConnected(); },
        [&] { J4_SynchronizeWhitebases(white.data()); },
        [&] { J4_Private(1001, &request); },
        [] { J4_GetOption("J4TMoveSpeed"); },
        [] { J4_SetOption("5030", "0"); },
    };
    for (size_t i = 0; i < calls.size(); ++i) {
        SetUp();
        StartJournal();
        calls[i]();
        const Lines journal = TakeJournal();
        EXPECT_FALSE(LinesThatBegin(journal, {"set DeviceType Sorvane1"}).empty()) << "call " << i;
        EXPECT_EQ(GetOption("J4TJ4SerialNumber"), seated);
        for (const Failure& failure : Application::failures) {
            EXPECT_THAT(failure.message, testing::StartsWith("Integration time in j4 is 0.")) << "call " << i;
        }
    }
}

TEST_F(StartTest, ATraceHasTheCallsWithArgumentsStatusAndText)
{
    const std::string file = testing::TempDir() + "session.trace";
    Set("Simulator.TraceFile", file);
    J4_SetPosition(250.5f, 300.0f);
    J4_Scan(200.0f, 250.0f, 2000.0f, 250.0f);
    J4_SetOption("Nonsense", nullptr);
    J4_GetOption("J4TScanSpeed");
    float spectrum[J4_SPECTRUM_LENGTH];
    J4_GetSpectrum(spectrum, 3);
    J4_KeyPressed();
    Set("Simulator.TraceFile", "none");
    std::ifstream stream(file);
    std::vector<std::string> calls;
    for (std::string line; std::getline(stream, line);) {
        if (line.find("\"call\"") != std::string::npos || line.find("\"return\"") != std::string::npos) {
            calls.push_back(line.substr(line.find("\"kind\"") + 7));
        }
    }
    EXPECT_THAT(calls,
                ElementsAre(R"("return","name":"J4_SetOption","status":0})",
                            R"("call","name":"J4_SetPosition","arguments":["250.5","300"]})",
                            R"("return","name":"J4_SetPosition","status":0})",
                            R"("call","name":"J4_Scan","arguments":["200","250","2000","250"]})",
                            testing::StartsWith(R"("return","name":"J4_Scan","status":102,"result":"Invalid position)"),
                            R"("call","name":"J4_SetOption","arguments":["Nonsense","null"]})",
                            testing::StartsWith(R"("return","name":"J4_SetOption","status":)"),
                            R"("call","name":"J4_GetOption","arguments":["J4TScanSpeed"]})",
                            R"("return","name":"J4_GetOption","result":"160"})",
                            R"("call","name":"J4_GetSpectrum","arguments":["3"]})",
                            testing::StartsWith(R"("return","name":"J4_GetSpectrum","status":7,"result":")"),
                            R"("call","name":"J4_KeyPressed"})", R"("return","name":"J4_KeyPressed","result":"0"})",
                            R"("call","name":"J4_SetOption","arguments":["Simulator.TraceFile","none"]})"));
}

TEST_F(StartTest, WithoutAnInstrumentInTheTableNothingIsChosen)
{
    Set("Simulator.SeatedInstrument", "none");
    Set("Simulator.Instruments", "3");
    Set("DeviceType", "Sorvane2");
    const Failure missing{"J4_IsTableConnected", J4_ResultSpectrophotometerNotConnected,
                          "No j4 device connected to table"};
    ExpectFailure(J4_IsTableConnected(), missing);
    EXPECT_EQ(GetOption("DeviceType"), "Sorvane2") << "as before";

    Set("J4TUseableWithoutJ4", "yes");
    EXPECT_EQ(J4_IsTableConnected(), 0);
    EXPECT_EQ(GetOption("J4TJ4SerialNumber"), "");
    EXPECT_EQ(J4_SetPosition(300.0f, 300.0f), 0) << "the table moves without an instrument";

    Set("J4TUseableWithoutJ4", "no");
    ExpectFailure(J4_IsTableConnected(), missing);
    Set("Simulator.SeatedInstrument", "240119");
    EXPECT_EQ(J4_IsTableConnected(), 0);
    EXPECT_EQ(GetOption("J4TJ4SerialNumber"), "240119") << "paired as soon as one is found";
}

TEST_F(StartTest, TheOptionChoosesAmongSeveralTables)
{
    Set("Simulator.Tables", "2");
    Set("Simulator.SeatedInstrument", "240118;240117");
    EXPECT_EQ(GetOption("J4TDeviceType"), "J4TSorvaneTable-1");
    EXPECT_EQ(GetOption("J4TJ4SerialNumber"), "240118");
    EXPECT_EQ(GetOption("J4TSerialNumber"), "640001");
    Set("J4TDeviceType", "J4TSorvaneTable2");
    EXPECT_EQ(GetOption("J4TDeviceType"), "J4TSorvaneTable0") << "reads two less";
    EXPECT_EQ(GetOption("J4TJ4SerialNumber"), "240117");
    EXPECT_EQ(GetOption("J4TSerialNumber"), "640002");

    Set("J4TMoveSpeed", "111");
    for (const auto& [value, status, message] :
         std::vector<std::tuple<const char*, int, const char*>>{{"Table2", 10, "Invalid device ID-string"},
                                                                {" J4TSorvaneTable2", 10, "Invalid device ID-string"},
                                                                {"J4TSorvaneTable0", 10, "Invalid device ID"},
                                                                {"J4TSorvaneTable128", 10, "Invalid device ID"}}) {
        ExpectFailure(SetOption("J4TDeviceType", value), {"J4_SetOption", status, message});
        EXPECT_EQ(GetOption("J4TMoveSpeed"), "111") << "the table stays";
    }
    EXPECT_EQ(SetOption("J4TDeviceType", "J4TSorvaneTablex"), J4_ResultException);
    EXPECT_EQ(GetOption("J4TMoveSpeed"), "111");

    EXPECT_EQ(SetOption("J4TDeviceType", "J4TSorvaneTable3"), J4_ResultDeviceNotConnected) << "there are only two";
    EXPECT_EQ(GetOption("J4TSerialNumber"), "640001") << "the next call makes the first table";
}

}  // namespace
}  // namespace J4Test
