// A build that watches over its callers.
#include <thread>

#include "tests/frame/FrameTest.h"

namespace J4Test {
namespace {

TEST_F(FrameTest, TwoThreadsAtOnceEndTheProcessByName)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    library.script["J4_KeyPressed"] = [] {
        std::thread([] { J4_IsConnected(); }).join();
        return 0;
    };
    EXPECT_DEATH(J4_KeyPressed(), "J4_IsConnected is called while J4_KeyPressed runs in another thread");
    std::thread([] { EXPECT_EQ(J4_IsConnected(), 0); }).join();
    library.script["J4_KeyPressed"] = [] { return J4_IsConnected(); };
    EXPECT_EQ(J4_KeyPressed(), 0) << "one after the other, and one within the other, they may be";
}

}  // namespace
}  // namespace J4Test
