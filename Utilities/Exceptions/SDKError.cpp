#include "Utilities/Exceptions/SDKError.h"

#include <string>
#include <typeinfo>

namespace Kestrelon::DeviceDriver::J4T {

using Utilities::Exceptions::TraceableException;
using Utilities::Exceptions::TraceableExceptionAdapter;

SDKError::SDKError() : SDKError(0, "no error", std::string()) {}

SDKError::SDKError(int32_t code, const std::string& message, const std::string& firstTraceEntry)
    : TraceableExceptionAdapter(firstTraceEntry), RuntimeException(message, firstTraceEntry), code(code)
{}

SDKError::SDKError(const std::string& context, int32_t code, const std::string& message,
                   const std::string& firstTraceEntry)
    : SDKError(code, context + " failed: " + message, firstTraceEntry)
{}

SDKError::SDKError(int32_t code, const RuntimeException& caught)
    : TraceableExceptionAdapter(caught), RuntimeException(caught), code(code), exceptionType(typeid(caught).name())
{}

void SDKError::SetOutOfMemory() noexcept
{
    // Short enough to stay inside of the string.
    message = outOfMemoryText;
    trace.clear();
    exceptionType.clear();
    code = OutOfMemoryCode;
}

std::string SDKError::GetExtendedInformation() const
{
    std::string result = std::string(what()) + "\n";
    if (!exceptionType.empty()) {
        result += exceptionType + "\n";
    }
    return result + TraceText();
}

}  // namespace Kestrelon::DeviceDriver::J4T
