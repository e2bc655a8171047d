#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# stopping.sh SHOWCASE: the signals that end programs end this one in order, with status 0.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

begin_serving
start_application "$1" --socket "$work/api.sock" --database "$work/notes.db" --files "$work"
start_front lighttpd
stop_application || fail "after SIGTERM: status $?"

for signal in TERM INT; do
    # In the background a shell starts its children with SIGINT ignored; env undoes that.
    start_application env --default-signal=INT "$1" --socket "$work/api.sock" \
        --database "$work/notes.db" --files "$work"
    curl -s -o /dev/null "http://127.0.0.1:$port/api/echo"
    kill -$signal "$application_pid"
    wait "$application_pid" || fail "after SIG$signal: status $?"
    application_pid=
done
