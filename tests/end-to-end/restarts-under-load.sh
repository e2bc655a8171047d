#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# restarts-under-load.sh SHOWCASE SERVER, or GATEWAY SERVER gateway: with a socket that somebody else
# holds, as the socket unit has it, the application is restarted twenty times while 16 clients send
# requests, and every request is answered as it must be.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

restarts=0
holder="trap 'kill \$served; exit' TERM; while \"\$@\" <&0 & served=\$!; wait \$served; do :; done"

# The child of the holder; empty when there is none.
serving_process()
{
    tr -d ' ' <"/proc/$application_pid/task/$application_pid/children"
}

next_process_serves()
{
    [[ $(serving_process) =~ ^[0-9]+$ && $(serving_process) != "$served" ]] &&
        [ "$(status_of "$address")" = 200 ]
}

restart()
{
    served=$(serving_process)
    kill -TERM "$served" || fail "the application has ended by itself"
    await next_process_serves || fail "the next process does not serve: $(tail -n 1 "$work/application.log")"
    restarts=$((restarts + 1))
}

begin_serving
if [ "${3-}" = gateway ]; then
    : >"$work/accounts"
    command=("$1" --accounts "$work/accounts" --folder "$work/firmware")
    path=/api/openapi.json
else
    command=("$1" --database "$work/notes.db" --files "$work")
    path=/api/echo
fi
start_application systemd-socket-activate --inetd --listen "$work/api.sock" bash -c "$holder" holder "${command[@]}"
start_front "$2"
address=http://127.0.0.1:$port$path
expect_equal "status of the first process" 200 "$(status_of "$address")"
while [ $restarts -lt 20 ]; do
    wrk -t1 -c16 -d4s --timeout 20s -s "${BASH_SOURCE[0]%/*}/load.lua" "http://127.0.0.1:$port" -- "${@:3}" >"$work/wrk.log" &
    clients=$!
    while [ $restarts -lt 20 ] && kill -0 $clients 2>/dev/null; do
        restart
    done
    wait $clients || fail "wrk said: $(cat "$work/wrk.log")"
    read -r replies wrong failed < <(sed -n 's/^counts //p' "$work/wrk.log")
    say "$restarts restarts: $replies replies, $wrong wrong, $failed requests without"
    [ "$wrong $failed" = "0 0" ] || fail "requests to $2 were lost"
done
