// Tests the arguments of an exported call before anything is done with them.
#pragma once

#include "c_sdk/src/ExportParameters.h"

namespace Kestrelon::DeviceDriver::J4T {

class ContextJ4T;

class ContextParameterValidatorJ4T {
public:
    virtual ~ContextParameterValidatorJ4T() = default;

    /// @throws SDKError with status 10 for a refused argument
    virtual void Validate(const ContextJ4T& context, const ExportParameters& parameters) = 0;

    /// @throws SDKError "parameter must not be null"
    void ValidateParameter(const void* parameter);
    /// @throws SDKError "parameter must not be null", "parameter must not be empty"
    void ValidateParameter(const char* parameter);
};

/// The tests of the 22 functions, chosen by the name in the context.
class ContextValidatorJ4T : public ContextParameterValidatorJ4T {
public:
    void Validate(const ContextJ4T& context, const ExportParameters& parameters) override;
};

}  // namespace Kestrelon::DeviceDriver::J4T
