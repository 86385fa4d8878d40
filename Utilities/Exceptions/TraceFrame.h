// The trace frame of a method: one macro behind a function-try-block, which adds the method's line to
// whatever passes and turns standard and foreign exceptions into the family's own.
#pragma once

#include <exception>
#include <string>

namespace Kestrelon::Utilities::Exceptions {

/// The text of one trace line: className "::" method "(): " file ":" line, with the file shortened to what
/// follows from its last "\src\".
std::string TraceEntry(const std::string& className, const std::string& method, const std::string& file, int line);

/// TraceEntry for a place in the code, the method taken from the compiler's own description of it.
std::string TraceEntryHere(const char* prettyFunction, const char* file, int line);

/// Throws the family's exception for a standard one; the exact run-time type decides, never a base class.
[[noreturn]] void RethrowStd(const std::string& entry, const std::exception& exception);

/// For use inside a catch clause: rethrows the exception in hand with the entry added to its trace.
[[noreturn]] void RethrowTraced(const std::string& entry);

/// For use inside a catch clause that passes failures over: missing memory is none of those, and goes on.
void RethrowOutOfMemory();

}  // namespace Kestrelon::Utilities::Exceptions

/// The trace entry of the place where it stands.
#define J4T_TRACE_HERE ::Kestrelon::Utilities::Exceptions::TraceEntryHere(__PRETTY_FUNCTION__, __FILE__, __LINE__)

/// Closes a function-try-block. Nothing is done for it unless something is thrown.
#define J4T_TRACE_FRAME \
    catch (...) { ::Kestrelon::Utilities::Exceptions::RethrowTraced(J4T_TRACE_HERE); }
