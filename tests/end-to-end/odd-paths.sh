#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# odd-paths.sh HELLO SHOWCASE: sockets and files have the names that the command line gives, byte by
# byte, in any locale.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

socket_is_there()
{
    kill -0 "$application_pid" 2>/dev/null || return 2
    [ -S "$work/$name.sock" ]
}

# expect_files FILE-NAMES PROGRAM [ARGUMENT...]: what is in the folder once the program listens
expect_files()
{
    LC_ALL=$locale setpriv --pdeathsig TERM "${@:2}" &
    application_pid=$!
    await socket_is_there || fail "no socket of that name in locale $locale"
    expect_equal "files in locale $locale" "$1" "$(cd "$work" && printf '%s ' *)"
    stop_application || true
    rm "$work"/*
}

begin_serving
for locale in C C.UTF-8; do
    for name in $'s\xc3\xb6k' $'s\xf6k'; do
        expect_files "$name.sock " "$1" "$work/$name.sock"
        expect_files "$name.db $name.sock " "$2" --socket "$work/$name.sock" --database "$work/$name.db" --files "$work"
    done
done
