// The trace through the library, the family of exceptions, and what an application gets of them.
#include <functional>
#include <new>
#include <sstream>
#include <typeinfo>
#include <utility>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "tests/unit/UnitTest.h"

using namespace Kestrelon::Utilities::Exceptions;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

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

/// What comes out of the stack when this goes in, with the lines of its trace.
template <class E>
std::string Traced(const E& exception, Strings* lines = nullptr)
{
    try {
        Stack<E>::Outermost({exception});
    } catch (const TraceableException& caught) {
        std::istringstream stream(caught.TraceText());
        for (std::string line; lines != nullptr && std::getline(stream, line);) {
            lines->push_back(line);
        }
        return PlainName(typeid(caught)) + ": " + caught.what();
    }
    return std::string();
}

TEST(Trace, ThreeCallsDeepAreThreeLinesDeepestFirst)
{
    Strings lines;
    EXPECT_EQ(Traced(FirmwareException("no"), &lines), "FirmwareException: no");
    const auto line = [](const std::string& method) {
        return AllOf(StartsWith("\t::J4Test::Stack<"), HasSubstr(">::" + method + "(): "),
                     HasSubstr("ExceptionsTest.cpp:"), Not(HasSubstr("/")));
    };
    EXPECT_THAT(lines, ElementsAre(line("Deepest"), line("Middle"), line("Outermost")));
}

struct OwnError : std::runtime_error {
    using runtime_error::runtime_error;
};

struct OwnRangeError : std::out_of_range {
    using out_of_range::out_of_range;
};

TEST(Trace, StandardExceptionsBecomeTheFamilysByTheirExactType)
{
    EXPECT_EQ(Traced(std::runtime_error("t")), "RuntimeException: t");
    EXPECT_EQ(Traced(std::overflow_error("t")), "OverflowException: t");
    EXPECT_EQ(Traced(std::underflow_error("t")), "UnderflowException: t");
    EXPECT_EQ(Traced(std::range_error("t")), "RangeException: t");
    EXPECT_EQ(Traced(std::logic_error("t")), "LogicException: t");
    EXPECT_EQ(Traced(std::domain_error("t")), "DomainException: t");
    EXPECT_EQ(Traced(std::invalid_argument("t")), "InvalidArgumentException: t");
    EXPECT_EQ(Traced(std::length_error("t")), "LengthException: t");
    EXPECT_EQ(Traced(std::out_of_range("t")), "OutOfRangeException: t");
    EXPECT_EQ(Traced(std::bad_alloc()), std::string("BadAllocException: ") + std::bad_alloc().what());
    EXPECT_EQ(Traced(std::bad_typeid()), std::string("BadTypeidException: ") + std::bad_typeid().what());
    EXPECT_EQ(Traced(std::bad_cast()), std::string("BadCastException: ") + std::bad_cast().what());
    const std::string other = "RuntimeException: ";
    EXPECT_EQ(Traced(OwnError("t")), other + typeid(OwnError).name() + " t");
    EXPECT_EQ(Traced(OwnRangeError("t")), other + typeid(OwnRangeError).name() + " t");
    Strings lines;
    EXPECT_EQ(Traced(42, &lines), "RuntimeException: unkown exception caught");
    EXPECT_EQ(lines.size(), 3u);
}

TEST(Trace, PathsStartAtTheirLastSourceFolder)
{
    for (const auto& [path, expected] :
         std::vector<std::pair<std::string, std::string>>{{"..\\..\\src\\j4TableSDK", "\\src\\j4TableSDK"},
                                                          {"./src/Flash/Data.cpp", "\\src\\Flash\\Data.cpp"},
                                                          {"c:\\src\\old\\src\\new.cpp", "\\src\\new.cpp"},
                                                          {"/src/", "\\src\\"},
                                                          {"a/src/", "\\src\\"},
                                                          {"src/x.cpp", "src\\x.cpp"},
                                                          {"x/srcs/y.cpp", "x\\srcs\\y.cpp"},
                                                          {"x/SRC/y.cpp", "x\\SRC\\y.cpp"},
                                                          {"src", "src"},
                                                          {"", ""}}) {
        EXPECT_EQ(TraceEntry("", "N::C::M", path, 362), "::N::C::M(): " + expected + ":362");
    }
    EXPECT_EQ(TraceEntry("C", "M", "f", 1), "C::M(): f:1");
}

TEST(Trace, MethodNamesComeOutOfTheCompilersDescription)
{
    for (const auto& [pretty, method] : std::vector<std::pair<const char*, std::string>>{
             {"int f()", "f"},
             {"void N::C::M(const std::string&) const", "N::C::M"},
             {"N::C::C(uint16_t)", "N::C::C"},
             {"virtual N::C::~C()", "N::C::~C"},
             {"static std::vector<unsigned char> N::C::M(std::map<int, long int>)", "N::C::M"},
             {"const T& N::C<T>::M(void (*)(int)) [with T = std::pair<int, int>]", "N::C<T>::M"},
             {"T* N::P<T>::operator->() const [with T = int]", "N::P<T>::operator->"},
             {"T& N::P<T>::operator*() const [with T = int]", "N::P<T>::operator*"},
             {"N::C& N::C::operator+=(const N::C&)", "N::C::operator+="},
             {"std::string N::C::Text[abi:cxx11](int)", "N::C::Text"}}) {
        EXPECT_EQ(TraceEntryHere(pretty, "f", 1), "::" + method + "(): f:1") << pretty;
    }
}

TEST(Trace, WhatGivesTheTraceOnlyOnDemand)
{
    TableException exception("t", "");
    EXPECT_EQ(exception.TraceText(), "");
    exception.AddTrace("a");
    exception.AddTrace("");  // makes no line
    exception.AddTrace("b");
    EXPECT_EQ(exception.TraceText(), "\ta\n\tb");
    EXPECT_EQ(exception.FullText(), "t\n\ta\n\tb");
    EXPECT_STREQ(exception.what(), "t");
    TraceableException::traceInWhat = true;
    EXPECT_STREQ(exception.what(), "t\n\ta\n\tb");
    EXPECT_EQ(exception.text(), std::string("t"));
    TraceableException::traceInWhat = false;
    EXPECT_STREQ(exception.what(), "t");
}

}  // namespace
}  // namespace J4Test
