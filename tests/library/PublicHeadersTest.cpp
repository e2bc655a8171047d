// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

// That each header compiles alone is shown by compiling: see CMakeLists.txt.

TEST(PublicHeaders, AreAllInstalled)
{
    EXPECT_STREQ(BWA_HEADERS_NOT_INSTALLED, "");
}

TEST(PublicHeaders, AreAllInTheHeaderOfTheirLibrary)
{
    EXPECT_STREQ(BWA_HEADERS_NOT_IN_UMBRELLA, "");
}

TEST(PublicHeaders, AreAllThere)
{
    EXPECT_GT(BWA_PUBLIC_HEADER_COUNT, 0);
}
