#include "Utilities/Exceptions/TraceFrame.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <stdexcept>
#include <string_view>
#include <typeinfo>

#include "Utilities/Exceptions/Exceptions.h"

namespace Kestrelon::Utilities::Exceptions {

namespace {

std::string ShortenedPath(std::string path)
{
    static constexpr std::string_view sourceFolder = "\\src\\";
    std::replace(path.begin(), path.end(), '/', '\\');
    if (path.size() < sourceFolder.size()) {
        return path;
    }
    const std::size_t found = path.rfind(sourceFolder, path.size() - sourceFolder.size());
    return found == std::string::npos ? path : path.substr(found);
}

/// The text before its last group in parentheses.
std::string_view WithoutLastGroup(std::string_view text)
{
    std::size_t open = text.rfind(')');
    for (int depth = 1; depth > 0 && open > 0;) {
        --open;
        depth += text[open] == ')' ? 1 : text[open] == '(' ? -1 : 0;
    }
    return text.substr(0, open);
}

/// "static int ns::C::M(const std::string&) const [with T = int]" becomes "ns::C::M", and so does
/// "void (* ns::C::M(int))(char)", a function that returns a pointer to a function.
std::string QualifiedName(std::string_view pretty)
{
    pretty = pretty.substr(0, pretty.find(" [with "));
    if (pretty.find("(* ") != std::string_view::npos) {
        pretty = WithoutLastGroup(pretty);
        pretty = pretty.substr(pretty.find("(* ") + 3, pretty.size() - pretty.find("(* ") - 4);
    }
    if (pretty.find(')') != std::string_view::npos) {
        pretty = WithoutLastGroup(pretty);
    }
    std::size_t begin = std::min(pretty.rfind("operator"), pretty.size());
    for (int depth = 0; begin > 0; --begin) {
        const char before = pretty[begin - 1];
        depth += before == '>' ? 1 : before == '<' ? -1 : 0;
        if (depth == 0 && (before == ' ' || before == '*' || before == '&')) {
            break;
        }
    }
    std::string name(pretty.substr(begin));
    const std::size_t abiTag = name.find("[abi:");
    return abiTag == std::string::npos ? name : name.substr(0, abiTag);
}

template <class Std, class Family>
void RethrowExact(const std::string& entry, const std::exception& exception)
{
    if (typeid(exception) == typeid(Std)) {
        throw Family(exception.what(), entry);
    }
}

}  // namespace

std::string TraceEntry(const std::string& className, const std::string& method, const std::string& file, int line)
{
    return className + "::" + method + "(): " + ShortenedPath(file) + ":" + std::to_string(line);
}

std::string TraceEntryHere(const char* prettyFunction, const char* file, int line)
{
    return TraceEntry(std::string(), QualifiedName(prettyFunction), file, line);
}

void RethrowStd(const std::string& entry, const std::exception& exception)
{
    RethrowExact<std::runtime_error, RuntimeException>(entry, exception);
    RethrowExact<std::overflow_error, OverflowException>(entry, exception);
    RethrowExact<std::underflow_error, UnderflowException>(entry, exception);
    RethrowExact<std::range_error, RangeException>(entry, exception);
    RethrowExact<std::logic_error, LogicException>(entry, exception);
    RethrowExact<std::domain_error, DomainException>(entry, exception);
    RethrowExact<std::invalid_argument, InvalidArgumentException>(entry, exception);
    RethrowExact<std::length_error, LengthException>(entry, exception);
    RethrowExact<std::out_of_range, OutOfRangeException>(entry, exception);
    RethrowExact<std::bad_alloc, BadAllocException>(entry, exception);
    RethrowExact<std::bad_typeid, BadTypeidException>(entry, exception);
    RethrowExact<std::bad_cast, BadCastException>(entry, exception);
    throw RuntimeException(std::string(typeid(exception).name()) + " " + exception.what(), entry);
}

void RethrowTraced(const std::string& entry)
{
    try {
        throw;
    } catch (TraceableException& exception) {
        exception.AddTrace(entry);
        throw;
    } catch (std::exception& exception) {
        RethrowStd(entry, exception);
    } catch (...) {
        throw RuntimeException("unkown exception caught", entry);
    }
}

void RethrowOutOfMemory()
{
    try {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        // Any other failure is the caller's to pass over.
    }
}

}  // namespace Kestrelon::Utilities::Exceptions
