#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# hostile-bodies.sh SHOWCASE: no single anonymous request holds the service for long, and none takes
# much memory.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# expect_quick_refusal STATUS WHAT [CURL-ARGUMENT...]
expect_quick_refusal()
{
    local status
    status=$(status_of --max-time 5 "${@:3}") || fail "$2: no answer within 5 s"
    expect_equal "status of $2" "$1" "$status"
}

# parts COUNT: a multipart body with the boundary "b"
parts()
{
    for ((part = 0; part < $1; part++)); do
        printf -- '--b\r\nContent-Disposition: form-data; name="%d"\r\n\r\n\r\n' $part
    done
    printf -- '--b--\r\n'
}

begin_serving
start_showcase "$1"
start_front lighttpd
upload=http://127.0.0.1:$port/api/upload
head -c 524288 /dev/zero | tr '\0' '&' >"$work/half-a-mebibyte"
head -c 16700000 /dev/zero | tr '\0' '&' >"$work/many-separators"
(printf '[0' && head -c 8000000 /dev/zero | sed 's/\x00/,0/g' && printf ']') >"$work/array"
parts 221 >"$work/many-parts"
form='Content-Type: application/x-www-form-urlencoded'
multipart='Content-Type: multipart/form-data; boundary=b'

expect_quick_refusal 415 "half a mebibyte of fields" -H "$form" --data-binary "@$work/half-a-mebibyte" "$upload"
expect_quick_refusal 415 "16.7 MB of fields" -H "$form" --data-binary "@$work/many-separators" "$upload"
expect_quick_refusal 415 "fields of no type" -H 'Content-Type;' --data-binary "@$work/many-separators" "$upload"
expect_quick_refusal 415 "16.7 MB of JSON" -H 'Content-Type: application/json' --data-binary "@$work/array" "$upload"
expect_quick_refusal 413 "221 parts" -H "$multipart" --data-binary "@$work/many-parts" "$upload"

peak=$(awk '/^VmHWM/ { print $2 }' "/proc/$application_pid/status") # KiB
[ "$peak" -lt 150000 ] || fail "the application took $peak KiB of memory"
say "$peak KiB of memory at most"
