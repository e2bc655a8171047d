#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# kept-connections.sh SHOWCASE: a front server that wants to keep its connections open gets every
# answer at once, and the application closes what it has answered.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

open_descriptors()
{
    find "/proc/$application_pid/fd" -mindepth 1 | wc -l
}

as_many_descriptors_as_before()
{
    [ "$(open_descriptors)" -eq "$before" ]
}

begin_serving
start_showcase "$1"
start_front keeping_nginx
grep -q 'fastcgi_keep_conn on' "$work/app.conf" || fail "nginx does not keep connections"
before=$(open_descriptors)

for number in 1 2 3 4 5 6; do
    answer=$(curl -s --max-time 2 "http://127.0.0.1:$port/api/echo?number=$number") ||
        fail "no answer to request $number within two seconds"
    expect_equal "answer $number" "{\"cookies\":[],\"query\":{\"number\":[\"$number\"]}}" "$answer"
done

await as_many_descriptors_as_before || fail "$(open_descriptors) descriptors, $before before"
