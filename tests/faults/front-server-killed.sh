#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# front-server-killed.sh APPLICATION: nginx is killed with requests under way, and started again,
# BWA_FAULT_ROUNDS times or 3, but 100 at most. The last time it stays away.

# shellcheck source-path=SCRIPTDIR source=../end-to-end/common.sh
. "$(dirname "${BASH_SOURCE[0]}")/../end-to-end/common.sh"
# shellcheck source-path=SCRIPTDIR source=descriptors.sh
. "$(dirname "${BASH_SOURCE[0]}")/descriptors.sh"

# For two seconds, if nobody is killed meanwhile.
send_requests()
{
    curl -s --parallel --parallel-max 16 --max-time 20 -o /dev/null \
        "http://127.0.0.1:$port/api/{slow,later,long}?[1-30]" 2>/dev/null &
    client=$!
}

requests_are_under_way()
{
    [ "$(open_descriptors)" -gt "$descriptors" ]
}

# With requests under way.
kill_front()
{
    send_requests
    await requests_are_under_way || fail "no request came to the application"
    kill -KILL "$front_pid"
    wait "$front_pid" 2>/dev/null || true
    front_pid=
}

# nginx keeps the connection of the request that was answered last.
one_kept_at_most()
{
    [ "$(open_descriptors)" -le $((descriptors + 1)) ]
}

# expect_descriptors_back CONDITION
expect_descriptors_back()
{
    await "$1" 5 || fail "$(open_descriptors) descriptors, $descriptors before"
}

begin_serving
rounds=${BWA_FAULT_ROUNDS:-3}
start_application "$1" "$work/api.sock"
start_front nginx
descriptors=$(open_descriptors)

for ((round = 1; round <= (rounds < 100 ? rounds : 100); ++round)); do
    kill_front
    wait "$client" || true
    start_front nginx
    expect_equal "answer after restart $round" "at once" "$(curl -s --max-time 5 "http://127.0.0.1:$port/api/now")"
    expect_descriptors_back one_kept_at_most
done

kill_front
expect_descriptors_back as_many_descriptors_as_before
say "$((round - 1)) restarts"
stop_application || fail "the application ended with status $?"
