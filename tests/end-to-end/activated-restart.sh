#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# activated-restart.sh SHOWCASE: with a socket that somebody else holds, as the socket unit has it,
# the next process serves on when one has been told to stop.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

first_has_ended()
{
    ! kill -0 "$first" 2>/dev/null
}

begin_serving
# The shell holds the socket while the first process runs, and becomes the second one.
# shellcheck disable=SC2016 # the inner shell's
start_application systemd-socket-activate --inetd --listen "$work/api.sock" \
    bash -c '"$@"; exec "$@"' restarted "$1" --database "$work/notes.db" --files "$work"
start_front nginx
expect_equal "status of the first process" 200 "$(status_of "http://127.0.0.1:$port/api/echo")"

read -r first <"/proc/$application_pid/task/$application_pid/children" || [ -n "$first" ] # no line end
kill -TERM "$first"
await first_has_ended || fail "the first process does not end"

expect_equal "status of the next process" 200 "$(status_of "http://127.0.0.1:$port/api/echo")"
