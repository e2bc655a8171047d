#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# hello.sh HELLO: the example of the README, behind its own lighttpd.conf.

# shellcheck source-path=SCRIPTDIR source=attacks.sh
. "$(dirname "${BASH_SOURCE[0]}")/attacks.sh"

diff <(awk '/^```cpp/ { shown = 1; next } shown && /^```/ { exit } shown' "$root/README.md") <(sed 1,3d "$root/examples/hello/main.cpp") ||
    fail "the README shows another program"

begin_serving
start_application "$1" "$work/api.sock"
start_front lighttpd
api=http://127.0.0.1:$port/api

expect_equal "greeting" '{"greeting":"Hello, André"} application/json' \
    "$(curl -s -w ' %{content_type}' "$api/greeting/Andr%C3%A9")"
expect_equal "sum" '{"sum":3}' "$(curl -s --json '{"a": 1, "b": 2}' "$api/sum")"
expect_equal "largest sum" '{"sum":4294967294}' \
    "$(curl -s --json '{"a": 2147483647, "b": 2147483647}' "$api/sum")"
expect_equal "missing and wrong field" \
    '{"errors":[{"detail":"must be an integer from -2147483648 to 2147483647","pointer":"#/a"},{"detail":"is missing","pointer":"#/b"}],"status":422,"title":"Unprocessable Entity"}' \
    "$(curl -s --json '{"a": 2147483648}' "$api/sum")"
expect_equal "no JSON" 400 "$(status_of --json '{"a": 1' "$api/sum")"
expect_equal "other media type" 415 "$(status_of -d 'a=1' "$api/sum")"
expect_405 GET "$api/sum"
expect_405 DELETE "$api/sum" "$api/greeting/a"
expect_equal "unknown path" '{"status":404,"title":"Not Found"}' "$(curl -s "$api/other")"
expect_equal "the folder that both were started in" 404 "$(status_of "${api%/api}/lighttpd.conf")"

expect_objects_only "$api/sum"
expect_small_bodies_only "$api/sum"
restart_front_without_limit
api=http://127.0.0.1:$port/api
expect_small_bodies_only "$api/sum"
expect_equal "sum after that" '{"sum":3}' "$(curl -s --json '{"a": 1, "b": 2}' "$api/sum")"

stop_application && status=0 || status=$?
expect_equal "status after SIGTERM" 0 "$status"
