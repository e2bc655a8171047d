#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# template.sh BUILD: a copy of examples/template, built in an empty folder against the library that
# is installed from the folder BUILD, tested, and served behind its own lighttpd.conf.

# shellcheck source-path=SCRIPTDIR source=attacks.sh
. "$(dirname "${BASH_SOURCE[0]}")/attacks.sh"

start_lighttpd()
{
    sed -e "$front_edit" -e "s/^server.port = 8080$/server.port = $port/" -e "s|^var.socket = .*|var.socket = \"$work/api.sock\"|" \
        lighttpd.conf >"$work/lighttpd.conf"
    grep -q "^server.port = $port$" "$work/lighttpd.conf" || fail "lighttpd.conf has another port"
    setpriv --pdeathsig TERM lighttpd -D -f "$work/lighttpd.conf" >"$work/front.log" 2>&1 &
    front_pid=$!
}

begin_serving
cmake --install "$1" --prefix "$work/prefix" >/dev/null
cp -r "$root/examples/template" "$work/greeter"
cd "$work/greeter"
cmake -B build -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_COMPILE_WARNING_AS_ERROR=ON >/dev/null
cmake --build build -j "$(nproc)"
ctest --test-dir build --output-on-failure --no-tests=error

start_application build/greeter "$work/api.sock"
start_front lighttpd
api=http://127.0.0.1:$port/api
expect_equal "greeting" '{"greeting":"Hello, Ada"}' "$(curl -s "$api/greeting?name=Ada")"
expect_equal "the folder that both were started in" 404 "$(status_of "${api%/api}/main.cpp")"
expect_405 DELETE "$api/greeting?name=Ada"
expect_objects_only "$api/greeting"
expect_small_bodies_only "$api/greeting"
restart_front_without_limit
api=http://127.0.0.1:$port/api
expect_small_bodies_only "$api/greeting"
stop_application && status=0 || status=$?
expect_equal "status after SIGTERM" 0 "$status"
grep -q ' 200 .* ms /api/greeting$' "$work/application.log" || fail "no line for a request: $(cat "$work/application.log")"

# A handler that somebody makes throw: the client is told that, and the log has the reason.
sed -i -e 's/^#include "Api.h"$/&\n#include <stdexcept>/' \
    -e '/^BwaRestReply greeted(/,/^{$/ s/^{$/{\n    if (guest.name == "Eve") { throw std::runtime_error("no tea for Eve"); }/' \
    Api.cpp
cmake --build build --target greeter
start_application build/greeter "$work/api.sock"
expect_equal "GET of a handler that throws" 500 "$(status_of "$api/greeting?name=Eve")"
expect_equal "POST of a handler that throws" 500 "$(status_of --json '{"name": "Eve"}' "$api/greeting")"
expect_equal "lines about it" 2 "$(grep -c 'no tea for Eve' "$work/front.log")"
expect_equal "greeting after that" '{"greeting":"Hello, Ada"}' "$(curl -s "$api/greeting?name=Ada")"
stop_application || true

build/greeter 2>"$work/usage" && status=0 || status=$?
expect_equal "without a socket" "usage: greeter SOCKET, status 2" "$(cat "$work/usage"), status $status"

# The unit, with the program where it has been installed.
cmake --install build --prefix "$work/installed" >/dev/null
unit=$work/greeter.service
sed "s|^ExecStart=/usr/local/|ExecStart=$work/installed/|" "$work/installed/lib/systemd/system/greeter.service" >"$unit"
grep -q "^ExecStart=$work/" "$unit" || fail "greeter.service starts another program"
if command -v systemd-analyze >/dev/null; then
    systemd-analyze verify "$unit"
fi
