# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# Runs an application behind a front server on loopback, for scripts/demo and the end-to-end tests.
# Sourced after lib.sh. All files are in a temporary folder, $work. A trap ends the processes and removes
# the folder when the script ends. When the script is killed with SIGKILL, the kernel ends the processes.

PATH=$PATH:/usr/sbin
work=
application_pid=
front_pid=
port=
program= # the application, if the front server is to start it
application_port=
showcase=
renderer=
deployment_edit= # a sed script: what else deployed() changes
nginx_processes="master_process off;" # how many nginx starts; its configuration begins with this

# Builds the showcase and sets $showcase to its path. Without a release build, it uses a build of its
# own that needs no test packages.
build_showcase()
{
    local tree=release
    if [ -f "$root/build/release/build.ninja" ]; then
        cmake --build "$root/build/release" --target showcase || fail "the release build failed"
    else
        tree=demo
        build demo --preset release -DBWA_BUILD_TESTS=OFF
    fi
    showcase=$root/build/$tree/examples/showcase/showcase
}

# Sets $renderer to the folder of what shows the API, swagger-ui-dist (Apache License 2.0), which npm
# fetches once. Its dependency is a script for counting installations, which is not run.
fetch_renderer()
{
    local folder=$root/build/api-page source=$root/examples/showcase/api-page
    renderer=$folder/node_modules/swagger-ui-dist
    if [ ! -d "$renderer" ] || ! cmp -s "$source/package-lock.json" "$folder/package-lock.json"; then
        mkdir -p "$folder"
        cp "$source/package.json" "$source/package-lock.json" "$folder"
        (cd "$folder" && npm ci --ignore-scripts --no-audit --no-fund) || return 1
    fi
}

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

# Sends SIGTERM to a child, SIGKILL if it has not ended after five seconds, and returns its exit status.
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

# start_application PROGRAM [ARGUMENT...]: the program opens the socket $work/api.sock or, when that
# is set, listens on $application_port
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
    if [ -n "$application_port" ]; then
        grep -qi ": 0100007F:$(printf %04x "$application_port") 00000000:0000 0A" /proc/net/tcp
    else
        grep -q " 00010000 .* $work/api.sock\$" /proc/net/unix # this flag means that it listens
    fi
}

front_answers()
{
    kill -0 "$front_pid" 2>/dev/null || return 2
    curl -s -o /dev/null --max-time 2 "http://127.0.0.1:$port/"
}

# await CONDITION [SECONDS]: waits until the condition holds, for a minute unless told otherwise; gives
# up at once when the condition returns 2, which means that it can never hold
await()
{
    local status deadline=$((SECONDS + ${2-60}))
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

# pick_free_port [VARIABLE]: sets the variable, $port unless one is named, to a free port, below those that
# Linux gives to connections (ip_local_port_range): one of these could take it meanwhile
pick_free_port()
{
    local -n picked=${1-port}
    picked=$((20000 + RANDOM % 12000))
    while is_busy "$picked"; do
        picked=$((20000 + RANDOM % 12000))
    done
}

# start_front SERVER: starts it with the function start_SERVER, on $port or, if that is empty, on a free
# port
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

# deployed FILE: prints examples/FILE with the paths and ports of this run, and as $deployment_edit says
deployed()
{
    sed -e "s|/run/[a-z-]*/|$work/|g" -e "s|/var/lib/app/|$work/|g" -e "s|/usr/local/bin/app |$program |g" \
        -e "s|/srv/app/files|${files:-$root/examples/showcase/files}|g" \
        -e "s|^    listen 80;|    listen 127.0.0.1:$port;|" -e "s|^    bind :80|    bind 127.0.0.1:$port|" \
        -e "s|^      port: 80|      host: 127.0.0.1\n      port: $port|" -e "s|^user: www-data|user: $(id -un)|" \
        -e "s|^:80 {|:$port {\n\tbind 127.0.0.1|" -e "$deployment_edit" "$root/examples/$1"
}

# start_process PROGRAM [ARGUMENT...]: starts a program as the front server
start_process()
{
    setpriv --pdeathsig TERM "$@" >"$work/front.log" 2>&1 &
    front_pid=$!
}

# start_lighttpd [FILE-OF-EXAMPLES]
start_lighttpd()
{
    deployed "${1-deploy/lighttpd/app.conf}" >"$work/app.conf"
    cat >"$work/lighttpd.conf" <<CONF
server.bind = "127.0.0.1"
server.port = $port
server.document-root = "$work/htdocs"
server.upload-dirs = ( "$work" )
include "$work/app.conf"
CONF
    mkdir -p "$work/htdocs"
    start_process lighttpd -D -f "$work/lighttpd.conf"
}

start_lighttpd-spawned()
{
    start_lighttpd deploy/lighttpd/app-spawned.conf
}

start_nginx()
{
    deployed deploy/nginx/app_params >"$work/app_params"
    deployed deploy/nginx/app.conf >"$work/app.conf"
    start_nginx_with "$work/app.conf"
}

# nginx with a new connection for each request.
start_nginx-new()
{
    deployed deploy/nginx/app_params >"$work/app_params"
    deployed deploy/nginx/app.conf | sed -e '/^    keepalive / d' -e '/fastcgi_keep_conn / d' >"$work/app.conf"
    start_nginx_with "$work/app.conf"
}

# nginx in front of an application that listens on $application_port of loopback.
start_nginx-tcp()
{
    deployed deploy/nginx/app_params >"$work/app_params"
    deployed deploy/nginx/app.conf |
        sed "s|server unix:[^;]*; # by TCP: server 127.0.0.1:9000;|server 127.0.0.1:$application_port;|" >"$work/app.conf"
    start_nginx_with "$work/app.conf"
}

# nginx in front of the processes with the sockets $work/1/api.sock, $work/2/api.sock and so on, 4 unless
# $count says otherwise. Each reply names its process, and the limit of logins is too high to matter.
start_scaling_nginx()
{
    deployed deploy/nginx/app_params >"$work/app_params"
    deployed scale-out/nginx.conf |
        sed -e 's/rate=30r\/m/rate=100r\/s/' -e 's/^ *add_header .*/&\n        add_header X-Process $upstream_addr always;/' \
            -e "/server unix:.*\/[$((${count:-4} + 1))-9]\/api.sock/ d" \
            -e "s/default \$request_id; .*/default ${route_without_cookie:-\$request_id};/" >"$work/app.conf"
    start_nginx_with "$work/app.conf"
}

# start_nginx_with FILE: FILE is a configuration of a site, as in sites-enabled
start_nginx_with()
{
    mkdir -p "$work/nginx"
    rm -f "$work/inner.sock"
    cat >"$work/nginx.conf" <<CONF
daemon off;
$nginx_processes
error_log stderr;
pid $work/nginx/pid;
events { worker_connections 4096; }
http {
    access_log off;
    client_body_temp_path $work/nginx/body;
    fastcgi_temp_path $work/nginx/fastcgi;
    proxy_temp_path $work/nginx/proxy;
    uwsgi_temp_path $work/nginx/uwsgi;
    scgi_temp_path $work/nginx/scgi;
    include $1;
}
CONF
    start_process nginx -c "$work/nginx.conf" -e stderr
}

start_apache-proxy()
{
    start_apache deploy/apache/app-proxy.conf proxy proxy_fcgi reqtimeout
}

start_apache-fcgid()
{
    start_apache deploy/apache/app-fcgid.conf fcgid
}

# start_apache FILE MODULE...
start_apache()
{
    mkdir -p "$work/htdocs"
    deployed "$1" >"$work/app.conf"
    cat >"$work/apache.conf" <<CONF
ServerRoot $work
ServerName localhost
Listen 127.0.0.1:$port
PidFile $work/apache.pid
DefaultRuntimeDir $work
ErrorLog /dev/stderr
DocumentRoot $work/htdocs
$(for module in mpm_event authz_core alias "${@:2}"; do
        echo "LoadModule ${module}_module /usr/lib/apache2/modules/mod_$module.so"
    done)
User www-data
Group www-data
ServerLimit 32
MaxRequestWorkers 800
# With KeepAlive, Apache would close connections without a reply while all its workers are busy.
KeepAlive Off
<IfModule fcgid_module>
    FcgidIPCDir $work/fcgid
    FcgidProcessTableFile $work/fcgid/table
    FcgidInitialEnv LD_LIBRARY_PATH $work
</IfModule>
Include $work/app.conf
CONF
    start_process apache2 -D FOREGROUND -f "$work/apache.conf"
}

# HAProxy that does not ask the application for its limits.
start_haproxy-plain()
{
    start_haproxy '/option get-values/ d'
}

# start_haproxy [SED-COMMAND]: starts it with the configuration as the command changes it
start_haproxy()
{
    {
        cat <<CONF
defaults
    mode http
    timeout connect 5s
    timeout client 50s
    timeout server 50s
CONF
        deployed deploy/haproxy/app.cfg | sed "${1-}"
    } >"$work/haproxy.cfg"
    start_process haproxy -db -f "$work/haproxy.cfg"
}

start_caddy()
{
    {
        printf '{\n\tadmin off\n}\n'
        deployed deploy/caddy/Caddyfile
    } >"$work/Caddyfile"
    start_process env HOME="$work" caddy run --adapter caddyfile --config "$work/Caddyfile"
}

start_h2o()
{
    deployed deploy/h2o/h2o.conf >"$work/h2o.conf"
    start_process h2o -c "$work/h2o.conf"
}
