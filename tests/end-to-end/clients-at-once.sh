#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# clients-at-once.sh SHOWCASE SERVER: ten clients keep notes at the same time, each its own.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# client NUMBER: logs in, creates, reads, changes and deletes one note
client()
{
    local auth note id
    auth=$(log_in)
    note=$(curl -s --max-time 60 -H "Authorization: $auth" --json "{\"title\": \"note of $1\"}" "$api/notes")
    id=${note#*:}
    id=${id%%,*}
    expect_equal "client $1 creates" "{\"id\":$id,\"text\":\"\",\"title\":\"note of $1\"}" "$note"
    expect_equal "client $1 reads" "$note" \
        "$(curl -s --max-time 60 -H "Authorization: $auth" "$api/notes/$id")"
    expect_equal "client $1 changes" "{\"id\":$id,\"text\":\"$1\",\"title\":\"changed\"}" \
        "$(curl -s --max-time 60 -X PUT -H "Authorization: $auth" \
            --json "{\"title\": \"changed\", \"text\": \"$1\"}" "$api/notes/$id")"
    expect_equal "client $1 deletes" 204 \
        "$(status_of -X DELETE -H "Authorization: $auth" "$api/notes/$id")"
}

begin_serving
start_showcase "$1"
start_front "$2"
api=http://127.0.0.1:$port/api
clients=()

for number in 1 2 3 4 5 6 7 8 9 10; do
    client $number &
    clients+=($!)
done
for pid in "${clients[@]}"; do
    wait "$pid" || fail "a client failed"
done

expect_equal "notes left behind" "[]" "$(curl -s -H "Authorization: $(log_in)" "$api/notes")"
stop_application || fail "the application ended with status $?"
