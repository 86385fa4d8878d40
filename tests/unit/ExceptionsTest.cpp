#include <gtest/gtest.h>

#include <new>
#include <sstream>

#include "Utilities/Exceptions/SDKError.h"
#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "tests/support/Thrown.h"

using namespace Kestrelon::Utilities::Exceptions;
using Kestrelon::DeviceDriver::J4T::SDKError;

namespace J4Test {

/// Three methods on top of one another, the deepest of which throws.
template <class E>
struct Stack {
    const E exception;

    void Deepest(int) const
    try {
        throw exception;
    }
    J4T_TRACE_FRAME

    int Middle(const std::string&) const
    try {
        Deepest(1);
        return 0;
    }
    J4T_TRACE_FRAME

    static void Outermost(const Stack& stack)
    try {
        stack.Middle("x");
    }
    J4T_TRACE_FRAME
};

namespace {

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// What comes out of the stack when this goes in.
template <class E>
std::string Traced(const E& exception, std::string& trace)
{
    try {
        Stack<E>::Outermost({exception});
    } catch (const TraceableException& caught) {
        trace = caught.TraceText();
        return PlainName(typeid(caught)) + ": " + caught.what();
    }
    return std::string();
}

TEST(Trace, ThreeCallsDeepAreThreeLinesDeepestFirst)
{
    std::string trace;
    EXPECT_EQ(Traced(FirmwareException("no"), trace), "FirmwareException: no");
    const std::vector<std::string> lines = Lines(trace);
    ASSERT_EQ(lines.size(), 3u) << trace;
    const char* const methods[] = {"Deepest", "Middle", "Outermost"};
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].rfind("\t::J4Test::Stack<", 0), 0u) << lines[i];
        EXPECT_NE(lines[i].find(std::string(">::") + methods[i] + "(): "), std::string::npos) << lines[i];
        EXPECT_NE(lines[i].find("ExceptionsTest.cpp:"), std::string::npos) << lines[i];
        EXPECT_EQ(lines[i].find('/'), std::string::npos) << lines[i];
    }
}

struct OwnError : std::runtime_error {
    using runtime_error::runtime_error;
};

struct OwnRangeError : std::out_of_range {
    using out_of_range::out_of_range;
};

TEST(Trace, StandardExceptionsBecomeTheFamilysByTheirExactType)
{
    std::string trace;
    EXPECT_EQ(Traced(std::runtime_error("t"), trace), "RuntimeException: t");
    EXPECT_EQ(Traced(std::overflow_error("t"), trace), "OverflowException: t");
    EXPECT_EQ(Traced(std::underflow_error("t"), trace), "UnderflowException: t");
    EXPECT_EQ(Traced(std::range_error("t"), trace), "RangeException: t");
    EXPECT_EQ(Traced(std::logic_error("t"), trace), "LogicException: t");
    EXPECT_EQ(Traced(std::domain_error("t"), trace), "DomainException: t");
    EXPECT_EQ(Traced(std::invalid_argument("t"), trace), "InvalidArgumentException: t");
    EXPECT_EQ(Traced(std::length_error("t"), trace), "LengthException: t");
    EXPECT_EQ(Traced(std::out_of_range("t"), trace), "OutOfRangeException: t");
    EXPECT_EQ(Traced(std::bad_alloc(), trace), std::string("BadAllocException: ") + std::bad_alloc().what());
    EXPECT_EQ(Traced(std::bad_typeid(), trace), std::string("BadTypeidException: ") + std::bad_typeid().what());
    EXPECT_EQ(Traced(std::bad_cast(), trace), std::string("BadCastException: ") + std::bad_cast().what());
    const std::string other = "RuntimeException: ";
    EXPECT_EQ(Traced(OwnError("t"), trace), other + typeid(OwnError).name() + " t");
    EXPECT_EQ(Traced(OwnRangeError("t"), trace), other + typeid(OwnRangeError).name() + " t");
    EXPECT_EQ(Traced(42, trace), "RuntimeException: unkown exception caught");
    EXPECT_EQ(Lines(trace).size(), 3u) << trace;
}

TEST(Trace, PathsStartAtTheirLastSourceFolder)
{
    const struct {
        const char* path;
        const char* expected;
    } cases[] = {
        {"..\\..\\src\\j4TableSDK", "\\src\\j4TableSDK"},
        {"./src/Flash/Data.cpp", "\\src\\Flash\\Data.cpp"},
        {"c:\\src\\old\\src\\new.cpp", "\\src\\new.cpp"},
        {"/src/", "\\src\\"},
        {"a/src/", "\\src\\"},
        {"src/x.cpp", "src\\x.cpp"},
        {"x/srcs/y.cpp", "x\\srcs\\y.cpp"},
        {"x/SRC/y.cpp", "x\\SRC\\y.cpp"},
        {"src", "src"},
        {"", ""},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(TraceEntry("", "N::C::M", test.path, 362), std::string("::N::C::M(): ") + test.expected + ":362");
    }
    EXPECT_EQ(TraceEntry("C", "M", "f", 1), "C::M(): f:1");
}

TEST(Trace, MethodNamesComeOutOfTheCompilersDescription)
{
    const struct {
        const char* pretty;
        const char* method;
    } cases[] = {
        {"int f()", "f"},
        {"void N::C::M(const std::string&) const", "N::C::M"},
        {"N::C::C(uint16_t)", "N::C::C"},
        {"virtual N::C::~C()", "N::C::~C"},
        {"static std::vector<unsigned char> N::C::M(std::map<int, long int>)", "N::C::M"},
        {"const T& N::C<T>::M(void (*)(int)) [with T = std::pair<int, int>]", "N::C<T>::M"},
        {"T* N::P<T>::operator->() const [with T = int]", "N::P<T>::operator->"},
        {"T& N::P<T>::operator*() const [with T = int]", "N::P<T>::operator*"},
        {"N::C& N::C::operator+=(const N::C&)", "N::C::operator+="},
        {"std::string N::C::Text[abi:cxx11](int)", "N::C::Text"},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(TraceEntryHere(test.pretty, "f", 1), std::string("::") + test.method + "(): f:1") << test.pretty;
    }
}

TEST(Trace, EmptyEntriesMakeNoLine)
{
    TableException exception("t", "");
    EXPECT_EQ(exception.TraceText(), "");
    exception.AddTrace("a");
    exception.AddTrace("");
    exception.AddTrace("b");
    EXPECT_EQ(exception.TraceText(), "\ta\n\tb");
    EXPECT_EQ(exception.FullText(), "t\n\ta\n\tb");
    EXPECT_STREQ(exception.what(), "t");
}

TEST(Trace, WhatGivesTheTraceOnlyOnDemand)
{
    const TableException exception("t", "a");
    TraceableException::traceInWhat = true;
    const std::string full = exception.what();
    const std::string alone = exception.text();
    TraceableException::traceInWhat = false;
    EXPECT_EQ(full, "t\n\ta");
    EXPECT_EQ(alone, "t");
    EXPECT_STREQ(exception.what(), "t");
}

TEST(SdkError, CarriesStatusTypeAndTrace)
{
    EXPECT_EQ(SDKError().GetExtendedInformation(), "no error\n");
    EXPECT_EQ(SDKError().code, 0);
    EXPECT_EQ(SDKError("J4_Scan", 7, "broken", "a").GetExtendedInformation(), "J4_Scan failed: broken\n\ta");

    FirmwareException caught("locked", "a");
    caught.AddTrace("b");
    const SDKError error(9, static_cast<const RuntimeException&>(caught));
    const SDKError copy(error);
    SDKError assigned;
    assigned = copy;
    EXPECT_EQ(assigned.code, 9);
    EXPECT_STREQ(assigned.what(), "locked");
    EXPECT_EQ(assigned.GetExtendedInformation(),
              std::string("locked\n") + typeid(FirmwareException).name() + "\n\ta\n\tb");
}

}  // namespace
}  // namespace J4Test
