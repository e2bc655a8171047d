#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# kept-connections.sh SHOWCASE: a front server that keeps its connections open gets every answer at
# once, and over the same connection; the application closes it when the front server has ended.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source-path=SCRIPTDIR source=../faults/descriptors.sh
. "$(dirname "${BASH_SOURCE[0]}")/../faults/descriptors.sh"

begin_serving
start_showcase "$1"
start_front nginx
grep -q 'fastcgi_keep_conn on' "$work/app.conf" || fail "nginx does not keep connections"
descriptors=$(open_descriptors)

for number in 1 2 3 4 5 6; do
    answer=$(curl -s --max-time 2 "http://127.0.0.1:$port/api/echo?number=$number") ||
        fail "no answer to request $number within two seconds"
    expect_equal "answer $number" "{\"cookies\":[],\"query\":{\"number\":[\"$number\"]}}" "$answer"
    expect_equal "descriptors after request $number" $((descriptors + 1)) "$(open_descriptors)"
done

end_process "$front_pid" || true
front_pid=
await as_many_descriptors_as_before || fail "$(open_descriptors) descriptors, $descriptors before"
