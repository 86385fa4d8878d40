// The frame in which every exported function runs: it clears the last error, records and validates the
// call, runs it, and turns whatever is thrown into a stored status and a call of the application's handler.
#pragma once

#include <string>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "c_sdk/include/j4tavla.h"
#include "c_sdk/src/CallGuard.h"
#include "c_sdk/src/CallTrace.h"
#include "c_sdk/src/ContextJ4T.h"

namespace Kestrelon::DeviceDriver::J4T {

class Sandbox {
public:
    /// The exported function that a frame belongs to.
    struct Site {
        const char* name;
        const char* file;
        int line;
    };

    /// Runs one exported call. Failures are reported and stored, and do not leave it unless the instrument's
    /// library keeps the context that has to store them from being made.
    /// @return false when there was no memory for a context
    template <class Operation>
    static bool Run(const Site& site, const ExportParameters& parameters, Operation operation)
    {
        return Run(site, parameters, operation, [](const J4LibraryException&) { throw; });
    }

    /// @param onLibraryFailure  called with a J4LibraryException instead of the ladder
    template <class Operation, class LibraryFailure>
    static bool Run(const Site& site, const ExportParameters& parameters, Operation operation,
                    LibraryFailure onLibraryFailure)
    {
        [[maybe_unused]] const ExportGuard guard(site.name);
        CallTrace::Begin(site.name, parameters);
        try {
            try {
                Enter(site.name, parameters);
                operation();
            } catch (const J4LibraryException& exception) {
                onLibraryFailure(exception);
            } catch (...) {
                Utilities::Exceptions::RethrowTraced(
                    Utilities::Exceptions::TraceEntry(std::string(), site.name, site.file, site.line));
            }
        } catch (...) {
            return ReportException(site.name);
        }
        return true;
    }

    /// Run, and the status that it stored.
    template <class Operation>
    static J4_Result RunForStatus(const Site& site, const ExportParameters& parameters, Operation operation)
    {
        [[maybe_unused]] const ExportGuard guard(site.name);
        const J4_Result status = Run(site, parameters, operation) ? StoredStatus() : J4_Result{J4_ResultFrameFailure};
        CallTrace::EndWithStatus(site.name, status);
        return status;
    }

private:
    static void Enter(const char* name, const ExportParameters& parameters);
    static bool ReportException(const char* name);
    static J4_Result StoredStatus();
};

}  // namespace Kestrelon::DeviceDriver::J4T

/// The Site of the exported function in which it stands.
#define J4T_EXPORT_SITE (::Kestrelon::DeviceDriver::J4T::Sandbox::Site{__func__, __FILE__, __LINE__})
