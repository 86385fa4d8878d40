// Sessions: whatever the table, the instrument's library or the application say, no call but returns, and after a reset
// the next session works.
#include <algorithm>
#include <string>

#include "c_sdk/include/j4tavla.h"
#include "fuzz/Targets.h"
#include "simulator/world/Bench.h"
#include "tests/sweep/Fault.h"

namespace J4Fuzz {

using J4Test::Fault;
using J4Test::Seam;
using J4Test::Way;

namespace {

/// The input, bit by bit; zeros behind its end.
class Source {
public:
    Source(const uint8_t* data, size_t size) : at(data), end(data + size) {}
    bool IsEmpty() const { return at == end; }
    uint8_t Byte() { return IsEmpty() ? 0 : *at++; }
    int32_t Number()
    {
        uint32_t number = 0;
        for (int i = 0; i < 4; ++i) {
            number = number << 8 | Byte();
        }
        return static_cast<int32_t>(number);
    }
    /// Up to a line feed.
    std::string Text()
    {
        const uint8_t* const feed = std::find(at, end, '\n');
        const std::string text(at, feed);
        at = feed == end ? end : feed + 1;
        return text;
    }

private:
    const uint8_t* at;
    const uint8_t* end;
};

constexpr float Nowhere = 1e30f;

void UseAll()
{
    float values[J4_SPECTRUM_LENGTH] = {};
    float x = 0.0f;
    float y = 0.0f;
    J4_IsConnected();
    J4_IsTableConnected();
    J4_GoToHomePosition();
    J4_Calibrate();
    J4_SetPosition(300.0f, 300.0f);
    J4_SetPosition(Nowhere, 300.0f);
    J4_GetPosition(&x, &y);
    J4_TriggerMeasurement();
    J4_GetSpectrum(values, 0);
    J4_GetTriStimulus(values, 0);
    int32_t filter = 0;
    J4_GetDensities(values, &filter, 0);
    J4_Scan(200.0f, 250.0f, 260.0f, 250.0f);
    J4_GetNumberOfAvailableSamples();
    J4_GetSpectrum(values, 1);
    for (const char* key : {"LastError", "ExtendedErrorInformation", "J4TFirmwareVersion", "J4TFlash_3000",
                            "J4TLastWhiteBaseTransferTime", "IntegrationTime", "SerialNumber"}) {
        J4_GetOption(key);
    }
    J4_SynchronizeWhitebases(values);
    J4_KeyPressed();
}

J4Bench::Bench& Bench() { return J4Bench::Bench::Instance(); }

/// As after power-on and the start of a process.
void StartOver()
{
    Fault::Arm(nullptr, 0);
    Bench().Reset();
    J4_SetOption("Reset", "All");
}

void RequireNextSession()
{
    Fault::Arm(nullptr, 0);
    Bench().GetFaults() = J4Bench::Faults();
    Bench().Clock().Advance(20'000'000);
    for (const auto call : {+[] { return J4_SetOption("Reset", "J4TAll"); }, +[] { return J4_IsTableConnected(); },
                            +[] { return J4_GoToHomePosition(); }, +[] { return J4_Calibrate(); },
                            +[] { return J4_SetPosition(300.0f, 300.0f); }}) {
        const J4_Result status = call();
        const std::string text = status == 0 ? "" : J4_GetOption("LastError");
        // A configuration block that was lost while it was written is brought back by the tool alone.
        const bool isBlockLost = text.find("onfig") != std::string::npos || text == "Checksum error in flash.";
        Require(status == 0 || isBlockLost, "the next session works: " + text);
        if (isBlockLost) {
            return;
        }
    }
}

void RunWith(Way& way)
{
    StartOver();
    Fault::Arm(&way, 1);
    UseAll();
    RequireNextSession();
}

}  // namespace

void Wire(const uint8_t* data, size_t size)
{
    Source input(data, size);
    enum What : uint8_t { Genuine = 200, Replaced = 225, Changed = 245, Cut = 250, Silent = 253 };
    Way way{"fuzz", Seam::Usb, true};
    way.action = [] {};
    way.chance = [] { return false; };
    way.received = [&input](unsigned char* buffer, unsigned long& length) {
        const uint8_t what = input.Byte();
        if (what < Genuine || length < 3) {
            return;
        }
        if (what < Replaced) {
            std::generate(buffer + 2, buffer + length, [&input] { return input.Byte(); });
        } else if (what < Changed) {
            buffer[2 + input.Byte() % (length - 2)] = input.Byte();
        } else if (what < Cut) {
            length = 2 + input.Byte() % (length - 2);
        } else if (what < Silent) {
            length = 2;
        } else {
            length = 0;
        }
    };
    RunWith(way);
}

void LibraryAnswers(const uint8_t* data, size_t size)
{
    Source input(data, size);
    std::string text;
    Way way{"fuzz", Seam::Library, true};
    way.chance = [&input] { return input.Byte() % 4 == 3; };
    way.action = [&] {
        way.status = input.Number();
        text = input.Text();
        way.text = text.c_str();
    };
    RunWith(way);
}

void Options(const uint8_t* data, size_t size)
{
    Source input(data, size);
    StartOver();
    while (!input.IsEmpty()) {
        const std::string key = input.Text();
        const std::string value = input.Text();
        // Not files of this machine, nor its time.
        if (key.find("File") == std::string::npos && key.find("TimeScale") == std::string::npos) {
            J4_SetOption(key.c_str(), value.c_str());
            J4_GetOption(key.c_str());
        }
    }
    UseAll();
    StartOver();
    RequireNextSession();
}

}  // namespace J4Fuzz
