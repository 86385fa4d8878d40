// A library of C functions whose every answer a test sets: the instrument's, with the loader that finds it. It can
// be missing, lack a function, give any status or text, and fail in any way, at any call.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "c_sdk/include/j4tavla.h"

namespace J4Test {

struct ScriptedLibrary {
    static constexpr const char* serialNumber = "7654321";

    static ScriptedLibrary& Instance();

    /// The functions by name.
    static const std::map<std::string, void*>& Functions();

    /// One instrument, "Sorvane0", connected and seated, that can do both reflectance modes; everything works.
    void PowerOn();

    // How loading goes.
    std::string loadFailure;            ///< text of the failure; empty: it loads
    std::string missingFunction;        ///< this name is not found
    int loads = 0;                      ///< attempts
    std::vector<std::string> resolved;  ///< the names that were asked for

    /// What a call does before anything else, by the call's text ("J4_SetOption Reset All") or else by its
    /// function's name: its value is the call's status; it may throw. No script: 0.
    std::map<std::string, std::function<int32_t()>> script;

    /// The call has this status from now on.
    void Answer(const std::string& call, int32_t status);

    /// The call throws a copy of this from now on.
    template <class Exception>
    void Throw(const std::string& call, const Exception& exception)
    {
        script[call] = [exception]() -> int32_t { throw exception; };
    }

    /// The call reports its failure to the registered error handler.
    void CallErrorHandler(const std::string& call, const char* context, int32_t status, const char* message);

    std::map<std::string, std::string> options;  ///< a good write changes the value
    std::map<std::string, int32_t> devices;      ///< J4_IsConnected by DeviceType; any other device: 2
    std::string seatedDevice;                    ///< this one's measurements are noticed
    std::function<void()> noticeMeasurement;
    std::vector<std::vector<float>> samples;                ///< the store; private operation 1 replaces it
    std::deque<std::array<float, 3>> tristimulus;           ///< one for each measurement; none left: 0, 0, 0
    std::map<std::string, std::vector<float>> corrections;  ///< installed, by MeasurementMode
    std::vector<uint16_t> positions;                        ///< last list
    J4_ErrorHandler errorHandler = nullptr;
    J4_DeviceMessageHandler deviceMessageHandler = nullptr;

    /// Is given each call's text, before its script.
    std::function<void(const std::string&)> record;
};

}  // namespace J4Test
