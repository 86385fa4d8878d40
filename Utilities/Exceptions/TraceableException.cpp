#include "Utilities/Exceptions/TraceableException.h"

namespace Kestrelon::Utilities::Exceptions {

bool TraceableException::traceInWhat = false;

Cause::Cause(const std::type_info& type, const std::list<std::string>& trace, const std::string& message)
    : type(&type), trace(trace), message(message)
{}

std::string TraceableException::TraceText() const
{
    std::string result;
    for (const std::string& entry : trace) {
        if (!entry.empty()) {
            result += result.empty() ? "\t" : "\n\t";
            result += entry;
        }
    }
    if (!noCause) {
        result += std::string("\ncaused by: ") + cause.TypeName() + ": " + cause.what() + "\n";
        for (const std::string& entry : cause.Trace()) {
            result += "\t" + entry + "\n";
        }
    }
    return result;
}

}  // namespace Kestrelon::Utilities::Exceptions
