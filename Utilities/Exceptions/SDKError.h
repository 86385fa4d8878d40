// The error that carries an API status: what an exported function stores as its outcome.
#pragma once

#include <cstdint>
#include <string>

#include "Utilities/Exceptions/Exceptions.h"

namespace J4SDK {

/// Marks an error that carries an API status.
class Exception {
public:
    virtual ~Exception() = default;

protected:
    Exception() = default;
    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;
};

}  // namespace J4SDK

namespace Kestrelon::DeviceDriver::J4T {

class SDKError : public Utilities::Exceptions::RuntimeException, public J4SDK::Exception {
public:
    using RuntimeException = Utilities::Exceptions::RuntimeException;

    /// "no error", status 0.
    SDKError();
    SDKError(int32_t code, const std::string& message, const std::string& firstTraceEntry);
    /// The message becomes context, " failed: ", message.
    SDKError(const std::string& context, int32_t code, const std::string& message, const std::string& firstTraceEntry);
    /// Gives a caught exception a status and keeps its message, trace, cause and type name.
    SDKError(int32_t code, const RuntimeException& caught);
    SDKError(const SDKError&) = default;
    SDKError& operator=(const SDKError&) = default;

    /// Becomes the error of missing memory, without any: status 9, no trace.
    void SetOutOfMemory() noexcept;
    static constexpr int32_t OutOfMemoryCode = 9;
    static constexpr const char* outOfMemoryText = "std::bad_alloc";

    /// The message, the type name when there is one, and the trace: the option "ExtendedErrorInformation".
    std::string GetExtendedInformation() const;

    int32_t code = 0;
    std::string exceptionType;
};

}  // namespace Kestrelon::DeviceDriver::J4T
