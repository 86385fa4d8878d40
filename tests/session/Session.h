// The ground of the session tests: a freshly switched-on virtual table with two instruments, of which the
// second one, 240118, sits in the table, and an application that has just been started.
#pragma once

#include <array>
#include <cmath>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/support/Application.h"
#include "tests/support/CallJournal.h"

namespace J4Test {

using Spectrum = std::array<float, J4_SPECTRUM_LENGTH>;

/// Faults of the table that end every call which talks to it.
struct Fault {
    const char* key;
    const char* value;
    const char* healed;
    int32_t status;
    const char* text;
    const char* valueInScan = nullptr;  ///< where it differs
};
inline const Fault faults[] = {
    {"Simulator.TableUnplugged", "yes", "no", J4_ResultDeviceNotConnected,
     "Error in UsbIo function: \"WriteSync\" Error: Error code 0xE000100A: Device is removed."},
    {"Simulator.TableSilent", "yes", "no", J4_ResultDeviceFault, "Read timeout."},
    {"Simulator.TableBusy", "yes", "no", J4_ResultDeviceFault, "Device busy."},
    {"Simulator.CorruptReplies", "1", "0", J4_ResultDeviceFault, "Checksum not valid.", "1000"}};

struct SessionTest : ApplicationTest {
    static constexpr const char* seated = "240118";

    void SetUp() override
    {
        Application::StartOver();
        Set("Simulator.Reset", "yes");
        Application::RegisterHandlers();
    }

    static void Set(const std::string& key, const std::string& value)
    {
        EXPECT_EQ(SetOption(key, value), 0) << key << " " << value << ": " << GetOption("LastError");
    }

    /// The table is there, homed, and both reflectance modes are calibrated.
    static void MakeReady()
    {
        ASSERT_EQ(J4_IsTableConnected(), 0) << GetOption("LastError");
        ASSERT_EQ(J4_GoToHomePosition(), 0) << GetOption("LastError");
        ASSERT_EQ(J4_Calibrate(), 0) << GetOption("LastError");
    }

    static void StartJournal()
    {
        Set("Simulator.Journal", "yes");
        TakeJournal();
    }

    static Lines TakeJournal() { return ShortLines(GetOption("Simulator.Journal")); }

    static Spectrum Measured(uint32_t index = 0)
    {
        Spectrum spectrum{};
        EXPECT_EQ(J4_GetSpectrum(spectrum.data(), index), 0) << GetOption("LastError");
        return spectrum;
    }

    /// Waits until an arm that was left moving stands, and takes what it still reports off the line, as a
    /// service program does: nothing below clears the line after a failure.
    static void LetTheLineFallSilent()
    {
        J4PrivateTableRequest request{};
        request.length = 4096;
        request.timeout = 10000;
        J4_Private(1002, &request);
        EXPECT_EQ(request.failed, 0) << request.errorText;
    }

    /// A value list of the table, as numbers.
    static std::vector<float> Numbers(const std::string& key)
    {
        std::istringstream stream(GetOption(key));
        return {std::istream_iterator<float>(stream), {}};
    }
};

}  // namespace J4Test
