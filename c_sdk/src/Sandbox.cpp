#include "c_sdk/src/Sandbox.h"

#include <cstdint>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <typeinfo>

#include "Utilities/Exceptions/Exceptions.h"
#include "Utilities/Exceptions/SDKError.h"
#include "Utilities/Tools/StaticObject.h"

namespace Kestrelon::DeviceDriver::J4T {

using Utilities::Exceptions::ResourceException;
using Utilities::Exceptions::RuntimeException;

namespace {

/// Reports what build gives, an SDKError, or that there was no memory to make it.
/// @return false when there is no memory for a context either
template <class Build>
bool Report(const char* name, Build build)
{
    std::optional<SDKError> error;
    try {
        error.emplace(build());
    } catch (const std::bad_alloc&) {
        // Reported below.
    }
    j4TableSDK* sdk = nullptr;
    try {
        sdk = &*ContextJ4T::Instance()->sdk;
    } catch (const std::bad_alloc&) {
        return false;
    }
    sdk->ReportError(name, error ? &*error : nullptr);
    return true;
}

bool Report(const char* name, int32_t code, const RuntimeException& caught)
{
    return Report(name, [&] { return SDKError(code, caught); });
}

}  // namespace

void Sandbox::Enter(const char* name, const ExportParameters& parameters)
{
    // Assigning from one kept object reuses the storage of the last error, so that a good call allocates nothing.
    const SDKError& noError = Utilities::Tools::StaticObject<[] { return SDKError(); }>::Get();
    ContextJ4T::Instance()->sdk->lastError = noError;
    ContextJ4T::Instance()->name = name;
    ContextJ4T::Instance()->parameters = parameters;
    ContextJ4T::Instance()->Validate();
}

/// The one place where exceptions become statuses. Derived classes stand before their bases, and SDKError, a
/// RuntimeException, keeps its own code.
bool Sandbox::ReportException(const char* name)
{
    try {
        throw;
    } catch (const PositionNotReachedException& exception) {
        return Report(name, J4_ResultPositionNotReached, exception);
    } catch (const IllegalPositionException& exception) {
        return Report(name, J4_ResultIllegalPosition, exception);
    } catch (const GeneralCommunicationException& exception) {
        return Report(name, J4_ResultDeviceNotConnected, exception);
    } catch (const CommunicationTimeoutException& exception) {
        return Report(name, J4_ResultDeviceFault, exception);
    } catch (const CommunicationDataException& exception) {
        return Report(name, J4_ResultDeviceFault, exception);
    } catch (const CommunicationException& exception) {
        return Report(name, J4_ResultDeviceNotConnected, exception);
    } catch (const DeviceErrorException& exception) {
        return Report(name, J4_ResultDeviceFault, exception);
    } catch (const J4NotConnectedException& exception) {
        return Report(name, J4_ResultSpectrophotometerNotConnected, exception);
    } catch (const J4CalibrationFailedException& exception) {
        return Report(name, J4_ResultNotCalibrated, exception);
    } catch (const WhiteBaseException& exception) {
        return Report(name, J4_ResultWhiteBase, exception);
    } catch (const EEPromException& exception) {
        return Report(name, J4_ResultDeviceFault, exception);
    } catch (const J4LibraryException&) {
        // Without the instrument's library there is no context that could hold a report.
        return true;
    } catch (const ResourceException& exception) {
        return Report(name, J4_ResultResourceFault, exception);
    } catch (const SDKError& exception) {
        return Report(name, [&] { return exception; });
    } catch (const std::exception& exception) {
        return Report(name, [&] {
            const std::string text = std::string(exception.what()) + "\n" + typeid(exception).name() + "\n";
            return SDKError(J4_ResultException, text, std::string());
        });
    } catch (...) {
        return Report(name, [] { return SDKError(J4_ResultException, "Unknown Exception occured", std::string()); });
    }
}

J4_Result Sandbox::StoredStatus()
{
    try {
        return ContextJ4T::Instance()->sdk->lastError.code;
    } catch (...) {
        return J4_ResultFrameFailure;
    }
}

}  // namespace Kestrelon::DeviceDriver::J4T
