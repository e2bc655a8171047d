#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# hello-core.sh HELLO-CORE: the example of the required classes, behind the lighttpd.conf of hello.

# shellcheck source-path=SCRIPTDIR source=attacks.sh
. "$(dirname "${BASH_SOURCE[0]}")/attacks.sh"

wrong_type_status=400
begin_serving
trap '' PIPE
start_application "$1" "$work/api.sock"
trap - PIPE
start_front lighttpd
api=http://127.0.0.1:$port/api

expect_equal "greeting" '{"greeting":"Hello"} application/json' \
    "$(curl -s -w '%{content_type}' "$api/greeting" | tr '\n' ' ')"
expect_equal "sum" '{"sum":3}' "$(curl -s --json '{"a": 1, "b": 2}' "$api/sum")"
expect_equal "largest sum" '{"sum":4294967294}' \
    "$(curl -s --json '{"a": 2147483647, "b": 2147483647}' "$api/sum")"
expect_equal "missing field" 400 "$(status_of --json '{"a": 1}' "$api/sum")"
expect_equal "no JSON" 400 "$(status_of --json '{"a": 1' "$api/sum")"
expect_equal "empty body" 400 "$(status_of --json '' "$api/sum")"
expect_equal "other media type" 415 "$(status_of -d 'a=1' "$api/sum")"
expect_405 GET "$api/sum"
expect_405 DELETE "$api/sum" "$api/greeting"
expect_equal "unknown path" 404 "$(status_of "$api/other")"
expect_equal "the folder that both were started in" 404 "$(status_of "${api%/api}/lighttpd.conf")"

expect_objects_only "$api/sum"
expect_small_bodies_only "$api/sum"
restart_front_without_limit
api=http://127.0.0.1:$port/api
expect_small_bodies_only "$api/sum"
expect_equal "sum after that" '{"sum":3}' "$(curl -s --json '{"a": 1, "b": 2}' "$api/sum")"

# libfcgi catches SIGPIPE, although it was ignored: docs/OPERATION.md says so.
caught=$(awk '/^SigCgt:/ { print $2 }' "/proc/$application_pid/status")
[ $((0x$caught >> 12 & 1)) = 1 ] || fail "SIGPIPE is not caught: $caught"

# SIGTERM ends an application that does nothing about it.
stop_application && status=0 || status=$?
expect_equal "status after SIGTERM" 143 "$status"
