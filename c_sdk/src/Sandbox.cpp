#include "c_sdk/src/Sandbox.h"

#include <cstdint>
#include <exception>
#include <string>
#include <typeinfo>

#include "Utilities/Exceptions/Exceptions.h"
#include "Utilities/Exceptions/SDKError.h"
#include "Utilities/Tools/StaticObject.h"

namespace Kestrelon::DeviceDriver::J4T {

using Utilities::Exceptions::ResourceException;
using Utilities::Exceptions::RuntimeException;

namespace {

void Report(const char* name, const SDKError& error) { ContextJ4T::Instance()->sdk->ReportError(name, error); }

void Report(const char* name, int32_t code, const RuntimeException& caught) { Report(name, SDKError(code, caught)); }

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
void Sandbox::ReportException(const char* name)
{
    try {
        throw;
    } catch (const PositionNotReachedException& exception) {
        Report(name, J4_ResultPositionNotReached, exception);
    } catch (const IllegalPositionException& exception) {
        Report(name, J4_ResultIllegalPosition, exception);
    } catch (const GeneralCommunicationException& exception) {
        Report(name, J4_ResultDeviceNotConnected, exception);
    } catch (const CommunicationTimeoutException& exception) {
        Report(name, J4_ResultDeviceFault, exception);
    } catch (const CommunicationDataException& exception) {
        Report(name, J4_ResultDeviceFault, exception);
    } catch (const CommunicationException& exception) {
        Report(name, J4_ResultDeviceNotConnected, exception);
    } catch (const DeviceErrorException& exception) {
        Report(name, J4_ResultDeviceFault, exception);
    } catch (const J4NotConnectedException& exception) {
        Report(name, J4_ResultSpectrophotometerNotConnected, exception);
    } catch (const J4CalibrationFailedException& exception) {
        Report(name, J4_ResultNotCalibrated, exception);
    } catch (const WhiteBaseException& exception) {
        Report(name, J4_ResultWhiteBase, exception);
    } catch (const EEPromException& exception) {
        Report(name, J4_ResultDeviceFault, exception);
    } catch (const J4LibraryException&) {
        // Without the instrument's library there is no context that could hold a report.
    } catch (const ResourceException& exception) {
        Report(name, J4_ResultResourceFault, exception);
    } catch (const SDKError& exception) {
        Report(name, exception);
    } catch (const std::exception& exception) {
        const std::string text = std::string(exception.what()) + "\n" + typeid(exception).name() + "\n";
        Report(name, SDKError(J4_ResultException, text, std::string()));
    } catch (...) {
        Report(name, SDKError(J4_ResultException, "Unknown Exception occured", std::string()));
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
