#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# restart.sh SHOWCASE: notes survive a restart, sessions do not.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

begin_serving
start_showcase "$1"
start_front lighttpd
api=http://127.0.0.1:$port/api
auth=$(log_in)
curl -s -o /dev/null -H "Authorization: $auth" --json '{"title": "Stay", "text": "here"}' "$api/notes"

stop_application || fail "the application ended with status $?"
start_showcase "$1"

expect_equal "status with the session from before" 401 \
    "$(status_of -H "Authorization: $auth" "$api/notes")"
expect_equal "notes from before" '[{"id":1,"text":"here","title":"Stay"}]' \
    "$(curl -s -H "Authorization: $(log_in)" "$api/notes")"
