#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# hostile-logins.sh SHOWCASE: many logins at once hold nobody else up, and guessing passwords ends in
# refusals for the account and not for others.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# try_password USER PASSWORD: prints the status
try_password()
{
    status_of --json "{\"user\": \"$1\", \"password\": \"$2\"}" "$api/session"
}

# In the serving thread the passwords of 30 logins take 5 s and more.
echo_at_once()
{
    local seconds
    seconds=$(curl -s -o /dev/null --max-time 20 -w '%{time_total}' "$api/echo")
    awk -v seconds="$seconds" 'BEGIN { exit seconds > 2 }' || fail "$seconds s for a request among logins"
}

begin_serving
start_showcase "$1"
start_front lighttpd
api=http://127.0.0.1:$port/api

curl -s --max-time 60 --parallel --parallel-immediate --parallel-max 30 -o /dev/null -w '%{http_code}\n' \
    --json '{"user": "nobody", "password": "tea"}' "$api/session?[1-30]" >"$work/statuses" 2>/dev/null &
flood=$!
for _ in 1 2 3 4 5; do
    echo_at_once
done
wait $flood
expect_equal "other statuses than 403, 429 and 503 in a flood of logins" "" "$(grep -vE '403|429|503' "$work/statuses" || true)"
grep -q 503 "$work/statuses" || fail "all of 30 logins at once were taken"

while true; do
    status=$(try_password demo coffee)
    [ "$status" = 403 ] || break
done
expect_equal "status of one guess too many" 429 "$status"
expect_equal "status of the right password then" 429 "$(try_password demo 'tea and biscuits')"
expect_equal "status of another user's login" 200 "$(try_password guest 'coffee and cake')"
stop_application || fail "the application ended with status $?"
