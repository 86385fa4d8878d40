// An application as the tests write it: it registers its two handlers with the library and keeps what they
// were told.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "c_sdk/include/j4tavla.h"

namespace J4Test {

struct Failure {
    std::string function;
    int32_t status;
    std::string message;
    bool operator==(const Failure&) const = default;
};

struct DeviceMessage {
    int32_t message;
    std::string text;
    bool operator==(const DeviceMessage&) const = default;
};

struct Application {
    static inline std::vector<Failure> failures;
    static inline std::vector<DeviceMessage> messages;

    static void OnError(const char* function, int32_t status, const char* message)
    {
        failures.push_back({function, status, message});
    }

    static void OnDeviceMessage(int32_t message, const char* text) { messages.push_back({message, text}); }

    static void RegisterHandlers()
    {
        J4_RegisterErrorHandler(OnError);
        J4_RegisterDeviceMessageHandler(OnDeviceMessage);
    }

    /// As after the start of a process: no handlers, no table, and the instrument's library loaded anew.
    static void StartOver()
    {
        J4_RegisterErrorHandler(nullptr);
        J4_RegisterDeviceMessageHandler(nullptr);
        J4_SetOption("J4TUseableWithoutJ4", "no");
        J4_SetOption("J4TSerialPortLogFile", "no");
        J4_SetOption("Reset", "All");
        failures.clear();
        messages.clear();
    }
};

inline std::string GetOption(const std::string& key) { return J4_GetOption(key.c_str()); }

inline J4_Result SetOption(const std::string& key, const std::string& value)
{
    return J4_SetOption(key.c_str(), value.c_str());
}

inline std::ostream& operator<<(std::ostream& stream, const Failure& failure)
{
    return stream << failure.function << " " << failure.status << " " << failure.message;
}

/// What tests of the exported functions expect of them.
struct ApplicationTest : testing::Test {
    /// The one failure that the application heard of, which is also what the call returned.
    static void ExpectFailure(J4_Result result, const Failure& expected)
    {
        EXPECT_EQ(result, expected.status);
        EXPECT_EQ(Application::failures, std::vector<Failure>{expected});
        EXPECT_EQ(GetOption("LastError"), expected.message);
        Application::failures.clear();
    }

    static void ExpectPosition(float x, float y, float tolerance = 0.0f)
    {
        float foundX = -1.0f;
        float foundY = -1.0f;
        EXPECT_EQ(J4_GetPosition(&foundX, &foundY), 0) << GetOption("LastError");
        EXPECT_NEAR(foundX, x, tolerance);
        EXPECT_NEAR(foundY, y, tolerance);
    }
};

}  // namespace J4Test
