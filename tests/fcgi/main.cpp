// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// A process listens only once, so each test of a listener needs a process of its own. With names of
// tests as arguments, this program forks for each of them, one after another. Under valgrind that
// is much faster than starting the program again, because valgrind translates it anew each time.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>

#include <sys/wait.h>
#include <unistd.h>

namespace {

bool passesInAProcessOfItsOwn(const char* name)
{
    const pid_t child = ::fork();
    if (child == 0) {
        testing::GTEST_FLAG(filter) = name;
        std::exit(RUN_ALL_TESTS());
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && status == 0;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    testing::InitGoogleMock(&argumentCount, arguments);
    if (argumentCount == 1) {
        return RUN_ALL_TESTS();
    }
    int failures = 0;
    for (int index = 1; index < argumentCount; ++index) {
        if (!passesInAProcessOfItsOwn(arguments[index])) {
            std::cerr << arguments[index] << " failed\n";
            ++failures;
        }
    }
    return failures == 0 ? 0 : 1;
}
