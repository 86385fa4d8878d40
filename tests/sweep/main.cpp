// Fails the n-th operation of a whole session in each way, and looks what the calls make of it: nothing leaves one, each
// status is a documented one, the handler hears of it, and after a reset the next session works.
// usage: sweep [--stride N] [--way NAME]    every N-th operation of each way; without NAME all ways
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "Utilities/Exceptions/TableExceptions.h"
#include "c_sdk/include/j4tavla.h"
#include "simulator/world/Bench.h"
#include "src/Flash/j4TableFlashDataHandle.h"
#include "tests/sweep/Fault.h"
#include "tools/TableRescue.h"

namespace J4Test {
namespace {

J4Bench::Bench& Bench() { return J4Bench::Bench::Instance(); }
J4Bench::Faults& BenchFaults() { return Bench().GetFaults(); }

void FailUsb() { throw CommunicationException("Error in UsbIo function: \"Sweep\" Error: it fails."); }

/// A status that no library gives, which has to pass unchanged.
constexpr int32_t foreignStatus = 4711;
const std::string longText(3000000, '7');

const Way ways[] = {
    {"memory-once", Seam::Memory, false},
    {"memory-lasting", Seam::Memory, true},
    {"usb-once", Seam::Usb, false, FailUsb},
    {"usb-lasting", Seam::Usb, true, FailUsb},
    {"usb-unplugged", Seam::Usb, false, [] { BenchFaults().tableUnplugged = true; }},
    {"usb-silent", Seam::Usb, false, [] { BenchFaults().tableSilent = true; }},
    {"usb-busy", Seam::Usb, false, [] { BenchFaults().tableBusy = true; }},
    {"usb-damaged-once", Seam::Usb, false, [] { BenchFaults().corruptReplies = 1; }},
    {"usb-damaged", Seam::Usb, false, [] { BenchFaults().corruptReplies = 1000000; }},
    {"usb-blocked", Seam::Usb, false, [] { BenchFaults().positionNotReached = true; }},
    {"library-once", Seam::Library, false, {}, foreignStatus},
    {"library-lasting", Seam::Library, true, {}, foreignStatus},
    {"library-much", Seam::Library, false, {}, INT32_MAX, longText.c_str()},
    {"library-much-lasting", Seam::Library, true, {}, INT32_MAX, longText.c_str()},
    {"library-little", Seam::Library, false, {}, -1, "1e-8"},
    {"library-throws", Seam::Library, false, [] { throw std::runtime_error("it fails"); }},
};

/// What the application heard of the call in hand.
struct Told {
    int calls = 0;
    J4_Result status = J4_ResultNoError;
    std::string text;
    std::string answer;  ///< of an option
} told;

void OnError(const char*, int32_t status, const char* message)
{
    const Within application(false);
    ++told.calls;
    told.status = status;
    told.text = message;
}

struct Step {
    std::string name;
    std::function<J4_Result()> call;  ///< its status, also where the function has none
    J4_Result good = J4_ResultNoError;
    bool isQuiet = false;     ///< the function has no status: the handler alone can tell
    bool endsTable = false;   ///< leaves a table in order, which never fails
    std::string answer = {};  ///< of an option, when all is well
};

template <class Call>
Step Quiet(const char* name, Call call)
{
    return {name, [=] { return call(), told.status; }, J4_ResultNoError, true};
}

Step Write(const char* key, const char* value, J4_Result good = J4_ResultNoError)
{
    return {std::string("write ") + key, [=] { return J4_SetOption(key, value); }, good};
}

Step ReadOption(const char* key, J4_Result good = J4_ResultNoError)
{
    const auto call = [=] {
        const char* answer = J4_GetOption(key);
        const Within application(false);
        told.answer = answer;
        return told.status;
    };
    return {std::string("read ") + key, call, good, true};
}

Step RawAccess(int32_t operation, int32_t length)
{
    return Quiet("J4_Private", [=] {
        char request[] = ";a0";
        J4PrivateTableRequest record{request, length, 0, {}, 0, nullptr};
        J4_Private(operation, &record);
        if (record.failed != 0) {
            OnError("", J4_ResultException, record.errorText);
        }
    });
}

float values[J4_SPECTRUM_LENGTH];
const Step registerHandler = Quiet("J4_RegisterErrorHandler", [] { J4_RegisterErrorHandler(OnError); });
const Step reset = {"reset", [] { return J4_SetOption("Reset", "J4TAll"); }, 0, false, true};
const Step isConnected = {"J4_IsConnected", [] { return J4_IsConnected(); }};
const Step connect = {"J4_IsTableConnected", [] { return J4_IsTableConnected(); }};
const Step goHome = {"J4_GoToHomePosition", [] { return J4_GoToHomePosition(); }};
const Step calibrate = {"J4_Calibrate", [] { return J4_Calibrate(); }};
const Step scan = {"J4_Scan", [] { return J4_Scan(200.0f, 250.0f, 260.0f, 250.0f); }};
const Step spectrum = {"J4_GetSpectrum", [] { return J4_GetSpectrum(values, 0); }};

/// Good calls, and some that are refused, so that reporting a failure is part of it.
std::vector<Step> steps = {
    reset,
    registerHandler,
    Quiet("J4_RegisterDeviceMessageHandler", [] { J4_RegisterDeviceMessageHandler([](int32_t, const char*) {}); }),
    isConnected,
    connect,
    goHome,
    calibrate,
    {"J4_SynchronizeWhitebases", [] { return J4_SynchronizeWhitebases(values); }},
    {"J4_SetPosition", [] { return J4_SetPosition(300.0f, 300.0f); }},
    {"J4_SetPosition outside", [] { return J4_SetPosition(3000.0f, 300.0f); }, J4_ResultIllegalPosition},
    {"J4_GetPosition", [] { return J4_GetPosition(&values[0], &values[1]); }},
    Write("MeasurementMode", "SingleReflectance"),
    {"J4_TriggerMeasurement", [] { return J4_TriggerMeasurement(); }},
    spectrum,
    {"J4_GetTriStimulus", [] { return J4_GetTriStimulus(values, 0); }},
    {"J4_GetSpectrum null", [] { return J4_GetSpectrum(nullptr, 0); }, J4_ResultResourceFault},
    Quiet("J4_KeyPressed", [] { J4_KeyPressed(); }),
    Write("J4TMoveSpeed", "200"),
    Write("J4TMoveSpeed", "fast", J4_ResultException),
    ReadOption("LastError"),
    ReadOption("ExtendedErrorInformation"),
    ReadOption("J4TFirmwareVersion"),
    ReadOption("J4TFlash_3000"),
    ReadOption("Please throw an exception in the j4tavla SDK", J4_ResultException),
    Write("5041", "1.25"),
    RawAccess(1001, 3),
    RawAccess(1002, 14),
    scan,
    Quiet("J4_GetNumberOfAvailableSamples", [] { J4_GetNumberOfAvailableSamples(); }),
    {"J4_GetSpectrum of no sample", [] { return J4_GetSpectrum(values, 1000000); }, 7},
    {"J4TDeviceType", [] { return J4_SetOption("J4TDeviceType", "J4TSorvaneTable1"); }, 0, false, true},
    goHome,
    reset,
    isConnected,
};
const std::vector<Step> nextSession = {reset, registerHandler, connect, goHome, calibrate, Write("Recognition", "no"),
                                       scan,  spectrum};

constexpr J4_Result Escaped = -1000;

J4_Result Run(const Step& step)
{
    told = {};
    const Within library(true);
    try {
        return step.call();
    } catch (...) {
        return Escaped;
    }
}

/// Bench and library as after power-on and the start of a process, but for what lives as long as the process.
void StartOver()
{
    Bench().Reset();
    J4_SetOption("Reset", "All");
    J4_RegisterErrorHandler(OnError);
    std::fill(std::begin(values), std::end(values), 0.875f);
}

/// A table whose configuration block was lost while it was written; no reset brings that back, but a rescue.
bool IsBlockLost() { return told.text.find("onfig") != std::string::npos || told.text == "Checksum error in flash."; }

J4Tool::Block wholeBlock;

/// The configuration block as the table has it, read on its line.
J4Tool::Block ReadBlock()
{
    using namespace Kestrelon::DeviceDriver::J4T;
    const Kestrelon::Utilities::Tools::SmartPointer<Communication::j4TableComManager> manager(
        new Communication::j4TableComManager(0));
    return j4TableFlashDataHandle(manager).GetCachedFlashData().Dump(j4TableFlashData::FormatValuesOnly);
}

class Sweep {
public:
    explicit Sweep(const Way& way) : way(way) {}

    /// Every stride-th operation, until a session ends without the fault. @return findings
    long RunAll(long stride)
    {
        StartOver();
        const long blocksBefore = Fault::blocks;
        for (operation = 1; RunSession(); operation += stride) {}
        StartOver();
        if (Fault::blocks - blocksBefore > 100) {
            Find(std::to_string(Fault::blocks - blocksBefore) + " blocks of memory are left", "end");
        }
        std::printf("%-21s %6ld sessions, %ld findings, %ld configuration blocks lost and brought back; statuses:",
                    way.name, sessions, findings, blocksLost);
        for (const auto& [status, count] : statuses) {
            std::printf(" %d: %ld", status, count);
        }
        std::printf("\n");
        std::fflush(stdout);
        return findings;
    }

private:
    void Find(const std::string& what, const std::string& step)
    {
        ++findings;
        std::printf("%s %ld: %s: %s: %s\n", way.name, operation, step.c_str(), what.c_str(), told.text.c_str());
    }

    /// @return whether the session came to the operation
    bool RunSession()
    {
        StartOver();
        isHandlerSet = true;
        Fault::Arm(&way, operation);
        for (const Step& step : steps) {
            const bool struckBefore = Fault::hasStruck;
            const J4_Result result = Run(step);
            Check(step, result, Fault::hasStruck && !struckBefore);
        }
        const bool reached = Fault::hasStruck;
        CheckNextSession();
        ++sessions;
        return reached;
    }

    void Check(const Step& step, J4_Result result, bool struckHere)
    {
        static const std::set<J4_Result> documented = {0, 9, 10, 100, 101, 102, 103, 104};
        // Below 9 are those that the bench's library and the table share.
        const bool isPassedOn = (result > 0 && result < 9) || (way.seam == Seam::Library && result == way.status);
        isHandlerSet = isHandlerSet && step.name != reset.name;  // it goes with the reset
        if (struckHere) {
            ++statuses[result];
        }
        if (result == Escaped) {
            Find("an exception left it", step.name);
        } else if (!documented.contains(result) && !isPassedOn) {
            Find("status " + std::to_string(result), step.name);
        } else if (isHandlerSet && result != 0 && result != J4_ResultFrameFailure &&
                   (told.calls != 1 || told.status != result)) {
            Find("the handler heard " + std::to_string(told.calls) + " times", step.name);
        } else if (struckHere && way.seam == Seam::Memory && !IsRightWithoutMemory(step, result)) {
            Find("status " + std::to_string(result) + " without memory", step.name);
        }
        isHandlerSet = isHandlerSet || (step.name == registerHandler.name && !Fault::hasStruck);
    }

    bool IsRightWithoutMemory(const Step& step, J4_Result result) const
    {
        // Reading an option keeps the error of before, which may be lost where nobody asks for it.
        const bool hasRightAnswer = !step.answer.empty() && told.answer == step.answer;
        return result == J4_ResultException || result == J4_ResultFrameFailure ||
               (result == 0 && (hasRightAnswer || step.endsTable || (step.isQuiet && !isHandlerSet)));
    }

    void CheckNextSession()
    {
        Fault::Arm(nullptr, 0);
        BenchFaults() = J4Bench::Faults();
        // An arm that was left moving would report its end into whatever is asked next.
        Bench().Clock().Advance(20'000'000);
        std::string failing = FirstToFail();
        if (!failing.empty() && IsBlockLost()) {
            ++blocksLost;
            Run(reset);  // the tool has the line alone
            try {
                J4Tool::TableRescue(0).Write(wholeBlock);
                failing = FirstToFail();
            } catch (const std::exception& error) {
                Find(error.what(), "the rescue");
            }
        }
        if (!failing.empty()) {
            Find("the next session fails", failing);
        }
    }

    /// Step of the next session; empty when it works.
    static std::string FirstToFail()
    {
        const auto failing =
            std::find_if(nextSession.begin(), nextSession.end(), [](const Step& step) { return Run(step) != 0; });
        return failing == nextSession.end() ? std::string() : failing->name;
    }

    const Way& way;
    long operation = 0;
    long sessions = 0;
    long findings = 0;
    long blocksLost = 0;
    bool isHandlerSet = false;
    std::map<J4_Result, long> statuses;  ///< of the calls in which the fault struck
};

/// The session itself, with nothing in its way.
long LearnAnswers()
{
    long findings = 0;
    StartOver();
    Run(reset);
    wholeBlock = ReadBlock();
    StartOver();
    for (Step& step : steps) {
        if (const J4_Result result = Run(step); result != step.good) {
            std::printf("without a fault: %s: %d %s\n", step.name.c_str(), result, told.text.c_str());
            ++findings;
        }
        step.answer = told.answer;
    }
    return findings;
}

int Main(int count, char** arguments)
{
    long stride = 1;
    std::string name;
    for (int i = 1; i + 1 < count; i += 2) {
        if (std::strcmp(arguments[i], "--stride") == 0) {
            stride = std::max(std::atol(arguments[i + 1]), 1L);
        } else if (std::strcmp(arguments[i], "--way") == 0) {
            name = arguments[i + 1];
        }
    }
    long findings = LearnAnswers();
    for (const Way& way : ways) {
        if (name.empty() || name == way.name) {
            findings += Sweep(way).RunAll(stride);
        }
    }
    std::printf("%ld findings\n", findings);
    return findings == 0 ? 0 : 1;
}

}  // namespace
}  // namespace J4Test

int main(int count, char** arguments) { return J4Test::Main(count, arguments); }
