# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2154

# Builds and runs programs against an installed library. Sourced after lib.sh by test-installed and
# test-packages.

consumer=$root/tests/built/consumer

# expect_greeting PROGRAM LIBRARIES
expect_greeting()
{
    local greeting
    greeting=$(LD_LIBRARY_PATH=$2 "$1" </dev/null)
    [ "$greeting" = "Brindo Web API 1.0.1" ] || fail "$1 said: $greeting"
}

# by_pkg_config FOLDER LIBRARIES PACKAGE SOURCE
by_pkg_config()
{
    local flags
    read -ra flags < <(PKG_CONFIG_PATH=$2/pkgconfig pkg-config --cflags --libs "$3")
    g++ -std=c++17 -Wall -Wextra -Werror "$consumer/$4" -o "$1/by-pkg-config" "${flags[@]}"
    expect_greeting "$1/by-pkg-config" "$2"
}

# use_installed FOLDER PREFIX LIBRARIES: builds the programs below FOLDER in each way, and runs them
use_installed()
{
    diff <(cd "$root" && find lib rest redis testing include -name '*.h' ! -name '*_p.h' |
        sed 's#^lib/\|^include/bwebapi/##' | sort) \
        <(cd "$2/include/bwebapi" && find . -name '*.h' | sed 's|^\./||' | sort) ||
        fail "the installed headers are not the public ones"

    rm -rf "$1/by-cmake"
    cmake -S "$consumer" -B "$1/by-cmake" -G Ninja -DCMAKE_PREFIX_PATH="$2" >/dev/null
    grep -q "^BWebApi_DIR:PATH=$3/" "$1/by-cmake/CMakeCache.txt" || fail "CMake found another library"
    cmake --build "$1/by-cmake"
    expect_greeting "$1/by-cmake/consumer" "$3"
    expect_greeting "$1/by-cmake/consumer_testing" "$3"
    expect_greeting "$1/by-cmake/consumer_rest" "$3"
    expect_greeting "$1/by-cmake/consumer_redis" "$3"
    expect_greeting "$1/by-cmake/consumer_shared" "$3"

    by_pkg_config "$1" "$3" bwebapi main.cpp
    by_pkg_config "$1" "$3" bwebapi-testing testing.cpp
    by_pkg_config "$1" "$3" "bwebapi-rest bwebapi-testing" rest.cpp
    by_pkg_config "$1" "$3" bwebapi-redis redis.cpp
    by_pkg_config "$1" "$3" "bwebapi-redis bwebapi-rest" shared.cpp
}
