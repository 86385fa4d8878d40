/**
 * @file j4tavla.hpp
 * The table's programming interface for C++17: values instead of buffers, exceptions instead of statuses, typed options,
 * handlers that end with an object, and a lock around all calls. Everything goes through the C functions of j4tavla.h,
 * which tells what they do, their units, and which statuses each can give; a program links the same library.
 *
 * @code
 * J4Tavla::Table table;
 * table.Set(J4Tavla::Options::MeasurementMode, "ScanningReflectance");
 * table.GoHome();
 * table.Calibrate();
 * for (const J4Tavla::Spectrum& patch : table.Scan({199.5f, 250.0f}, {356.5f, 250.0f})) {
 *     std::cout << patch.At(550) << '\n';
 * }
 * @endcode
 */
#ifndef J4TAVLA_HPP
#define J4TAVLA_HPP

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <iomanip>
#include <locale>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "j4tavla.h"

namespace J4Tavla {

#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wweak-vtables"  // a header has no source that could hold the class's table
#endif
/** A call that failed: the function of j4tavla.h, its status, and the texts that tell why. */
class Error : public std::runtime_error {
public:
    /**
     * Of a call that failed.
     * @param function  name of the C function
     * @param status    its status
     * @param text      the option "LastError"
     * @param trace     the option "ExtendedErrorInformation"
     */
    Error(const std::string& function, J4_Result status, const std::string& text, const std::string& trace)
        : std::runtime_error(function + " failed with status " + std::to_string(status) + ": " +
                             text.substr(0, text.find_last_not_of("\r\n ") + 1)),
          details(std::make_shared<Details>(Details{function, status, text, trace}))
    {}

    /** @return name of the C function, for instance "J4_Scan" */
    const std::string& Function() const noexcept { return details->function; }
    /** @return the status of the call */
    J4_Result Status() const noexcept { return details->status; }
    /** @return name of the status in j4tavla.h; "J4_Result" for one of the instrument's library that has none there */
    const char* Name() const noexcept
    {
        switch (details->status) {
        case J4_ResultDeviceFault:
            return "J4_ResultDeviceFault";
        case J4_ResultDeviceNotConnected:
            return "J4_ResultDeviceNotConnected";
        case J4_ResultNotCalibrated:
            return "J4_ResultNotCalibrated";
        case J4_ResultException:
            return "J4_ResultException";
        case J4_ResultResourceFault:
            return "J4_ResultResourceFault";
        case J4_ResultSpectrophotometerNotConnected:
            return "J4_ResultSpectrophotometerNotConnected";
        case J4_ResultPositionNotReached:
            return "J4_ResultPositionNotReached";
        case J4_ResultIllegalPosition:
            return "J4_ResultIllegalPosition";
        case J4_ResultWhiteBase:
            return "J4_ResultWhiteBase";
        case J4_ResultFrameFailure:
            return "J4_ResultFrameFailure";
        default:
            return "J4_Result";
        }
    }
    /** @return the option "LastError" of this failure */
    const std::string& Text() const noexcept { return details->text; }
    /** @return the option "ExtendedErrorInformation" of this failure: text, type, trace through the library */
    const std::string& Trace() const noexcept { return details->trace; }

private:
    struct Details {
        std::string function;
        J4_Result status;
        std::string text;
        std::string trace;
    };

    std::shared_ptr<const Details> details;  // so that copies of a thrown error can't fail
};

#if defined(__clang__)
#pragma clang diagnostic pop
#endif

/** A place on the bed, in the user's unit: millimetres unless Options::UserUnit says otherwise. */
struct Position {
    float x = 0.0f;  ///< from the tower's axis
    float y = 0.0f;  ///< from the tower's axis
};

/** Reflectance factors, 1 for the perfect diffuser, at 380 to 730 nm in steps of 10 nm. */
struct Spectrum {
    std::array<float, J4_SPECTRUM_LENGTH> values{};  ///< in order of wavelength

    /** @param band  place of a value, counted from 0  @return its wavelength, nm */
    static constexpr int Wavelength(std::size_t band)
    {
        return J4_FIRST_WAVELENGTH + static_cast<int>(band) * J4_WAVELENGTH_STEP;
    }

    /** @param nanometres  a wavelength  @return the value there  @throws std::out_of_range where a spectrum has none */
    float At(int nanometres) const
    {
        const int way = nanometres - J4_FIRST_WAVELENGTH;
        if (way < 0 || way % J4_WAVELENGTH_STEP != 0 || way / J4_WAVELENGTH_STEP >= J4_SPECTRUM_LENGTH) {
            throw std::out_of_range(std::to_string(nanometres) + " nm is no wavelength of a spectrum");
        }
        return values[static_cast<std::size_t>(way / J4_WAVELENGTH_STEP)];
    }

    /// @cond
    float operator[](std::size_t band) const { return values[band]; }
    auto begin() const { return values.begin(); }
    auto end() const { return values.end(); }
    std::size_t size() const { return values.size(); }
    friend bool operator==(const Spectrum& a, const Spectrum& b) { return a.values == b.values; }
    friend bool operator!=(const Spectrum& a, const Spectrum& b) { return !(a == b); }
    /// @endcond
};

/** Colour values of a sample. */
struct Colour {
    std::array<float, 3> values{};  ///< in the order of the space's name: L*, a*, b* for "CIELab"
    std::string space;              ///< what the values are: Options::ColourSpace when they were read
};

/** Densities of a sample. */
struct Densities {
    float cyan = 0.0f;       ///< decimal logarithm
    float magenta = 0.0f;    ///< decimal logarithm
    float yellow = 0.0f;     ///< decimal logarithm
    float black = 0.0f;      ///< decimal logarithm
    std::int32_t index = 0;  ///< one more value of the instrument's library: the place of the highest one
};

/** What a sample of Table::Scan is. */
enum class Recognition {
    None = 0,        ///< what the instrument saw in one integration time
    BySamples = 1,   ///< a patch, told by the samples alone
    ByPositions = 2  ///< a patch, told by samples and positions
};

/** The unit of coordinates. */
enum class Unit { Millimetre = 0, TenthMillimetre = 1, Inch = 2 };

/** An option that is only read, with the type of its value. */
template <class Value>
struct ReadOnly {
    const char* key;  ///< its key
};

/** An option that is read and written, with the type of its value. */
template <class Value>
struct ReadWrite {
    const char* key;  ///< its key
};

/** The options that have a type; all others go by their text through Table::GetOption and Table::SetOption. */
namespace Options {

inline constexpr ReadWrite<std::int32_t> MoveSpeed{"J4TMoveSpeed"};                   ///< mm/s, between places
inline constexpr ReadWrite<std::int32_t> ScanSpeed{"J4TScanSpeed"};                   ///< mm/s, along a row
inline constexpr ReadWrite<std::int32_t> ScanDelay{"J4TScanDelay"};                   ///< ms before a row starts
inline constexpr ReadWrite<bool> VisorCoordinates{"J4TIsVisorCoordinate"};            ///< of the visor, not the sensor
inline constexpr ReadWrite<Recognition> PatchRecognition{"J4TRecognitionAlgorithm"};  ///< what a sample of a scan is
inline constexpr ReadWrite<bool> HoldPosition{"J4THoldPosition"};                     ///< the motors hold the arm
inline constexpr ReadWrite<bool> Foil{"J4TEnableElectrostaticFoil"};                  ///< the foil holds the paper
inline constexpr ReadWrite<bool> FoilButton{"J4TEnableElectrostaticFoilButton"};      ///< the foil's button works
inline constexpr ReadWrite<bool> UseableWithoutInstrument{"J4TUseableWithoutJ4"};  ///< set before the first table call
inline constexpr ReadWrite<Unit> UserUnit{"5030"};                                 ///< of all coordinates
inline constexpr ReadWrite<float> PlacementFactor{"5041"};                         ///< limit of the check of the seat
inline constexpr ReadWrite<float> DirtLimit{"5044"};                               ///< colour difference on the tile
inline constexpr ReadOnly<float> DirtDifference{"5045"};                           ///< that of the last calibration

inline constexpr ReadOnly<bool> Connected{"J4TConnection"};                             ///< a table is connected
inline constexpr ReadOnly<std::int32_t> SerialNumber{"J4TSerialNumber"};                ///< of the table
inline constexpr ReadOnly<std::string> TableInstrument{"J4TJ4SerialNumber"};            ///< serial number
inline constexpr ReadOnly<std::int32_t> FirmwareVersion{"J4TFirmwareVersion"};          ///< of the table's controller
inline constexpr ReadOnly<std::int32_t> MaxSpeed{"J4TMaxSpeed"};                        ///< mm/s
inline constexpr ReadOnly<std::int32_t> WhiteBaseTime{"J4TLastWhiteBaseTransferTime"};  ///< s since 1970-01-01 UTC
inline constexpr ReadOnly<std::string> Version{"J4TVersion"};                           ///< of the table's library
inline constexpr ReadOnly<std::string> InstrumentLibrary{"J4TJ4SDKPath"};               ///< its full path

// Of the instrument's library.
inline constexpr ReadWrite<std::string> MeasurementMode{
    "MeasurementMode"};  ///< "SingleReflectance", "ScanningReflectance", ...
inline constexpr ReadOnly<std::string> MeasurementModes{"AvailableMeasurementModes"};  ///< separated by ";"
inline constexpr ReadWrite<std::string> ColourSpace{
    "ColorSpaceDescription.Type"};  ///< what Table::GetColour gives, "CIELab" for instance
inline constexpr ReadWrite<std::string> Illumination{"Colorimetric.Illumination"};  ///< illuminant of colour values
inline constexpr ReadWrite<std::string> Observer{"Colorimetric.Observer"};          ///< observer of colour values
inline constexpr ReadWrite<std::string> Instrument{"DeviceType"};                   ///< the selected one
inline constexpr ReadOnly<std::string> InstrumentSerialNumber{"SerialNumber"};      ///< of the selected one
inline constexpr ReadOnly<float> IntegrationTime{"IntegrationTime"};                ///< s, of the current mode

}  // namespace Options

/** Takes a failure. */
using FailureHandler = std::function<void(const Error&)>;
/** Takes a device message: its number (1: the instrument has gone), and what it is about. */
using DeviceMessageHandler = std::function<void(std::int32_t message, const std::string& text)>;

/// @cond
namespace Detail {

/**
 * A list of handlers that may be changed while it is called. What has been removed is called no more: a thread that removes
 * waits until another one that calls has come to the list's end.
 */
template <class Handler>
class Handlers {
public:
    using Place = std::shared_ptr<const Handler>;

    Place Add(Handler handler)
    {
        if (!handler) {
            throw std::invalid_argument("an empty handler can't be called");
        }
        const std::lock_guard<std::recursive_mutex> lock(mutex);
        return list.emplace_back(std::make_shared<const Handler>(std::move(handler)));
    }

    void Remove(const Place& place)
    {
        const std::lock_guard<std::recursive_mutex> lock(mutex);
        list.erase(std::find(list.begin(), list.end(), place));
    }

    template <class... Arguments>
    void Call(const Arguments&... arguments)
    {
        const std::lock_guard<std::recursive_mutex> lock(mutex);
        // A handler may remove itself and others, and add some.
        for (const Place& place : std::vector<Place>(list)) {
            if (std::find(list.begin(), list.end(), place) != list.end()) {
                (*place)(arguments...);
            }
        }
    }

private:
    std::recursive_mutex mutex;
    std::vector<Place> list;
};

/** What a process has once, as the library under it. It is never taken down, so that static objects may use it. */
struct Shared {
    std::recursive_mutex calls;  ///< held during a call; its handlers may call in turn
    bool hasTable = false;
    std::optional<Error>* failure = nullptr;  ///< of the call that is under way
    Handlers<FailureHandler> onFailure;
    Handlers<DeviceMessageHandler> onDeviceMessage;

    static Shared& Instance()
    {
        static Shared* const instance = new Shared;
        return *instance;
    }

    /** Keeps what a handler throws away from the library: it is thrown when the call has returned. */
    void Keep(std::exception_ptr thrown)
    {
        const std::lock_guard<std::mutex> lock(thrownMutex);
        thrownByHandler = std::move(thrown);
    }

    void RethrowKept()
    {
        std::unique_lock<std::mutex> lock(thrownMutex);
        if (const std::exception_ptr thrown = std::exchange(thrownByHandler, nullptr)) {
            lock.unlock();
            std::rethrow_exception(thrown);
        }
    }

    static void OnFailure(const char* function, std::int32_t status, const char* message) noexcept
    {
        Shared& shared = Instance();
        try {
            const Error error(function, status, message, J4_GetOption("ExtendedErrorInformation"));
            if (shared.failure != nullptr) {
                *shared.failure = error;
            }
            shared.onFailure.Call(error);
        } catch (...) {
            shared.Keep(std::current_exception());
        }
    }

    static void OnDeviceMessage(std::int32_t message, const char* text) noexcept
    {
        Shared& shared = Instance();
        try {
            shared.onDeviceMessage.Call(message, std::string(text != nullptr ? text : ""));
        } catch (...) {
            shared.Keep(std::current_exception());
        }
    }

private:
    std::mutex thrownMutex;
    std::exception_ptr thrownByHandler;
};

/** A text that the library gets whole. */
inline const char* Whole(const std::string& text)
{
    if (text.find('\0') != std::string::npos) {
        throw std::invalid_argument("a key or value with a NUL in it would be cut there");
    }
    return text.c_str();
}

inline std::string ToText(const std::string& value) { return value; }
inline std::string ToText(bool value) { return value ? "yes" : "no"; }
inline std::string ToText(std::int32_t value) { return std::to_string(value); }

/** With a point, which tells the library that it is no whole number. */
inline std::string ToText(float value)
{
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << std::fixed << std::setprecision(9) << static_cast<double>(value);
    return stream.str();
}

template <class Value, std::enable_if_t<std::is_enum_v<Value>, int> = 0>
std::string ToText(Value value)
{
    return std::to_string(static_cast<int>(value));
}

template <class Value>
Value FromText(const char* key, const std::string& text)
{
    if constexpr (std::is_same_v<Value, std::string>) {
        return text;
    } else if constexpr (std::is_same_v<Value, bool>) {
        return text == "yes";
    } else if constexpr (std::is_enum_v<Value>) {
        return static_cast<Value>(FromText<std::int32_t>(key, text));
    } else {
        Value value{};
        std::istringstream stream(text);
        stream.imbue(std::locale::classic());
        if (!(stream >> value) || !stream.eof()) {
            throw Error("J4_GetOption", J4_ResultException, std::string(key) + " is no number: '" + text + "'", "");
        }
        return value;
    }
}

}  // namespace Detail
/// @endcond

/**
 * A registered handler; it is called until the last copy of this object ends. The end waits for handlers that run in
 * another thread, which must therefore not wait for this one; in a handler it does not wait.
 */
class Registration {
private:
    friend class Table;

    template <class Remove>
    explicit Registration(Remove remove) : remover(nullptr, [remove](void*) { remove(); })
    {}

    std::shared_ptr<void> remover;
};

/**
 * The table with the instrument in it. There is one in a process, as there is one library under it; it does not go home
 * and stays connected when the object ends, which only gives the library's handlers back. Threads may share it: each
 * method is one call, or a few that belong together, under a lock.
 * Every method throws an Error when the library gives a status other than 0.
 */
class Table {
public:
    /**
     * Loads the instrument's library; the table is connected by the first call that needs it.
     * @throws Error with status 104 when it can't be loaded; std::logic_error when there is a Table already
     */
    Table()
    {
        const auto lock = Lock();
        if (shared.hasTable) {
            throw std::logic_error("there is one J4Tavla::Table in a process");
        }
        // Without the instrument's library its failure is the value of every option.
        const std::string version = J4_GetOption("J4TVersion");
        if (version.rfind("Version ", 0) != 0) {
            throw Error("J4_GetOption", J4_ResultFrameFailure, version, "");
        }
        previousErrorHandler = J4_RegisterErrorHandler(Detail::Shared::OnFailure);
        previousMessageHandler = J4_RegisterDeviceMessageHandler(Detail::Shared::OnDeviceMessage);
        shared.hasTable = true;
    }

    ~Table()
    {
        const auto lock = Lock();
        J4_RegisterErrorHandler(previousErrorHandler);
        J4_RegisterDeviceMessageHandler(previousMessageHandler);
        shared.hasTable = false;
    }

    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    /**
     * Keeps other threads away while several calls belong together.
     * @return a lock, which the thread that has it may take again
     */
    std::unique_lock<std::recursive_mutex> Lock() const { return std::unique_lock<std::recursive_mutex>(shared.calls); }

    /** Connects to the table where that has not been done: throws why there is none. */
    void CheckTable() { Check("J4_IsTableConnected", J4_IsTableConnected); }
    /** Throws unless the selected instrument is connected. */
    void CheckInstrument() { Check("J4_IsConnected", J4_IsConnected); }
    /** Calibrates on the white tile; GoHome() first. */
    void Calibrate() { Check("J4_Calibrate", J4_Calibrate); }
    /** @return state of the instrument's button, as its library tells it */
    std::int32_t KeyPressed() { return Run(J4_KeyPressed); }

    /** Moves the arm to the white tile. */
    void GoHome() { Check("J4_GoToHomePosition", J4_GoToHomePosition); }
    /** Moves the arm and waits for its arrival. @param target  where to */
    void MoveTo(Position target)
    {
        Check("J4_SetPosition", [&] { return J4_SetPosition(target.x, target.y); });
    }
    /** @return where the arm is */
    Position GetPosition()
    {
        Position position;
        Check("J4_GetPosition", [&] { return J4_GetPosition(&position.x, &position.y); });
        return position;
    }

    /** Takes one measurement where the instrument stands. @return its spectrum */
    Spectrum Measure()
    {
        const auto lock = Lock();
        Check("J4_TriggerMeasurement", J4_TriggerMeasurement);
        return GetSpectrum(0);
    }

    /**
     * Takes samples where the instrument stands. After a Scan that recognised patches set Options::PatchRecognition to
     * Recognition::None before, and back before the next one: else patches are looked for in the samples; see
     * ::J4_TriggerCountedScan.
     * @param count  how many
     * @return their spectra
     */
    std::vector<Spectrum> MeasureSamples(std::uint32_t count)
    {
        const auto lock = Lock();
        Check("J4_TriggerCountedScan", [&] { return J4_TriggerCountedScan(count); });
        return Spectra();
    }

    /**
     * Scans a row.
     * @param start  first point of the row, on bare paper
     * @param end    last point of the row, on bare paper
     * @return one spectrum for each patch that was found
     */
    std::vector<Spectrum> Scan(Position start, Position end)
    {
        const auto lock = Lock();
        Check("J4_Scan", [&] { return J4_Scan(start.x, start.y, end.x, end.y); });
        return Spectra();
    }

    /** @return number of samples of the last measurement or scan */
    std::uint32_t SampleCount()
    {
        return static_cast<std::uint32_t>(std::max<std::int32_t>(Run(J4_GetNumberOfAvailableSamples), 0));
    }

    /** @return all samples */
    std::vector<Spectrum> Spectra()
    {
        const auto lock = Lock();
        std::vector<Spectrum> spectra(SampleCount());
        for (std::uint32_t i = 0; i < spectra.size(); ++i) {
            spectra[i] = GetSpectrum(i);
        }
        return spectra;
    }

    /** @param index  sample, counted from 0  @return its spectrum */
    Spectrum GetSpectrum(std::uint32_t index)
    {
        Spectrum spectrum;
        Check("J4_GetSpectrum", [&] { return J4_GetSpectrum(spectrum.values.data(), index); });
        return spectrum;
    }

    /** @param index  sample, counted from 0  @return its colour, in the colour space that is set */
    Colour GetColour(std::uint32_t index)
    {
        const auto lock = Lock();
        Colour colour;
        colour.space = Get(Options::ColourSpace);
        Check("J4_GetTriStimulus", [&] { return J4_GetTriStimulus(colour.values.data(), index); });
        return colour;
    }

    /** @param index  sample, counted from 0  @return its densities */
    Densities GetDensities(std::uint32_t index)
    {
        std::array<float, 4> values{};
        Densities densities;
        Check("J4_GetDensities", [&] { return J4_GetDensities(values.data(), &densities.index, index); });
        densities.cyan = values[0];
        densities.magenta = values[1];
        densities.yellow = values[2];
        densities.black = values[3];
        return densities;
    }

    /** @param index  sample, counted from 0  @return one density of it */
    float GetDensity(std::uint32_t index)
    {
        float density = 0.0f;
        Check("J4_GetDensity", [&] { return J4_GetDensity(&density, index); });
        return density;
    }

    /** Sets the paper that densities refer to. @param substrate  its spectrum */
    void SetSubstrate(Spectrum substrate)
    {
        Check("J4_SetSubstrate", [&] { return J4_SetSubstrate(substrate.values.data()); });
    }

    /** Writes a new white base to the table's flash; see ::J4_SynchronizeWhitebases. @param whiteBase  no value is 0 */
    void SynchronizeWhiteBases(Spectrum whiteBase)
    {
        Check("J4_SynchronizeWhitebases", [&] { return J4_SynchronizeWhitebases(whiteBase.values.data()); });
    }

    /** @param option  one of Options  @return its value */
    template <class Value>
    Value Get(ReadOnly<Value> option)
    {
        return Detail::FromText<Value>(option.key, GetOption(option.key));
    }

    /** @param option  one of Options  @return its value */
    template <class Value>
    Value Get(ReadWrite<Value> option)
    {
        return Get(ReadOnly<Value>{option.key});
    }

    /** Writes an option. @param option  one of Options  @param value  its new value */
    template <class Value>
    void Set(ReadWrite<Value> option, const std::common_type_t<Value>& value)
    {
        SetOption(option.key, Detail::ToText(value));
    }

    /** @param key  of any option  @return its value  @throws std::invalid_argument for a NUL in the key */
    std::string GetOption(const std::string& key)
    {
        return Run([text = Detail::Whole(key)] { return std::string(J4_GetOption(text)); });
    }

    /**
     * Writes an option by its key.
     * @param key    of any option
     * @param value  its new value
     * @throws std::invalid_argument for a NUL in key or value; std::logic_error for "Reset" with "All" or "J4TAll" in a
     *         handler
     */
    void SetOption(const std::string& key, const std::string& value)
    {
        const char* const keyText = Detail::Whole(key);
        const char* const valueText = Detail::Whole(value);
        const bool isReset = key == "Reset" && (value == "All" || value == "J4TAll");
        const auto lock = Lock();
        if (isReset && shared.failure != nullptr) {
            throw std::logic_error("the library can't be reset in a handler");
        }
        Check("J4_SetOption", [&] { return J4_SetOption(keyText, valueText); });
        if (isReset) {
            J4_RegisterErrorHandler(Detail::Shared::OnFailure);
            J4_RegisterDeviceMessageHandler(Detail::Shared::OnDeviceMessage);
        }
    }

    /** Releases table and instrument and begins anew; handlers stay. */
    void Reset() { SetOption("Reset", "J4TAll"); }

    /**
     * Registers a handler that is called with each failure, before its Error is thrown; it may read options.
     * @param handler  what it throws takes the place of the Error
     * @return as long as this lives the handler is called
     * @throws std::invalid_argument for an empty handler
     */
    [[nodiscard]] Registration OnFailure(FailureHandler handler)
    {
        return Registration(
            [place = shared.onFailure.Add(std::move(handler)), &all = shared] { all.onFailure.Remove(place); });
    }

    /**
     * Registers a handler that is called with each device message; it must not call the table.
     * @param handler  what it throws leaves the call that is under way when that is done
     * @return as long as this lives the handler is called
     * @throws std::invalid_argument for an empty handler
     */
    [[nodiscard]] Registration OnDeviceMessage(DeviceMessageHandler handler)
    {
        return Registration([place = shared.onDeviceMessage.Add(std::move(handler)), &all = shared] {
            all.onDeviceMessage.Remove(place);
        });
    }

    /** Sends a frame to the table. @param bytes  without the line's checksum and carriage return, which follow them */
    void WriteRaw(std::string bytes)
    {
        J4PrivateTableRequest request{};
        request.data = bytes.data();
        request.length = static_cast<std::int32_t>(bytes.size());
        PrivateRequest(1001, request);
    }

    /**
     * Reads raw bytes from the table's serial line.
     * @param count    how many
     * @param timeout  ms, at most 60000
     * @return what came in this time
     */
    std::string ReadRaw(std::int32_t count, std::uint32_t timeout)
    {
        const auto lock = Lock();
        J4PrivateTableRequest request{};
        request.length = count;
        request.timeout = timeout;
        PrivateRequest(1002, request);
        return std::string(request.data, static_cast<std::size_t>(request.length));
    }

    /** Any other operation of ::J4_Private. @param operation  number  @param record  its record  @return its value */
    std::intptr_t Private(std::int32_t operation, void* record)
    {
        return Run([&] { return J4_Private(operation, record); });
    }

private:
    /** Takes the failures of one call; within a handler, those of the call in it. */
    class Frame {
    public:
        explicit Frame(Detail::Shared& process) : place(process.failure), outer(std::exchange(place, &failure)) {}
        ~Frame() { place = outer; }
        Frame(const Frame&) = delete;
        Frame& operator=(const Frame&) = delete;

        std::optional<Error> failure;

    private:
        std::optional<Error>*& place;
        std::optional<Error>* outer;
    };

    template <class Call>
    std::invoke_result_t<Call> Run(Call call)
    {
        const auto lock = Lock();
        Frame frame(shared);
        auto result = call();
        shared.RethrowKept();
        if (frame.failure) {
            throw *frame.failure;
        }
        return result;
    }

    template <class Call>
    void Check(const char* function, Call call)
    {
        const auto lock = Lock();
        const J4_Result status = Run(call);
        if (status != J4_ResultNoError) {
            // One without a call of the handler: there is no instrument's library.
            throw Error(function, status, J4_GetOption("LastError"), "");
        }
    }

    void PrivateRequest(std::int32_t operation, J4PrivateTableRequest& request)
    {
        const auto lock = Lock();
        request.failed = 1;
        Private(operation, &request);
        if (request.failed != 0) {
            throw Error("J4_Private", J4_ResultException, request.errorText != nullptr ? request.errorText : "", "");
        }
    }

    Detail::Shared& shared = Detail::Shared::Instance();
    J4_ErrorHandler previousErrorHandler = nullptr;
    J4_DeviceMessageHandler previousMessageHandler = nullptr;
};

}  // namespace J4Tavla

#endif
