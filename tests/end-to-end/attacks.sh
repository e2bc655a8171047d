# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# What a hostile client sends to the examples that people copy. Sourced, never run.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

front_edit= # for sed: what start_lighttpd does to its configuration

# The one of examples/hello, which is for the tutorial, too; in a folder that holds other files.
start_lighttpd()
{
    sed -e "s/^server.port = 8080$/server.port = $port/" -e "$front_edit" "$root/examples/hello/lighttpd.conf" >"$work/lighttpd.conf"
    grep -q "^server.port = $port$" "$work/lighttpd.conf" || fail "lighttpd.conf has another port"
    (cd "$work" && exec setpriv --pdeathsig TERM lighttpd -D -f lighttpd.conf) >"$work/front.log" 2>&1 &
    front_pid=$!
}

wrong_type_status=422 # of JSON that is none of the kind that is wanted

# expect_objects_only CURL-ARGUMENT...: what is there takes JSON objects, and nothing else
expect_objects_only()
{
    local text
    for text in '[1]' '[{"title": "a"}]' 5 null true '"x"'; do
        expect_equal "JSON '$text'" $wrong_type_status "$(status_of --json "$text" "$@")"
    done
    for text in '' '{' '{}{}'; do
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
    [ $(($(peak_memory) - before)) -lt 16384 ] || fail "a body of 20 MB took $(($(peak_memory) - before)) kB"
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
    front_edit='/^server.max-request-size/d'
    start_front lighttpd
}

# expect_405 METHOD ADDRESS...
expect_405()
{
    local address
    for address in "${@:2}"; do
        expect_equal "$1 $address" 405 "$(status_of -X "$1" "$address")"
    done
}

# expect_one_path_only NUMBER ADDRESS [CURL-ARGUMENT...]: what ADDRESS/NUMBER has is nowhere else
expect_one_path_only()
{
    local name
    expect_equal "$2/$1" 200 "$(status_of "${@:3}" "$2/$1")"
    for name in "+$1" "0$1" "%20$1" "$1%20" "-$1" "$1.0" "0x$1" "$1/" "%2B$1"; do
        expect_equal "$2/$name" 404 "$(status_of "${@:3}" "$2/$name")"
    done
}
