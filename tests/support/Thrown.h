// What a piece of code throws, as one text that fits into a table of cases.
#pragma once

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <string>
#include <typeinfo>

namespace J4Test {

/// Name of a type without its namespaces.
inline std::string PlainName(const std::type_info& type)
{
    int status = 0;
    char* const demangled = abi::__cxa_demangle(type.name(), nullptr, nullptr, &status);
    const std::string name = demangled != nullptr ? demangled : type.name();
    std::free(demangled);
    const std::size_t colons = name.rfind("::");
    return colons == std::string::npos ? name : name.substr(colons + 2);
}

/// "Type: text" of the exception, empty when there is none.
template <class Action>
std::string Thrown(Action action)
{
    try {
        action();
    } catch (const std::exception& exception) {
        return PlainName(typeid(exception)) + ": " + exception.what();
    }
    return std::string();
}

}  // namespace J4Test
