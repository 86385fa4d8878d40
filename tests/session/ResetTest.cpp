// Starting over within a process, and the handlers across it.
#include "tests/session/Session.h"

namespace J4Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(SessionTest, AFullResetMakesEverythingNew)
{
    for (const char* value : {"All", "J4TAll"}) {
        SetUp();
        MakeReady();
        Set("J4TMoveSpeed", "111");
        Set("J4TUseableWithoutJ4", "yes");
        Set("J4TSerialPortLogFile", "kept");
        Set("MeasurementMode", "ScanningReflectance");
        Set("J4TEnableElectrostaticFoil", "yes");
        StartJournal();
        EXPECT_EQ(SetOption("Reset", value), 0);
        EXPECT_THAT(TakeJournal(),
                    ElementsAre("table s0", "table f0", "table f3", "set Reset All", "J4_RegisterErrorHandler set",
                                "J4_RegisterErrorHandler set", "J4_RegisterDeviceMessageHandler null"))
            << "the table is left in order; the handlers are brought back by the next forwarded call";
        EXPECT_EQ(GetOption("LastError"), "no error");
        EXPECT_EQ(GetOption("J4TUseableWithoutJ4"), "yes") << "of the process";
        EXPECT_EQ(GetOption("J4TSerialPortLogFile"), "kept");
        Set("J4TUseableWithoutJ4", "no");
        EXPECT_EQ(GetOption("MeasurementMode"), "SingleReflectance") << "the library's own start";
        EXPECT_EQ(J4_TriggerMeasurement(), 3) << "not calibrated any more";
        EXPECT_THAT(Application::failures, IsEmpty()) << "the error handler is gone";

        TakeJournal();
        EXPECT_EQ(GetOption("J4TMoveSpeed"), "300") << "a new table at its defaults";
        EXPECT_THAT(LinesThatBegin(TakeJournal(), {"J4_Register"}), ElementsAre("J4_RegisterDeviceMessageHandler set"));
        EXPECT_EQ(J4_RegisterErrorHandler(Application::OnError), nullptr);
        EXPECT_EQ(J4_RegisterErrorHandler(Application::OnError), &Application::OnError);
        EXPECT_EQ(J4_RegisterDeviceMessageHandler(Application::OnDeviceMessage), &Application::OnDeviceMessage)
            << "the device message handler stays";
    }
}

TEST_F(SessionTest, PairingBearsALibraryThatCallsItsErrorHandler)
{
    // Pairing measures with instruments that are not calibrated: each of these failures is thrown.
    Set("Simulator.ErrorHandlerCalls", "yes");
    EXPECT_EQ(J4_IsTableConnected(), J4_ResultSpectrophotometerNotConnected) << "no instrument can be tested";
    Set("Simulator.ErrorHandlerCalls", "no");
    EXPECT_EQ(J4_IsTableConnected(), 0);
}

}  // namespace
}  // namespace J4Test
