// The one context of the process: the exported call in hand, and the facade that all calls work on. It
// comes to life with the first exported call.
#pragma once

#include <cstdint>
#include <string>

#include "Utilities/Tools/SmartPointer.h"
#include "c_sdk/src/ExportParameters.h"
#include "c_sdk/src/Validator.h"
#include "src/j4TableSDK.h"

namespace Kestrelon::DeviceDriver::J4T {

class ContextJ4T {
public:
    /// The single instance, made when there is none; making it loads the instrument's library. The pointer
    /// is not to be copied: its count of 1 is what lets Drop end the context.
    /// @throws what making the facade or loading the library throws; nothing is left then
    static const Utilities::Tools::SmartPointer<ContextJ4T>& Instance();

    /// Ends the context and all it owns; the next Instance() makes a new one.
    static void Drop();

    /// Tests the stored arguments of the call in hand.
    void Validate();

    std::string name;
    ExportParameters parameters{};
    Utilities::Tools::SmartPointer<j4TableSDK> sdk;
    Utilities::Tools::SmartPointer<ContextParameterValidatorJ4T> validator;

private:
    ContextJ4T();

    /// What the instrument's library calls for its own errors. It throws: the exception travels through that library's
    /// frames to the exported function's ladder.
    static void libraryErrorHandler(const char* context, int32_t status, const char* message);

    static Utilities::Tools::SmartPointer<ContextJ4T>& StaticInstance();
};

}  // namespace Kestrelon::DeviceDriver::J4T
