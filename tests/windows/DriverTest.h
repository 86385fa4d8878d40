// The ground of the tests against the kernel driver's stand-in: one driver for the whole program; for each
// test a fresh bench, one table plugged in, and nothing open before and after.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/windows/KernelDriver.h"
#include "tests/windows/Relay.h"

namespace J4Test {

/// The folder of the test program, with a backslash at its end.
std::string ProgramFolder();

KernelDriver& Driver();
Relay& World();

/// One table, plugged in.
void StartWorld();

/// For its life nobody here listens to the driver: another program does.
struct WithoutWorld {
    WithoutWorld();
    ~WithoutWorld();
    WithoutWorld(const WithoutWorld&) = delete;
    WithoutWorld& operator=(const WithoutWorld&) = delete;
};

template <class Base>
struct OverDriver : Base {
    void SetUp() override { StartWorld(); }
    void TearDown() override
    {
        EXPECT_TRUE(World().WaitUntilClosed()) << "a handle of the driver is still open";
        EXPECT_EQ(World().FaultsLeft(), 0u) << "a fault was not reached";
    }
};

}  // namespace J4Test
