#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# closed-at-first.sh SHOWCASE: without options nobody gets in by a well-known password, and nothing for
# developers is served; the umask is respected, and the database is private whatever it says.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# start_with_umask UMASK
start_with_umask()
{
    # shellcheck disable=SC2016 # the inner shell's
    start_application bash -c 'umask "$0" && exec "$@"' "$1" "$showcase" \
        --socket "$work/api.sock" --database "$work/notes.db" --files "$work"
}

# rights FILE
rights()
{
    stat -c %a "$work/$1"
}

begin_serving
showcase=$1
start_with_umask 0
expect_equal "rights of a new database" 600 "$(rights notes.db)"
expect_equal "rights of the socket with the umask 0" 777 "$(rights api.sock)"

start_front lighttpd
api=http://127.0.0.1:$port/api
expect_equal "status of a login with a well-known password" 403 \
    "$(status_of --json '{"user": "demo", "password": "tea and biscuits"}' "$api/session")"
expect_equal "status of the statistics" 404 "$(status_of "$api/statistics")"
expect_equal "status of the failure" 404 "$(status_of "$api/failure")"
stop_application || fail "the application ended with status $?"

chmod 644 "$work/notes.db"
start_with_umask 0117
expect_equal "rights of a database that was open" 600 "$(rights notes.db)"
expect_equal "rights of the socket with the umask 0117" 660 "$(rights api.sock)"
stop_application || fail "the application ended with status $?"
