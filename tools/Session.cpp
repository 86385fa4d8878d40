#include "tools/Session.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <regex>
#include <sstream>
#include <thread>
#include <utility>

#include "tools/BlockReader.h"
#include "tools/Interrupt.h"
#include "tools/Platform.h"
#include "tools/StatusTable.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

/// What the library reported of the call that is under way.
struct Failure {
    int32_t status = 0;
    std::string message;
};

Failure lastFailure;

void OnError(const char*, int32_t status, const char* message)
{
    lastFailure = {status, message == nullptr ? "" : message};
}

/// Whether what failed the last call is the end of a motion of before.
bool IsLeftOver() { return lastFailure.message == "Device busy." || lastFailure.message == "Missing ':'."; }

std::string PlaceText(Point place)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << place.x << "/" << place.y << " mm";
    return text.str();
}

/// Without the names of types and of C++ functions, which the library's texts may hold.
std::string PlainWords(const std::string& message)
{
    static const std::regex conversion("lexical_cast\\(\\): fail to convert '([^]*)' from [^ ]* to [^ \\n]*");
    static const std::regex typeName("(^|[ \\n])N[0-9][A-Za-z0-9_]*E(?=$|[ \\n])");
    static const std::regex wrongType("vector::_M_range_check:.*");
    std::string text = std::regex_replace(message, wrongType, "the value is of another kind than the option");
    text = std::regex_replace(text, conversion, "'$1' is not a value that it takes");
    text = std::regex_replace(text, typeName, "");
    const size_t end = text.find_last_not_of(" \n");
    return text.substr(0, end == std::string::npos ? 0 : end + 1);
}

ToolError TableError(const std::string& what, int32_t status, const std::string& message)
{
    // What library and table say of a configuration block that is missing or damaged.
    static const std::regex lostBlock(
        "[Cc]onfiguration data|config block|Checksum error in flash|flash size|flash data");
    const StatusEntry& entry = FindStatus(status);
    const bool isLost = std::regex_search(message, lostBlock);
    return ToolError(
        entry.exitCode, what + " failed: " + PlainWords(message),
        isLost ? "The table's configuration is lost or damaged: bring it back with 'j4tavla rescue'." : entry.advice,
        status);
}

}  // namespace

Session::Session(const TableFunctions& functions) : functions(functions)
{
    lastFailure = {};
    this->functions.RegisterErrorHandler(OnError);
}

Session::~Session()
{
    Release();
    functions.RegisterErrorHandler(nullptr);
}

void Session::Check(const std::string& what, const std::function<int32_t()>& call)
{
    lastFailure = {};
    const int32_t status = call();
    if (status != 0) {
        // Where the instrument's library can't be loaded nothing is reported, and the text is the answer to
        // every key.
        throw TableError(what, status,
                         lastFailure.status == status ? lastFailure.message : functions.GetOption("LastError"));
    }
}

void Session::Work(const std::string& what, const std::function<int32_t()>& call)
{
    Interrupt::Check();
    const bool isFirst = !std::exchange(hasMoved, true);
    try {
        Check(what, call);
    } catch (const ToolError&) {
        if (!isFirst || !IsLeftOver()) {
            throw;
        }
        WaitForStandstill();
        Interrupt::Check();
        Check(what, call);
    }
    Interrupt::Check();
}

void Session::WaitForStandstill()
{
    constexpr int looks = 150;
    constexpr std::chrono::milliseconds glance(100);
    Point before{NAN, NAN};
    for (int look = 0; look < looks && !Interrupt::Requested(); ++look) {
        float x = NAN;
        float y = NAN;
        functions.GetPosition(&x, &y);  // which also takes what the table still has to report
        const Point here{static_cast<double>(x), static_cast<double>(y)};
        if (here.x == before.x && here.y == before.y) {
            return;
        }
        before = here;
        std::this_thread::sleep_for(glance);
    }
}

void Session::CheckWriting(const std::string& what, const std::function<int32_t()>& call)
{
    if (keepBlock) {
        keepBlock(GetOption("J4TSerialNumber"), BlockReader(functions).Read());
    }
    const Platform::SignalShield shield;
    try {
        Check(what, call);
    } catch (ToolError& error) {
        error.advice += " If the table does not connect any more, run 'j4tavla rescue'.";
        throw;
    }
}

void Session::RequireInstrumentLibrary()
{
    Check("loading the instrument's library", [this] {
        const std::string version = functions.GetOption("J4TMajorVersion");
        const bool isNumber = version.find_first_not_of("0123456789") == std::string::npos;
        return isNumber ? J4_ResultNoError : J4_ResultFrameFailure;
    });
}

void Session::SetOption(const std::string& key, const std::string& value)
{
    try {
        Check("setting the option " + key + " to '" + value + "'",
              [&] { return functions.SetOption(key.c_str(), value.c_str()); });
    } catch (ToolError& error) {
        if (error.code == ExitCode::Device) {
            error.code = ExitCode::Refused;
            error.advice = "Check key and value; docs/options.md lists what each option takes.";
        }
        throw;
    }
}

std::string Session::GetOption(const std::string& key)
{
    std::string value;
    Check("reading the option " + key, [&] {
        value = functions.GetOption(key.c_str());
        return lastFailure.status;
    });
    return value;
}

std::string Session::TryOption(const std::string& key)
{
    lastFailure = {};
    const std::string value = functions.GetOption(key.c_str());
    return lastFailure.status == 0 ? value : std::string();
}

void Session::Connect()
{
    const auto connect = [this] { return functions.IsTableConnected(); };
    try {
        Check("connecting to the table", connect);
    } catch (const ToolError&) {
        if (connected || !IsLeftOver()) {
            throw;
        }
        Check("connecting to the table", connect);
    }
    connected = true;
    Interrupt::Check();
}

void Session::GoHome()
{
    Connect();
    Work("going to the white tile", [this] { return functions.GoToHomePosition(); });
}

void Session::Calibrate()
{
    GoHome();
    Interrupt::Check();
    CheckWriting("calibrating", [this] { return functions.Calibrate(); });
    Interrupt::Check();
}

void Session::Move(Point target)
{
    Connect();
    Work("moving to " + PlaceText(target),
         [&] { return functions.SetPosition(static_cast<float>(target.x), static_cast<float>(target.y)); });
}

Point Session::Position()
{
    Connect();
    float x = 0.0f;
    float y = 0.0f;
    Check("reading the position", [&] { return functions.GetPosition(&x, &y); });
    return {static_cast<double>(x), static_cast<double>(y)};
}

std::vector<Session::Spectrum> Session::Scan(Point start, Point end)
{
    Interrupt::Check();
    Check("scanning from " + PlaceText(start) + " to " + PlaceText(end), [&] {
        return functions.Scan(static_cast<float>(start.x), static_cast<float>(start.y), static_cast<float>(end.x),
                              static_cast<float>(end.y));
    });
    lastFailure = {};
    const int32_t count = functions.GetNumberOfAvailableSamples();
    if (count < 0) {
        throw TableError("counting the samples", lastFailure.status, lastFailure.message);
    }
    std::vector<Spectrum> samples;
    densities.clear();
    for (int32_t i = 0; i < count; ++i) {
        samples.push_back(ReadSample(static_cast<uint32_t>(i)));
    }
    return samples;
}

Session::Spectrum Session::Measure()
{
    SetOption("MeasurementMode", "SingleReflectance");
    Interrupt::Check();
    Check("measuring", [this] { return functions.TriggerMeasurement(); });
    Interrupt::Check();
    densities.clear();
    return ReadSample(0);
}

Session::Spectrum Session::ReadSample(uint32_t index)
{
    Spectrum spectrum{};
    Check("reading sample " + std::to_string(index), [&] { return functions.GetSpectrum(spectrum.data(), index); });
    if (wantsDensities) {
        std::array<float, std::tuple_size_v<J4Chart::Densities>> values{};
        int32_t automatic = 0;
        Check("reading the densities of sample " + std::to_string(index),
              [&] { return functions.GetDensities(values.data(), &automatic, index); });
        if (!std::all_of(values.begin(), values.end(), [](float value) { return std::isfinite(value); })) {
            throw ToolError(ExitCode::Device, "the instrument tells a density that is no number",
                            "Measure without --densities.");
        }
        std::copy(values.begin(), values.end(), densities.emplace_back().begin());
    }
    return spectrum;
}

Session::Spectrum Session::WhiteBase()
{
    Connect();
    std::istringstream words(GetOption("J4TFlash_3000"));
    words.imbue(std::locale::classic());
    Spectrum whiteBase{};
    for (float& value : whiteBase) {
        if (!(words >> value)) {
            throw ToolError(ExitCode::Calibration, "the table holds no whole white base",
                            "Write one with 'j4tavla whitebase --write FILE'.");
        }
    }
    return whiteBase;
}

void Session::WriteWhiteBase(Spectrum whiteBase)
{
    Connect();
    Interrupt::Check();
    CheckWriting("writing the white base", [&] { return functions.SynchronizeWhitebases(whiteBase.data()); });
}

void Session::Release()
{
    if (connected) {
        functions.SetOption("J4THoldPosition", "no");
        functions.SetOption("J4TEnableElectrostaticFoil", "no");
        connected = false;
    }
}

}  // namespace J4Tool
