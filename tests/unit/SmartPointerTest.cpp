#include <gtest/gtest.h>

#include "Utilities/Tools/SmartPointer.h"
#include "tests/support/Thrown.h"

namespace J4Test {
namespace {

using Kestrelon::Utilities::Tools::SmartPointer;

struct Counted {
    static inline int alive = 0;
    explicit Counted(int value) : value(value) { ++alive; }
    ~Counted() { --alive; }
    int value;
};

TEST(SmartPointer, TheLastReferenceDeletes)
{
    SmartPointer<Counted> first(new Counted(1));
    {
        const SmartPointer<Counted> second(first);
        SmartPointer<Counted> third;
        third = second;
        third = *&third;
        EXPECT_EQ(third->value, 1);
        first = SmartPointer<Counted>(new Counted(2));
        EXPECT_EQ(Counted::alive, 2);
    }
    EXPECT_EQ(Counted::alive, 1);
    EXPECT_EQ((*first).value, 2);
    SmartPointer<Counted> last(first);
    first = 0;
    EXPECT_TRUE(first.IsNull());
    EXPECT_EQ(Counted::alive, 1);
    last = 0;
    EXPECT_EQ(Counted::alive, 0);
    last = 0;
}

TEST(SmartPointer, OnlyZeroIsAssignable)
{
    SmartPointer<Counted> pointer(new Counted(1));
    EXPECT_EQ(Thrown([&] { pointer = 1; }), "invalid_argument: SmartPointer<T>& operator =(long) argument was != Zero");
    EXPECT_EQ(pointer->value, 1);
}

TEST(SmartPointer, ANullAccessNamesTypeAndPlace)
{
    const SmartPointer<Counted> null(static_cast<Counted*>(nullptr));
    const SmartPointer<Counted> copy(null);
    const std::string text = std::string("accessed null pointer (") + typeid(Counted).name() + ")";
    EXPECT_EQ(Thrown([&] { (void)copy->value; }), "NullPointerException: " + text);
    EXPECT_EQ(Thrown([&] { (void)*copy; }), "NullPointerException: " + text);
    try {
        (void)copy->value;
        FAIL();
    } catch (const Kestrelon::Utilities::Exceptions::TraceableException& exception) {
        const std::string trace = exception.TraceText();
        EXPECT_NE(trace.find("\t::Kestrelon::Utilities::Tools::SmartPointer<"), std::string::npos) << trace;
        EXPECT_NE(trace.find("::operator->(): "), std::string::npos) << trace;
        EXPECT_EQ(trace.find('\n'), std::string::npos) << trace;
    }
}

/// Releases the pointer that owns it while it is destroyed.
struct Reentrant {
    SmartPointer<Reentrant>* owner;
    bool* sawNull;
    ~Reentrant()
    {
        *sawNull = owner->IsNull();
        *owner = 0;
    }
};

TEST(SmartPointer, IsNullBeforeItsObjectGoes)
{
    bool sawNull = false;
    SmartPointer<Reentrant> pointer;
    pointer = SmartPointer<Reentrant>(new Reentrant{&pointer, &sawNull});
    pointer = 0;
    EXPECT_TRUE(sawNull);
}

}  // namespace
}  // namespace J4Test
