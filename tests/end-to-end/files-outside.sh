#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# files-outside.sh SHOWCASE SERVER STATUS: the front server sends no file that lies outside of its
# folder, also when the application names it, and none that a client asks for by its path.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

begin_serving
mkdir "$work/elsewhere"
echo secret >"$work/elsewhere/welcome.txt"
start_showcase "$1" --files "$work/elsewhere"
start_front "$2"
api=http://127.0.0.1:$port/api

expect_equal "status of the file" "$3" "$(status_of "$api/file")"
! curl -s "$api/file" | grep -q secret || fail "the file was sent"
expect_equal "status of the path" 404 \
    "$(status_of "http://127.0.0.1:$port/x-sendfile$root/examples/showcase/files/welcome.txt")"
expect_equal "file named in a header field by the client" 200 \
    "$(status_of -H "X-Sendfile: $work/elsewhere/welcome.txt" "$api/echo")"
