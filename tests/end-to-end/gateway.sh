#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# gateway.sh GATEWAY SERVER: the gateway behind the server, configured as examples/deploy says but for
# uploads, which are larger and passed on as they come: what its clients may do, what hostile ones do,
# 20 event streams, an upload that is cut off, and a stop while calls are open.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source-path=SCRIPTDIR source=gateway-client.sh
. "$(dirname "${BASH_SOURCE[0]}")/gateway-client.sh"

deployment_edit='s/client_max_body_size 16m;/client_max_body_size 301m; fastcgi_request_buffering off;/
    s/server.max-request-size = 16384 /server.max-request-size = 308224 server.stream-request-body = 1 /'

# expect_refused STATUS [CURL-ARGUMENT...]: by the application, as a problem
expect_refused()
{
    expect_equal "${*:2}" "$1 application/problem+json" \
        "$(operate -o /dev/null -w '%{http_code} %{content_type}' "${@:2}")"
}

check_hostile_input()
{
    local body
    for body in '' '{' '{"name": "a"' '{}{}'; do
        expect_refused 400 --json "$body" "$api/devices"
    done
    for body in '[]' null '"a"' '{"name": 1, "bus": 1, "address": 1}' '{"name": "a", "bus": 1, "address": 1, "id": "x", "owner": 1}'; do
        expect_refused 422 --json "$body" "$api/devices"
    done
    expect_refused 415 -d 'name=a' "$api/devices"
    expect_refused 403 -H 'Origin: https://evil.example' --json '{"name": "a", "bus": 1, "address": 1}' "$api/devices"
    expect_refused 413 -H 'Content-Length: 314572801' -H 'Content-Type: a/b' -d a "$api/upload"
    auth='Authorization: SESSION-TOKEN a:b' expect_refused 401 "$api/devices"
    auth="${auth%?}" expect_refused 401 "$api/devices"
    auth=${auth/SESSION-TOKEN/Bearer} expect_refused 401 "$api/upload" -d a
    head -c 100000 /dev/zero | tr '\0' 1 >"$work/large.json"
    expect_equal "100 KB of JSON" 413 "$(status_of -H "$auth" --json @"$work/large.json" "$api/devices")"
    expect_equal "devices after that" '{"devices":[],"total":2}' "$(operate "$api/devices?first=2")"
}

upload_is_gone()
{
    [ -z "$(ls "$work/firmware/incoming")" ]
}

# check_upload MEGABYTES: a whole one, and one whose client goes in the middle
check_upload()
{
    local digest image=$work/image
    head -c "$1M" /dev/zero >"$image"
    digest=$(sha256sum "$image" | cut -d ' ' -f 1)
    expect_equal "upload" "{\"sha256\":\"$digest\",\"size\":$(($1 * 1048576))}" \
        "$(operate -H 'Content-Type: a/b' -H Expect: -T "$image" -X POST "$api/upload?sha256=$digest")"
    await_streams '^event: upload' $(($1 / 4))

    exec {connection}<>"/dev/tcp/127.0.0.1/$port"
    printf 'POST /api/upload HTTP/1.1\r\nHost: a\r\n%s\r\nContent-Length: %d\r\n\r\n' \
        "$auth" $(($1 * 1048576)) >&"$connection"
    head -c 9M "$image" >&"$connection"
    await_streams '^event: upload' $(($1 / 4 + 2))
    ! upload_is_gone || fail "the upload has no file"
    exec {connection}>&-
    await upload_is_gone || fail "an upload that was cut off has left a file"
    expect_equal "images" "incoming $digest" "$(cd "$work/firmware" && printf '%s\n' * | sort -r | xargs)"
}

# A call that has begun is answered, streams end, and nothing is left open.
check_stop()
{
    local pid=$application_pid scan client
    operate -d "" "$api/buses/3/scan" >"$work/scan" &
    scan=$!
    await_streams '^event: scan' 2 # after that of the transcript
    kill -TERM "$pid"
    application_pid=
    wait $scan || fail "the scan was lost: $?"
    expect_equal "scan" '{"addresses":[3,11],"bus":3}' "$(cat "$work/scan")"
    for client in "${clients[@]}"; do
        wait "$client" || true
    done
    wait "$pid" || fail "after SIGTERM: status $?"
    grep -q ' 200 .* B .* ms /api/buses/3/scan$' "$work/application.log" || fail "the access log has no scan"
}

begin_serving
start_gateway_behind "$2" "$1"

auth=$(log_in)
open_streams
check_transcript "$root/examples/gateway/transcript.txt" "$api" "$2"
auth=$(log_in)
check_hostile_input
check_streams
check_upload 48
check_stop
