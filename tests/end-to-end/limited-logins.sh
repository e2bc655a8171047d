#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# limited-logins.sh SHOWCASE: nginx passes on only so many logins of one address, and everything else.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

begin_serving
start_showcase "$1"
start_front nginx
api=http://127.0.0.1:$port/api

# Not even JSON: the application answers them at once, and counts none of them.
curl -s -o /dev/null --max-time 20 -w '%{http_code}\n' --json 'x' "$api/session?[1-60]" >"$work/statuses"
passed=$(grep -c 400 "$work/statuses")
refused=$(grep -c 429 "$work/statuses")
expect_equal "answers to 60 logins" 60 $((passed + refused))
[[ $passed -ge 20 && $passed -le 40 ]] || fail "$passed of 60 logins were passed on"
expect_equal "status of a request that is no login" 401 "$(status_of "$api/session")"
