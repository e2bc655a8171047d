# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# What the end-to-end tests share. Sourced, never run.

set -euo pipefail
scripts=$(dirname "${BASH_SOURCE[0]}")/../../scripts
# shellcheck source-path=SCRIPTDIR source=../../scripts/lib.sh
. "$scripts/lib.sh"
# shellcheck source-path=SCRIPTDIR source=../../scripts/serving.sh
. "$scripts/serving.sh"
# shellcheck source-path=SCRIPTDIR source=../../scripts/transcript.sh
. "$scripts/transcript.sh"

# start_showcase PROGRAM [OPTION...]: its database outlives it, until the test ends
start_showcase()
{
    start_application "$1" --socket "$work/api.sock" --database "$work/notes.db" \
        --files "$root/examples/showcase/files" --demo-accounts --diagnostics --allow-http "${@:2}"
}

# start_showcase_behind SERVER PROGRAM: starts both, each as examples/deploy says
start_showcase_behind()
{
    case $1 in
    *-spawned) program="$2 --demo-accounts --diagnostics --allow-http" ;;
    *-fcgid) copy_program "$2" ;;
    *-tcp)
        pick_free_port application_port
        start_showcase "$2" --socket "127.0.0.1:$application_port"
        ;;
    *-activated) start_activated "$2" ;;
    h2o) start_showcase "$2" --script-name '' ;;
    *) start_showcase "$2" ;;
    esac
    # Apache lays down the rights of root, and what it starts must reach its files.
    [[ $1 != apache-* || $(id -u) != 0 ]] || chown -R www-data: "$work"
    start_front "${1%-activated}"
}

# To where the user of Apache can reach it.
copy_program()
{
    program="$work/showcase --demo-accounts --diagnostics --allow-http"
    # shellcheck disable=SC2046 # no word where the library is part of the program
    cp "$1" $(ldd "$1" | awk '/libbwebapi/ { print $3 }') "$work"
}

# As the socket unit does it: the socket is there first, and descriptor 0 of the program.
start_activated()
{
    start_application systemd-socket-activate --inetd --listen "$work/api.sock" "$1" --database "$work/notes.db" \
        --files "$root/examples/showcase/files" --demo-accounts --diagnostics --allow-http
}

# Prints what the authorization header must hold from then on.
log_in()
{
    curl -s --max-time 60 --json '{"user": "demo", "password": "tea and biscuits"}' "$api/session" |
        authorization
}

authorization()
{
    grep -o '"session":"[^"]*","token":"[^"]*"' |
        sed -E 's/"session":"([^"]*)","token":"([^"]*)"/SESSION-TOKEN \1:\2/'
}

# Prints the header line of a session, from the reply to a login that BwaRestSessions made.
session_header()
{
    sed -E 's/.*"session":"([^"]*)","token":"([^"]*)".*/Authorization: SESSION-TOKEN \1:\2/'
}

# status_of [CURL-ARGUMENT...]
status_of()
{
    curl -s -o /dev/null --max-time 60 -w '%{http_code}' "$@"
}

# expect_equal WHAT EXPECTED ACTUAL
expect_equal()
{
    [ "$2" = "$3" ] || fail "$1: expected '$2', got '$3'"
}
