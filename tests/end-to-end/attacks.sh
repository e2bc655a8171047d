# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# What a hostile client sends to the examples that people copy. Sourced, never run.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

front_edit= # for sed: what start_lighttpd does to its configuration

# expect_objects_only CURL-ARGUMENT...: the hook there takes JSON objects, and nothing else
expect_objects_only()
{
    local text
    for text in '[1]' '[{"title": "a"}]' 5 null true '"x"' '' '{' '{}{}'; do
        expect_equal "JSON '$text'" 400 "$(status_of --json "$text" "$@")"
    done
}

# expect_small_bodies_only CURL-ARGUMENT...: 20 MB are refused, and cost the application no memory
expect_small_bodies_only()
{
    local before status
    { echo '[0' && head -c 10000000 /dev/zero | sed 's/\x0/,0/g' && echo ']'; } >"$work/large.json"
    before=$(peak_memory)
    status=$(status_of -H 'Content-Type: application/json' --data-binary @"$work/large.json" "$@")
    [[ $status = 4* ]] || fail "a body of 20 MB was answered with $status"
    [ $(($(peak_memory) - before)) -lt 4096 ] || fail "a body of 20 MB took $(($(peak_memory) - before)) kB"
}

# The most that the application has ever held, in kB.
peak_memory()
{
    awk '/^VmHWM:/ { print $2 }' "/proc/$application_pid/status"
}

# The front server without its limit for bodies, so that they reach the application.
restart_front_without_limit()
{
    end_process "$front_pid" || true
    # shellcheck disable=SC2034 # start_lighttpd uses it
    front_edit='/^server.max-request-size/d'
    start_front lighttpd
}
