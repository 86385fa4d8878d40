#include "c_sdk/src/Validator.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "Utilities/Exceptions/SDKError.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "c_sdk/include/j4tavla.h"
#include "c_sdk/src/ContextJ4T.h"

namespace Kestrelon::DeviceDriver::J4T {

namespace {

constexpr std::array<std::string_view, 5> functionsWithBuffer = {"J4_GetSpectrum", "J4_GetTriStimulus",
                                                                 "J4_GetDensities", "J4_GetDensity", "J4_SetSubstrate"};

}  // namespace

void ContextParameterValidatorJ4T::ValidateParameter(const void* parameter)
try {
    if (parameter == nullptr) {
        throw SDKError(J4_ResultResourceFault, "parameter must not be null", std::string());
    }
}
J4T_TRACE_FRAME

void ContextParameterValidatorJ4T::ValidateParameter(const char* parameter)
try {
    ValidateParameter(static_cast<const void*>(parameter));
    if (*parameter == '\0') {
        throw SDKError(J4_ResultResourceFault, "parameter must not be empty", std::string());
    }
}
J4T_TRACE_FRAME

void ContextValidatorJ4T::Validate(const ContextJ4T& context, const ExportParameters& parameters)
try {
    const std::string_view name = context.name;
    if (name == "J4_GetOption") {
        ValidateParameter(parameters.key);
    } else if (name == "J4_SetOption") {
        ValidateParameter(parameters.key);
        ValidateParameter(parameters.value);
    } else if (name == "J4_GetPosition") {
        ValidateParameter(parameters.outX);
        ValidateParameter(parameters.outY);
    } else if (std::find(functionsWithBuffer.begin(), functionsWithBuffer.end(), name) != functionsWithBuffer.end()) {
        ValidateParameter(parameters.buffer);
    }
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::J4T
