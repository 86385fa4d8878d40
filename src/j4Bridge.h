// The one door to the instrument maker's closed library: loads it, binds its sixteen functions, and gives
// it back the two handlers that it forgets at a reset. Nothing else in the system touches that library.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>

#include "Utilities/Tools/LibraryLoader.h"
#include "Utilities/Tools/SmartPointer.h"
#include "c_sdk/include/j4tavla.h"
#include "src/SpectrumLength.h"

namespace Kestrelon::DeviceDriver::J4T {

/// Operations of J4_Private that the table's own code uses.
enum class PrivateOperation : uint32_t {
    Correction = 0,  ///< J4CorrectionRequest
    Samples = 1,     ///< J4SampleList
    Positions = 5,   ///< J4PositionList
};

/// Installs (active 1) or removes (active 0, vector null) the correction of the current measurement mode:
/// every later measurement in it is multiplied by the vector.
struct J4CorrectionRequest {
    uint8_t active;
    const char* name;
    const float* vector;  ///< SpectrumLength values
};

/// Replaces the samples in the library's store; a count of 0 empties it.
struct J4SampleList {
    float** samples;  ///< pointers to spectra of SpectrumLength values
    int32_t count;
};

/// The travelled position of each sample of the next counted scan, in tenths of a millimetre; a count of 0
/// clears the list.
struct J4PositionList {
    uint16_t* positions;
    uint64_t count;
};

/// Far more samples than an instrument holds, or takes in one scan: an answer beyond it is wrong.
constexpr int32_t MaximumSamples = 1000000;

/// Seconds; far shorter than any integration time.
constexpr float ShortestIntegrationTime = 1e-6f;

/// Far longer than any text of the library: an answer beyond it has no end.
constexpr std::size_t MaximumTextLength = 1048576;

/// Copies a text of the library; a null pointer gives the empty one.
/// @throws LengthException when it is longer than MaximumTextLength
std::string CopyLibraryText(const char* text);

class j4Bridge {
public:
    /// The one instance, made when there is none. A counted copy, so that the library stays loaded while a
    /// call is in it, even when a handler that it calls unloads it.
    /// @throws J4LibraryException when the library can't be used
    static Utilities::Tools::SmartPointer<j4Bridge> Instance();

    /// Destroys the instance and so unloads the library; the next Instance() loads it anew.
    static void UnloadInstance();

    /// Full path of the loaded library, empty when none is loaded.
    std::string GetPath();

    /// Hands both stored handlers to the library when it does not have them.
    void SetHandlers();

    // The library's functions, under their own names. A status is returned as it is; nothing is thrown for it.
    int32_t J4_IsConnected();
    int32_t J4_KeyPressed();
    int32_t J4_GetNumberOfAvailableSamples();
    int32_t J4_Calibrate();
    int32_t J4_TriggerMeasurement();
    int32_t J4_TriggerCountedScan(uint32_t count);
    int32_t J4_GetSpectrum(float* spectrum, uint32_t index);
    int32_t J4_GetTriStimulus(float* tristimulus, uint32_t index);
    int32_t J4_GetDensities(float* densities, int32_t* densityIndex, uint32_t index);
    int32_t J4_GetDensity(float* density, uint32_t index);
    int32_t J4_SetSubstrate(float* substrate);
    int32_t J4_SetOption(const std::string& key, const std::string& value);
    /// @throws LengthException as CopyLibraryText
    std::string J4_GetOption(const std::string& key);
    J4_ErrorHandler J4_RegisterErrorHandler(J4_ErrorHandler handler);
    J4_DeviceMessageHandler J4_RegisterDeviceMessageHandler(J4_DeviceMessageHandler handler);
    intptr_t J4_Private(uint32_t operation, void* record);
    intptr_t J4_Private(PrivateOperation operation, void* record);

private:
    /// The functions in the order in which they are resolved and stored.
    enum Slot : std::size_t {
        SlotIsConnected,
        SlotKeyPressed,
        SlotGetNumberOfAvailableSamples,
        SlotCalibrate,
        SlotTriggerMeasurement,
        SlotTriggerCountedScan,
        SlotGetSpectrum,
        SlotGetTriStimulus,
        SlotGetDensities,
        SlotGetDensity,
        SlotSetSubstrate,
        SlotSetOption,
        SlotGetOption,
        SlotRegisterErrorHandler,
        SlotRegisterDeviceMessageHandler,
        SlotPrivate,
        SlotCount,
    };
    using FunctionTypes =
        std::tuple<int32_t (*)(), int32_t (*)(), int32_t (*)(), int32_t (*)(), int32_t (*)(), int32_t (*)(uint32_t),
                   int32_t (*)(float*, uint32_t), int32_t (*)(float*, uint32_t),
                   int32_t (*)(float*, int32_t*, uint32_t), int32_t (*)(float*, uint32_t), int32_t (*)(float*),
                   int32_t (*)(const char*, const char*), const char* (*)(const char*),
                   J4_ErrorHandler (*)(J4_ErrorHandler), J4_DeviceMessageHandler (*)(J4_DeviceMessageHandler),
                   intptr_t (*)(uint32_t, void*)>;
    static_assert(std::tuple_size_v<FunctionTypes> == SlotCount);
    static const std::array<const char*, SlotCount> functionNames;

    j4Bridge();
    static Utilities::Tools::SmartPointer<j4Bridge>& StaticInstance();
    void LoadLibraryA();
    void ThrowIfInvalid() const;

    template <Slot slot, class... Arguments>
    auto Call(Arguments... arguments)
    {
        return reinterpret_cast<std::tuple_element_t<slot, FunctionTypes>>(functions[slot])(arguments...);
    }

    /// Call, after the library got its handlers.
    template <Slot slot, class... Arguments>
    auto Forward(Arguments... arguments)
    {
        SetHandlers();
        return Call<slot>(arguments...);
    }

    Utilities::Tools::SmartPointer<Utilities::Tools::LibraryLoader> library;
    J4_ErrorHandler errorHandler = nullptr;
    J4_DeviceMessageHandler deviceMessageHandler = nullptr;
    bool handlersPending = true;
    std::array<void*, SlotCount> functions{};
};

/// The instrument's library, as the table's code calls it.
inline Utilities::Tools::SmartPointer<j4Bridge> Library() { return j4Bridge::Instance(); }

}  // namespace Kestrelon::DeviceDriver::J4T
