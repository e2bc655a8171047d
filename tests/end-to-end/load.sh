#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# load.sh SHOWCASE SERVER [REQUESTS [CLIENTS]]: behind that server, as examples/deploy sets it up, every request
# is answered as it must be, at least a quarter of them from 1, 8, 64 and CLIENTS clients each; 2000
# from up to 500 unless given. No connection stays open.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source-path=SCRIPTDIR source=../faults/descriptors.sh
. "$(dirname "${BASH_SOURCE[0]}")/../faults/descriptors.sh"

requests=${3-2000}
failures=0

# send_from CLIENTS: in turns of two seconds, of which a busy machine may need several
send_from()
{
    local replies wrong failed answered=0 turn
    for ((turn = 1; answered < requests / 4; ++turn)); do
        [ $turn -le 600 ] || fail "only $answered answers in $turn turns"
        wrk -t1 -c"$1" -d2s --timeout 20s -s "${BASH_SOURCE[0]%/*}/load.lua" "http://127.0.0.1:$port" >"$work/wrk.log"
        read -r replies wrong failed < <(sed -n 's/^counts //p' "$work/wrk.log")
        answered=$((answered + replies))
        failures=$((failures + wrong + failed))
        say "$1 clients: $replies replies, $wrong wrong, $failed requests without"
        grep -m 3 '^wrong: ' "$work/wrk.log" || [ "$wrong" = 0 ]
    done
}

begin_serving
start_showcase_behind "$2" "$1"
descriptors=$(open_descriptors)
for clients in 1 8 64 "${4-500}"; do
    send_from "$clients"
done
[ $failures = 0 ] || fail "$failures requests to $2 were not answered as they must be"

end_process "$front_pid" || true
front_pid=
await as_many_descriptors_as_before || fail "$(open_descriptors) descriptors, $descriptors before"
stop_application || fail "the application ended with status $?"
