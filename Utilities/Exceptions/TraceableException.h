// The root of the exception family: an exception that gathers one trace line from every method it passes,
// so that the text an application reads shows the whole way up the stack.
#pragma once

#include <exception>
#include <list>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace Kestrelon::Utilities::Exceptions {

/// What caused an exception: type, trace and message of the earlier one.
class Cause : public std::exception {
public:
    Cause() = default;
    Cause(const std::type_info& type, const std::list<std::string>& trace, const std::string& message);

    const char* what() const noexcept override { return message.c_str(); }
    const char* TypeName() const { return type->name(); }
    const std::list<std::string>& Trace() const { return trace; }

private:
    const std::type_info* type = &typeid(void);
    std::list<std::string> trace;
    std::string message;
};

/// Interface of every exception with a trace.
class TraceableException {
public:
    virtual ~TraceableException() = default;
    virtual const char* what() const noexcept = 0;
    /// The message alone, whatever what() is set to give.
    virtual const std::string& text() const noexcept = 0;

    /// Appends the entry of a method that the exception passes.
    void AddTrace(const std::string& entry) { trace.push_back(entry); }

    /// The non-empty trace entries, oldest first, each behind a tab, separated by line feeds, and the cause.
    std::string TraceText() const;

    /// Makes what() of all exceptions give the full text; off unless a debugging build sets it.
    static bool traceInWhat;

protected:
    TraceableException() = default;
    TraceableException(const TraceableException&) = default;
    TraceableException& operator=(const TraceableException&) = default;

    std::list<std::string> trace;
    Cause cause;
    bool noCause = true;
};

class TraceableExceptionAdapter : public TraceableException {
protected:
    explicit TraceableExceptionAdapter(const std::string& firstTraceEntry) { AddTrace(firstTraceEntry); }
    TraceableExceptionAdapter(const TraceableExceptionAdapter&) = default;
    TraceableExceptionAdapter& operator=(const TraceableExceptionAdapter&) = default;
};

/// Gives a standard exception, with or without a message of its own, the family's message.
template <class E>
class StdExceptionAdapter : public E {
public:
    const char* what() const noexcept override { return message.c_str(); }

protected:
    explicit StdExceptionAdapter(const std::string& message) : E(MakeBase(message)), message(message) {}

    std::string message;

private:
    static E MakeBase(const std::string& message)
    {
        if constexpr (std::is_constructible_v<E, const std::string&>) {
            return E(message);
        } else {
            return E();
        }
    }
};

template <class E>
class ExceptionAdapter : public StdExceptionAdapter<E>, public virtual TraceableExceptionAdapter {
public:
    const char* what() const noexcept override
    {
        if (!traceInWhat) {
            return this->message.c_str();
        }
        try {
            fullText = FullText();
            return fullText.c_str();
        } catch (const std::bad_alloc&) {
            return this->message.c_str();
        }
    }

    const std::string& text() const noexcept override { return this->message; }

    /// The message, a line feed, the trace text.
    std::string FullText() const { return this->message + "\n" + TraceText(); }

protected:
    ExceptionAdapter(const std::string& message, const std::string& firstTraceEntry)
        : TraceableExceptionAdapter(firstTraceEntry), StdExceptionAdapter<E>(message)
    {}
    ExceptionAdapter(const ExceptionAdapter&) = default;
    ExceptionAdapter& operator=(const ExceptionAdapter&) = default;

private:
    mutable std::string fullText;
};

}  // namespace Kestrelon::Utilities::Exceptions

/// Declares the constructor of a class of the family. The trace adapter is a virtual base, so that each
/// most derived class has to construct it; the first entry stays empty where the throwing method has a
/// trace frame, which adds the method's line itself.
#define J4T_EXCEPTION_CONSTRUCTOR(Name, Base)                                                     \
public:                                                                                           \
    explicit Name(const std::string& message, const std::string& firstTraceEntry = std::string()) \
        : ::Kestrelon::Utilities::Exceptions::TraceableExceptionAdapter(firstTraceEntry),         \
          Base(message, firstTraceEntry)                                                          \
    {}
