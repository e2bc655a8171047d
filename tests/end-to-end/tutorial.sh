#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# tutorial.sh PROGRAM STEP: the requests that the tutorial shows for that step, and hostile ones.

# shellcheck source-path=SCRIPTDIR source=attacks.sh
. "$(dirname "${BASH_SOURCE[0]}")/attacks.sh"

# expect_a_full_list [CURL-ARGUMENT...]: a title has an end, and so has the list
expect_a_full_list()
{
    local title
    title=$(head -c 201 /dev/zero | tr '\0' t)
    expect_equal "title of 201 characters" 422 "$(status_of "$@" --json "{\"title\": \"$title\"}" "$api/tasks")"
    curl -s -o /dev/null -w '%{http_code}\n' "$@" --json "{\"title\": \"${title%t}\"}" "$api/tasks?[1-1001]" >"$work/statuses"
    expect_equal "statuses of 1001 more tasks" "201 507" "$(sort -u "$work/statuses" | xargs)"
    expect_equal "the list then" 200 "$(status_of "$@" "$api/tasks")"
}

begin_serving
start_application "$1" "$work/api.sock"
start_front lighttpd
api=http://127.0.0.1:$port/api

check_transcript "$root/examples/tutorial/$2/transcript.txt" "$api" lighttpd

restart_front_without_limit
api=http://127.0.0.1:$port/api
case $2 in
step[12])
    expect_small_bodies_only "$api/tasks"
    ;;
step[34])
    expect_405 DELETE "$api/tasks"
    expect_objects_only "$api/tasks"
    expect_small_bodies_only "$api/tasks"
    expect_a_full_list
    [ "$2" = step3 ] || expect_one_path_only 5 "$api/tasks"
    ;;
step[56])
    expect_objects_only "$api/session"
    expect_small_bodies_only "$api/session"
    authorization="$(curl -s --json '{"user": "ann", "password": "tea and biscuits"}' "$api/session" | session_header)"
    expect_objects_only -H "$authorization" "$api/tasks"
    expect_a_full_list -H "$authorization"
    expect_one_path_only 5 "$api/tasks" -H "$authorization"
    ;;
esac
