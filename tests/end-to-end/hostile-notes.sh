#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# hostile-notes.sh SHOWCASE: the largest notes that a user may write cost little memory to list.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

begin_serving
start_showcase "$1"
start_front lighttpd
api=http://127.0.0.1:$port/api
auth=$(log_in)

# Each character takes six bytes of a body and of a reply.
printf '{"title": "", "text": "%s"}' "$(head -c 5000 /dev/zero | sed 's/\x00/\\u0001/g')" >"$work/note"
curl -s -o /dev/null --max-time 100 -w '%{http_code}\n' -H "Authorization: $auth" \
    --json "@$work/note" "$api/notes?[1-201]" | sort -u >"$work/statuses"
expect_equal "statuses of new notes" 201 "$(cat "$work/statuses")"
for _ in 1 2 3 4 5; do
    size=$(curl -s --max-time 20 -o /dev/null -w '%{size_download}' -H "Authorization: $auth" "$api/notes")
    [[ $size -gt 6000000 && $size -lt 7000000 ]] || fail "a list of $size bytes"
done

peak=$(awk '/^VmHWM/ { print $2 }' "/proc/$application_pid/status") # KiB
[ "$peak" -lt 150000 ] || fail "the application took $peak KiB of memory"
say "$peak KiB of memory at most"
