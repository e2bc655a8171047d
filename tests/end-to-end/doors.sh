#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# doors.sh: what scripts/demo and scripts/test say when they cannot do what they are asked to.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# expect_refusal STATUS PATTERN COMMAND...: one line on standard error, nothing else
expect_refusal()
{
    local status=0
    "${@:3}" >"$work/output" 2>"$work/errors" || status=$?
    expect_equal "status of ${*:3}" "$1" "$status"
    expect_equal "output of ${*:3}" "" "$(cat "$work/output")"
    # shellcheck disable=SC2053 # a pattern
    [[ $(cat "$work/errors") == $2 && $(wc -l <"$work/errors") = 1 ]] ||
        fail "${*:3} said: $(cat "$work/errors")"
}

# expect_usage COMMAND...
expect_usage()
{
    local status=0
    "$@" >"$work/output" 2>"$work/errors" || status=$?
    expect_equal "status of $*" 2 "$status"
    expect_equal "output of $*" "" "$(cat "$work/output")"
    grep -q '^usage: scripts/' "$work/errors" || fail "$* said: $(cat "$work/errors")"
}

begin_serving
expect_usage "$root/scripts/demo" --unknown
expect_usage "$root/scripts/demo" --port
expect_usage "$root/scripts/demo" --port 0
expect_usage "$root/scripts/demo" --port 65536
expect_usage "$root/scripts/test" --unknown

start_front lighttpd
expect_refusal 1 "demo: port $port of 127.0.0.1 is in use*" "$root/scripts/demo" --port "$port"

# Nothing is installed, and there is neither root nor sudo.
mkdir "$work/bin"
for program in bash env dirname; do
    ln -s "$(command -v $program)" "$work/bin/$program"
done
printf '#!/bin/sh\nexit 1\n' >"$work/bin/dpkg-query"
printf '#!/bin/sh\necho 1000\n' >"$work/bin/id"
printf '#!/bin/sh\nexit 100\n' >"$work/bin/apt-get"
chmod +x "$work"/bin/{dpkg-query,id,apt-get}
expect_refusal 1 "test: no right to install g++ cmake *: run this as root or with sudo at hand" \
    env "PATH=$work/bin" "$root/scripts/test"
