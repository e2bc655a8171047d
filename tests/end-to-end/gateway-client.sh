# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# The gateway and its clients, one of whom may do everything. Sourced after common.sh.

streams=20

# start_gateway_behind SERVER GATEWAY: sets $api to the address of the API
start_gateway_behind()
{
    printf 'olga %s operator\n' "$("$2" --hash <<<"tea and biscuits")" >"$work/accounts"
    start_application "$2" --socket "$work/api.sock" --accounts "$work/accounts" --folder "$work/firmware" \
        --origin https://app.example --allow-http
    # Apache lays down the rights of root, and what it starts must reach its files.
    [[ $1 != apache-* || $(id -u) != 0 ]] || chown -R www-data: "$work"
    start_front "$1"
    api=http://127.0.0.1:$port/api
}

# The token of a new session.
log_in()
{
    curl -s --json '{"user": "olga", "password": "tea and biscuits"}' "$api/session" | session_header
}

# operate [CURL-ARGUMENT...]: as a user who may do everything
operate()
{
    curl -s --max-time 60 -H "$auth" "$@"
}

# Each has got as many lines with $awaited as $times says.
every_stream_has_it()
{
    local stream
    for stream in "$work"/stream.*; do
        [ "$(grep -c "$awaited" "$stream")" -ge "${times-1}" ] || return 1
    done
}

# await_streams TEXT [TIMES]
await_streams()
{
    awaited=$1 times=${2-1}
    await every_stream_has_it || fail "a stream has no $1: $(tail -n 3 "$work/stream.1")"
}

open_streams()
{
    local stream
    clients=()
    for stream in $(seq $streams); do
        setpriv --pdeathsig TERM curl -sN -H "$auth" "$api/events" >"$work/stream.$stream" &
        clients+=($!)
    done
    await_streams '^:'
}

check_streams()
{
    operate -o /dev/null --json '{"name": "valve", "bus": 1, "address": 9}' "$api/devices"
    await_streams '"name":"valve"'
}
