// What the tests of one layer share: short names, texts and bytes.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/Thrown.h"

namespace J4Test {

using Bytes = std::vector<uint8_t>;
using Sleeps = std::vector<uint32_t>;  ///< pauses of the library, in milliseconds
using Strings = std::vector<std::string>;

/// So many times the same digits.
inline std::string Repeated(std::size_t count, const std::string& digits)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += digits;
    }
    return text;
}

}  // namespace J4Test
