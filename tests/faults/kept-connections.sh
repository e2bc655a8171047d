#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# kept-connections.sh APPLICATION: nginx keeps its connections, for BWA_FAULT_ROUNDS times ten requests,
# or for 200. All are answered at once, and no connection stays open when nginx has ended.

# shellcheck source-path=SCRIPTDIR source=../end-to-end/common.sh
. "$(dirname "${BASH_SOURCE[0]}")/../end-to-end/common.sh"
# shellcheck source-path=SCRIPTDIR source=descriptors.sh
. "$(dirname "${BASH_SOURCE[0]}")/descriptors.sh"

begin_serving
count=$((${BWA_FAULT_ROUNDS:-20} * 10))
start_application "$1" "$work/api.sock"
start_front nginx
grep -q 'fastcgi_keep_conn on' "$work/app.conf" || fail "nginx does not keep connections"
descriptors=$(open_descriptors)

# One request after the other, by one curl; each with two seconds of patience.
for ((number = 1; number <= count; ++number)); do
    printf 'url = "http://127.0.0.1:%s/api/now"\n' "$port"
done >"$work/urls"
curl -s --fail-early -f --max-time 2 -K "$work/urls" >"$work/answers" || fail "a request was not answered"
expect_equal "answers" "$count" "$(grep -cx 'at once' "$work/answers")"

end_process "$front_pid" || true
front_pid=
await as_many_descriptors_as_before || fail "$(open_descriptors) descriptors, $descriptors before"
say "$count requests"
stop_application || fail "the application ended with status $?"
