// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The functions that libFuzzer calls.

#include "Fuzzing.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

// NOLINTBEGIN(readability-identifier-naming): libFuzzer's names
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    testing::GTEST_FLAG(throw_on_failure) = true;
    testing::InitGoogleTest(argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    return 0;
}
// NOLINTEND(readability-identifier-naming)
