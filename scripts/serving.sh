# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# Runs an application behind a front server on loopback, for scripts/demo and the end-to-end tests.
# Sourced after lib.sh. Everything lives in one temporary folder, $work, and ends with the script:
# by the trap, or, when the script is killed outright, because the kernel then ends its children.

PATH=$PATH:/usr/sbin
work=
application_pid=
front_pid=
port=

begin_serving()
{
    work=$(mktemp -d)
    trap end_serving EXIT
    trap 'exit 129' HUP
    trap 'exit 130' INT
    trap 'exit 143' TERM
}

end_serving()
{
    set +e
    trap '' HUP INT TERM
    end_process "$front_pid"
    end_process "$application_pid" || say "the application ended with status $?"
    [ -z "$work" ] || rm -rf "$work"
}

# Asks a child to end, insists after five seconds, and answers its exit status.
end_process()
{
    local pid=$1 status=0
    [ -n "$pid" ] || return 0
    kill -TERM "$pid" 2>/dev/null || true
    timeout 5 tail -s 0.02 -f /dev/null --pid "$pid" 2>/dev/null || kill -KILL "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || status=$?
    return $status
}

stop_application()
{
    local pid=$application_pid
    application_pid=
    end_process "$pid"
}

# start_application PROGRAM [ARGUMENT...]: the program opens the socket $work/api.sock
start_application()
{
    rm -f "$work/api.sock"
    setpriv --pdeathsig TERM "$@" >"$work/application.log" 2>&1 &
    application_pid=$!
    if ! await application_listens; then
        fail "the application did not start: $(tail -n 1 "$work/application.log")"
    fi
}

application_listens()
{
    kill -0 "$application_pid" 2>/dev/null || return 2
    grep -q " 00010000 .* $work/api.sock\$" /proc/net/unix # the flag says: listening
}

front_answers()
{
    kill -0 "$front_pid" 2>/dev/null || return 2
    curl -s -o /dev/null --max-time 2 "http://127.0.0.1:$port/"
}

# Tries a condition for up to 20 seconds; a condition that answers 2 will never hold.
await()
{
    local status deadline=$((SECONDS + 20))
    while [ $SECONDS -lt $deadline ]; do
        status=0
        "$1" || status=$?
        case $status in
        0) return 0 ;;
        2) return 1 ;;
        esac
        sleep 0.05
    done
    return 1
}

is_busy()
{
    (: <>"/dev/tcp/127.0.0.1/$1") 2>/dev/null
}

pick_free_port()
{
    port=$((20000 + RANDOM % 40000))
    while is_busy "$port"; do
        port=$((20000 + RANDOM % 40000))
    done
}

# start_front lighttpd|nginx|keeping_nginx: on $port, or on a free one when that is empty
start_front()
{
    local given=$port
    for _ in 1 2 3 4 5; do
        [ -n "$given" ] || pick_free_port
        "start_$1"
        if await front_answers; then
            return
        fi
        end_process "$front_pid" || true
        front_pid=
        [ -z "$given" ] || break
    done
    fail "$1 did not start on port $port: $(tail -n 1 "$work/front.log")"
}

start_lighttpd()
{
    cat >"$work/lighttpd.conf" <<CONF
server.modules = ( "mod_fastcgi" )
server.bind = "127.0.0.1"
server.port = $port
server.document-root = "$work/htdocs"
server.upload-dirs = ( "$work" )
server.max-request-size = 16384 # kilobytes
fastcgi.server = ( "/api" => ((
    "socket" => "$work/api.sock",
    "check-local" => "disable",
    "x-sendfile" => "enable",
    "x-sendfile-docroot" => ( "$root/examples/showcase/files" )
)) )
CONF
    mkdir -p "$work/htdocs"
    setpriv --pdeathsig TERM lighttpd -D -f "$work/lighttpd.conf" >"$work/front.log" 2>&1 &
    front_pid=$!
}

# Asks the application to keep its connections open. It never does, and a request that nginx sends
# just when a connection closes fails unless it may be repeated: hence not for every test.
start_keeping_nginx()
{
    local keepalive="keepalive 4;" keep_conn=on
    start_nginx
}

start_nginx()
{
    mkdir -p "$work/nginx"
    cat >"$work/nginx.conf" <<CONF
daemon off;
master_process off;
error_log stderr;
pid $work/nginx/pid;
events {}
http {
    access_log off;
    client_body_temp_path $work/nginx/body;
    fastcgi_temp_path $work/nginx/fastcgi;
    proxy_temp_path $work/nginx/proxy;
    uwsgi_temp_path $work/nginx/uwsgi;
    scgi_temp_path $work/nginx/scgi;
    client_max_body_size 16m;
    upstream application {
        server unix:$work/api.sock;
        ${keepalive-}
    }
    server {
        listen 127.0.0.1:$port;
        location / { return 404; }
        location ~ ^(?<script>/api)(?<path>/.*)?\$ {
            fastcgi_pass application;
            fastcgi_keep_conn ${keep_conn-off};
            fastcgi_read_timeout 10s;
            fastcgi_param REQUEST_METHOD \$request_method;
            fastcgi_param SCRIPT_NAME \$script;
            fastcgi_param PATH_INFO \$path;
            fastcgi_param QUERY_STRING \$query_string;
            fastcgi_param CONTENT_TYPE \$content_type;
            fastcgi_param CONTENT_LENGTH \$content_length;
            fastcgi_param SERVER_PROTOCOL \$server_protocol;
            fastcgi_param REMOTE_ADDR \$remote_addr;
        }
    }
}
CONF
    setpriv --pdeathsig TERM nginx -c "$work/nginx.conf" -e stderr >"$work/front.log" 2>&1 &
    front_pid=$!
}
