// The exception family over the standard exceptions, one class for each of them, and the few general
// classes above.
#pragma once

#include <new>
#include <stdexcept>

#include "Utilities/Exceptions/TraceableException.h"

namespace Kestrelon::Utilities::Exceptions {

class LogicException : public ExceptionAdapter<std::logic_error> {
    J4T_EXCEPTION_CONSTRUCTOR(LogicException, ExceptionAdapter<std::logic_error>)
};
class DomainException : public ExceptionAdapter<std::domain_error> {
    J4T_EXCEPTION_CONSTRUCTOR(DomainException, ExceptionAdapter<std::domain_error>)
};
class InvalidArgumentException : public ExceptionAdapter<std::invalid_argument> {
    J4T_EXCEPTION_CONSTRUCTOR(InvalidArgumentException, ExceptionAdapter<std::invalid_argument>)
};
class LengthException : public ExceptionAdapter<std::length_error> {
    J4T_EXCEPTION_CONSTRUCTOR(LengthException, ExceptionAdapter<std::length_error>)
};
class OutOfRangeException : public ExceptionAdapter<std::out_of_range> {
    J4T_EXCEPTION_CONSTRUCTOR(OutOfRangeException, ExceptionAdapter<std::out_of_range>)
};
class RuntimeException : public ExceptionAdapter<std::runtime_error> {
    J4T_EXCEPTION_CONSTRUCTOR(RuntimeException, ExceptionAdapter<std::runtime_error>)
};
class OverflowException : public ExceptionAdapter<std::overflow_error> {
    J4T_EXCEPTION_CONSTRUCTOR(OverflowException, ExceptionAdapter<std::overflow_error>)
};
class UnderflowException : public ExceptionAdapter<std::underflow_error> {
    J4T_EXCEPTION_CONSTRUCTOR(UnderflowException, ExceptionAdapter<std::underflow_error>)
};
class RangeException : public ExceptionAdapter<std::range_error> {
    J4T_EXCEPTION_CONSTRUCTOR(RangeException, ExceptionAdapter<std::range_error>)
};
class BadAllocException : public ExceptionAdapter<std::bad_alloc> {
    J4T_EXCEPTION_CONSTRUCTOR(BadAllocException, ExceptionAdapter<std::bad_alloc>)
};
class BadCastException : public ExceptionAdapter<std::bad_cast> {
    J4T_EXCEPTION_CONSTRUCTOR(BadCastException, ExceptionAdapter<std::bad_cast>)
};
class BadTypeidException : public ExceptionAdapter<std::bad_typeid> {
    J4T_EXCEPTION_CONSTRUCTOR(BadTypeidException, ExceptionAdapter<std::bad_typeid>)
};

class BusinessException : public DomainException {
    J4T_EXCEPTION_CONSTRUCTOR(BusinessException, DomainException)
};
class CalculationProblemException : public BusinessException {
    J4T_EXCEPTION_CONSTRUCTOR(CalculationProblemException, BusinessException)
};
class NullPointerException : public RuntimeException {
    J4T_EXCEPTION_CONSTRUCTOR(NullPointerException, RuntimeException)
};
class ResourceException : public RuntimeException {
    J4T_EXCEPTION_CONSTRUCTOR(ResourceException, RuntimeException)
};
class ResourceNotAvailableException : public ResourceException {
    J4T_EXCEPTION_CONSTRUCTOR(ResourceNotAvailableException, ResourceException)
};

}  // namespace Kestrelon::Utilities::Exceptions
