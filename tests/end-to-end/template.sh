#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# template.sh BUILD: a copy of examples/template, built in an empty folder against the library that
# is installed from the folder BUILD, tested, and served behind its own lighttpd.conf.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

start_lighttpd()
{
    sed -e "s/^server.port = 8080$/server.port = $port/" -e "s|^var.socket = .*|var.socket = \"$work/api.sock\"|" \
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
expect_equal "greeting" '{"greeting":"Hello, Ada"}' "$(curl -s "http://127.0.0.1:$port/api/greeting?name=Ada")"
stop_application && status=0 || status=$?
expect_equal "status after SIGTERM" 143 "$status"

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
