#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# token-lifetime.sh SHOWCASE SERVER: who renews the token in time stays in; an expired one is of no
# use, not even for its own renewal.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

begin_serving
start_showcase "$1" --token-lifetime 2000
start_front "$2"
api=http://127.0.0.1:$port/api

curl -s -o /dev/null -c "$work/cookies" \
    --json '{"user": "demo", "password": "tea and biscuits"}' "$api/session"
auth=$(log_in) # last, as a login may take as long as a token lives
end=$((SECONDS + 5))
renewals=0
while [ $SECONDS -lt $end ]; do
    auth=$(curl -s -X PUT -d '' -H "Authorization: $auth" "$api/session" | authorization) ||
        fail "renewal $renewals was refused"
    renewals=$((renewals + 1))
done
[ $renewals -gt 1 ] || fail "no time for renewals"
expect_equal "status with the renewed token" 200 "$(status_of -H "Authorization: $auth" "$api/session")"

is_refused()
{
    [ "$(status_of -H "Authorization: $auth" "$api/session")" = 401 ]
}
await is_refused || fail "the token never expired"
expect_equal "renewal of an expired token" 401 \
    "$(status_of -X PUT -d '' -H "Authorization: $auth" "$api/session")"
expect_equal "expired cookies" 401 "$(status_of -b "$work/cookies" "$api/session")"
expect_equal "logout with an expired token" 204 "$(status_of -X DELETE -H "Authorization: $auth" "$api/session")"
expect_equal "status after a new login" 200 "$(status_of -H "Authorization: $(log_in)" "$api/session")"
