#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# scale-out.sh SHOWCASE: four processes behind the nginx of examples/scale-out. Sessions stick to
# their process; when one is killed only its sessions are lost, and nobody else's request fails.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

declare -A pid_of # process number to process id

# start_process_number NUMBER
start_process_number()
{
    local outer=$work
    local work=$outer/$1
    mkdir -p "$work"
    start_showcase "$showcase" --database "$outer/notes.db"
    pid_of[$1]=$application_pid
    application_pid=
}

# ask CLIENT [CURL-ARGUMENT...]: prints the status and the number of the process that answered
ask()
{
    local jar=$work/client-$1
    curl -s -o "$jar.reply" --max-time 20 -b "$jar" -c "$jar" -w '%{http_code} %header{x-process}\n' "${@:2}" \
        "$api/session" | sed "s|[^ ]*$work/\([0-9]*\)/api.sock\$|\1|"
}

# Odd clients keep the session in cookies, even ones in a header; both keep the cookie of the route.
sign_in()
{
    local body='{"user": "demo", "password": "tea and biscuits"}'
    rm -f "$work/client-$1.header"
    if [ $(($1 % 2)) = 1 ]; then
        ask "$1" --json "$body"
    else
        ask "$1" --json "$body"
        echo "Authorization: $(authorization <"$work/client-$1.reply")" >"$work/client-$1.header"
    fi
}

# visit CLIENT: with the session that it has
visit()
{
    if [ -f "$work/client-$1.header" ]; then
        ask "$1" -H "@$work/client-$1.header"
    else
        ask "$1"
    fi
}

# visit_on CLIENT...: until the file $work/stop is there, and once more
visit_on()
{
    local client stop=no
    while [ $stop = no ]; do
        [ ! -f "$work/stop" ] || stop=yes
        for client in "$@"; do
            expect_equal "client $client while another process dies" "200 ${home[$client]}" "$(visit "$client")"
        done
    done
}

begin_serving
showcase=$1
for number in 1 2 3 4; do
    start_process_number $number
done
start_front scaling_nginx
api=http://127.0.0.1:$port/api

# Two clients of every process, and more of some.
declare -A home # client to the process of its session
declare -A guests=([1]=0 [2]=0 [3]=0 [4]=0)
client=0
while [[ " ${guests[*]} " =~ ' '[01]' ' ]]; do
    client=$((client + 1))
    read -r status process < <(sign_in $client)
    expect_equal "login of client $client" 200 "$status"
    home[$client]=$process
    guests[$process]=$((guests[$process] + 1))
    [ $client -lt 200 ] || fail "200 logins did not reach all processes twice: ${guests[*]}"
done
for _ in 1 2 3; do
    for client in "${!home[@]}"; do
        expect_equal "client $client" "200 ${home[$client]}" "$(visit "$client")"
    done
done
say "$client sessions, by process: ${guests[1]} ${guests[2]} ${guests[3]} ${guests[4]}"

# The process of the first client dies while all others are busy.
victim=${home[1]}
others=()
lost=()
for client in "${!home[@]}"; do
    if [ "${home[$client]}" = "$victim" ]; then lost+=("$client"); else others+=("$client"); fi
done
visit_on "${others[@]}" &
visitors=$!
kill -KILL "${pid_of[$victim]}"
wait "${pid_of[$victim]}" 2>/dev/null || true
for client in "${lost[@]}"; do
    expect_equal "session of client $client, whose process died" 401 "$(visit "$client" | cut -c1-3)"
    expect_equal "new login of client $client" 200 "$(sign_in "$client" | cut -c1-3)"
    expect_equal "new session of client $client" 200 "$(visit "$client" | cut -c1-3)"
done
: >"$work/stop"
wait $visitors || fail "a request to another process failed"

# Back again it has its clients back, but none of the sessions that they had elsewhere meanwhile.
start_process_number "$victim"
for client in "${lost[@]}"; do
    expect_equal "client $client after the restart" "401 $victim" "$(visit "$client")"
    expect_equal "login of client $client after the restart" "200 $victim" "$(sign_in "$client")"
    expect_equal "client $client at the end" "200 $victim" "$(visit "$client")"
done

# With the client's address as the route a session needs no cookie, and all from here share a process.
end_process "$front_pid" || true
route_without_cookie=\$remote_addr
start_front scaling_nginx
api=http://127.0.0.1:$port/api
processes=()
for _ in 1 2 3; do
    auth=$(log_in)
    read -r status process < <(curl -s -o "$work/reply" --max-time 20 -H "Authorization: $auth" \
        -w '%{http_code} %header{x-process}\n' "$api/session")
    expect_equal "session without a cookie" 200 "$status"
    processes+=("$process")
done
expect_equal "processes of one address" "$process $process $process" "${processes[*]}"

for number in 1 2 3 4; do
    end_process "${pid_of[$number]}" || fail "process $number ended with status $?"
done
