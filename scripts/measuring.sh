# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2154

# Starts the applications that scripts/benchmark compares, sends them requests and measures the cost.
# Sourced after lib.sh and serving.sh.

# shellcheck disable=SC2034 # for scripts/benchmark
all_cases=(hello json form upload auth notfound)
applications=(bwebapi bwebapi-kept libfcgi go php)
benchmark_packages=("${library_packages[@]}" libbenchmark-dev strace valgrind curl nginx-light wrk
    golang-go php-fpm gnuplot-nox libhiredis-dev libssl-dev redis-server redis-tools)
binary=$root/build/benchmark
php_script=$root/benchmarks/applications/php/index.php
declare -A pid_of # application to process id

# The connections to an application "NAME-kept" are kept open. To others, each request has its own.
# "redis-COUNT" has that many sessions in the Redis that start_redis has started.

build_benchmarks()
{
    say "building into build/benchmark"
    if ! {
        [ -f "$binary/build.ninja" ] ||
            cmake --preset release -S "$root" -B "$binary" -DBWA_BUILD_BENCHMARKS=ON \
                -DBWA_BUILD_EXAMPLES=OFF -DBWA_BUILD_TESTS=OFF
        cmake --build "$binary"
    } >"$work/build.log"; then
        cat "$work/build.log"
        fail "the build failed"
    fi
}

build_go_application()
{
    (
        cd "$root/benchmarks/applications/go"
        GO111MODULE=off GOCACHE=$binary/go go build -o "$binary/application-go" main.go
    ) || fail "the build of the Go application failed"
}

# Writes a file with the request of each case. The upload contains 10 MiB that look like noise and are
# the same in each run.
write_requests()
{
    local boundary=------------------------d74496d66958873e
    cp "$root"/benchmarks/requests/*.http "$work"
    {
        printf -- '--%s\r\nContent-Disposition: form-data; name="file"; filename="photo.jpg"\r\n' "$boundary"
        printf 'Content-Type: image/jpeg\r\n\r\n'
        (set +o pipefail && seq 10000000 | gzip -1n | head -c 10485760)
        printf '\r\n--%s--\r\n' "$boundary"
    } >>"$work/upload.http" 2>/dev/null
}

# start APPLICATION [OBSERVER...]: starts it on the socket $work/APPLICATION/api.sock
start()
{
    local name=$1 outer=$work
    local work=$outer/$name # where start_application puts its files
    mkdir -p "$work"
    case $name in
    go) start_application "${@:2}" "$binary/application-go" "$work/api.sock" ;;
    php)
        write_php_configuration
        start_application "${@:2}" "$(php_fpm)" -R --nodaemonize -y "$work/php-fpm.conf"
        ;;
    redis-*)
        start_application "${@:2}" "$(program_of redis)" "$work/api.sock" "$outer/redis.sock" "${name#redis-}"
        sed "s/^Authorization:.*/$(grep '^Authorization' "$work/application.log")/" "$outer/auth.http" >"$work/auth.http"
        ;;
    *) start_application "${@:2}" "$(program_of "$name")" "$work/api.sock" ;;
    esac
    pid_of[$name]=$application_pid
}

program_of()
{
    echo "$binary/benchmarks/applications/${1%-kept}/application-${1%-kept}"
}

php_fpm()
{
    compgen -c php-fpm | sort -V | tail -n 1
}

# One worker, which serves all requests of a run.
write_php_configuration()
{
    cat >"$work/php-fpm.conf" <<CONF
[global]
error_log = $work/php.log
[www]
user = $(id -un)
group = $(id -gn)
listen = $work/api.sock
pm = static
pm.max_children = 1
php_admin_value[post_max_size] = 16M
php_admin_value[upload_max_filesize] = 16M
CONF
}

start_redis()
{
    setpriv --pdeathsig TERM redis-server --port 0 --save '' --unixsocket "$work/redis.sock" >"$work/redis.log" &
    local redis_pid=$!
    await redis_answers || fail "Redis did not start: $(tail -n 1 "$work/redis.log")"
}

redis_answers()
{
    kill -0 "$redis_pid" 2>/dev/null || return 2
    redis-cli -s "$work/redis.sock" ping >/dev/null 2>&1
}

# One nginx worker in front of all applications. The name of the host selects the application.
start_gateway()
{
    local name
    mkdir -p "$work/nginx"
    {
        cat <<CONF
daemon off;
master_process off;
error_log $work/nginx.log;
pid $work/nginx/pid;
events { worker_connections 1024; }
http {
    access_log off;
    client_body_temp_path $work/nginx/body;
    fastcgi_temp_path $work/nginx/fastcgi;
    proxy_temp_path $work/nginx/proxy;
    uwsgi_temp_path $work/nginx/uwsgi;
    scgi_temp_path $work/nginx/scgi;
    client_max_body_size 16m;
    client_body_buffer_size 16m;
    server { listen 127.0.0.1:$port default_server; return 404; }
CONF
        for name in "${applications[@]}"; do
            cat <<CONF
    upstream $name {
        server unix:$work/$name/api.sock;
        $([[ $name != *-kept ]] || echo "keepalive 16;")
    }
    server {
        listen 127.0.0.1:$port;
        server_name $name;
        location ~ ^(?<script>/api)(?<path>/.*)?\$ {
            fastcgi_pass $name;
            $([[ $name != *-kept ]] || echo "fastcgi_keep_conn on;")
            fastcgi_param QUERY_STRING \$query_string;
            fastcgi_param REQUEST_METHOD \$request_method;
            fastcgi_param CONTENT_TYPE \$content_type;
            fastcgi_param CONTENT_LENGTH \$content_length;
            fastcgi_param SCRIPT_NAME \$script;
            fastcgi_param PATH_INFO \$path;
            fastcgi_param REQUEST_URI \$request_uri;
            fastcgi_param DOCUMENT_URI \$document_uri;
            fastcgi_param DOCUMENT_ROOT \$document_root;
            fastcgi_param SERVER_PROTOCOL \$server_protocol;
            fastcgi_param REQUEST_SCHEME \$scheme;
            fastcgi_param GATEWAY_INTERFACE CGI/1.1;
            fastcgi_param SERVER_SOFTWARE nginx/\$nginx_version;
            fastcgi_param REMOTE_ADDR \$remote_addr;
            fastcgi_param REMOTE_PORT \$remote_port;
            fastcgi_param REMOTE_USER \$remote_user;
            fastcgi_param SERVER_ADDR \$server_addr;
            fastcgi_param SERVER_PORT \$server_port;
            fastcgi_param SERVER_NAME \$server_name;
$([ "$name" != php ] || echo "fastcgi_param SCRIPT_FILENAME $php_script;")
        }
    }
CONF
        done
        echo "}"
    } >"$work/nginx.conf"
    setpriv --pdeathsig TERM nginx -c "$work/nginx.conf" -e "$work/nginx.log" >"$work/front.log" 2>&1 &
    front_pid=$!
}

# send APPLICATION CASE COUNT [CONNECTIONS]: sends requests to the application without a web server
send()
{
    local keep=() script=()
    [[ $1 != *-kept ]] || keep=(--keep)
    [ "$1" != php ] || script=("$php_script")
    "$binary/benchmarks/driver/send-requests" "${keep[@]}" "$work/$1/api.sock" "$work/$2.http" "$3" "${4-1}" \
        "${script[@]}" >"$work/reply" ||
        fail "$1 did not answer every $2"
}

# load APPLICATION CASE SECONDS CLIENTS: sends requests through nginx; prints the counts of requests.lua
load()
{
    local request=$work/$1/$2.http # when the application needs one of its own
    [ -f "$request" ] || request=$work/$2.http
    wrk -t1 -c"$4" -d"$3s" --timeout 20s -s "$root/benchmarks/driver/requests.lua" "http://127.0.0.1:$port" \
        -- "$request" "$1" | sed -n 's/^counts //p'
}

# Prints the ids of a process and of its children.
processes_of()
{
    echo "$1" "$(cat "/proc/$1/task"/*/children)"
}

# Prints the nanoseconds of CPU that a process, with its threads and children, has taken.
cpu_time()
{
    local process
    for process in $(processes_of "$1"); do
        cat "/proc/$process/task"/*/schedstat
    done | awk '{ sum += $1 } END { printf "%.0f", sum }'
}

# memory PID FIELD: prints the kilobytes of a process and its children
memory()
{
    local process
    for process in $(processes_of "$1"); do
        cat "/proc/$process/status"
    done | awk -v field="$2:" '$1 == field { sum += $2 } END { print sum }'
}

# run_lengths CASE: prints the numbers of requests of a short and of a long run. Their costs are
# subtracted, so that start and end of the application do not count.
run_lengths()
{
    case $1 in
    upload) echo 1 6 ;;
    *) echo 200 1200 ;;
    esac
}

# per_request COUNTER APPLICATION CASE [CONNECTIONS]: prints what a request costs; COUNTER is a function
# that prints what a run costs
per_request()
{
    local short long of_short of_long
    read -r short long < <(run_lengths "$3")
    of_short=$("$1" "$2" "$3" "$short" "${4-1}")
    of_long=$("$1" "$2" "$3" "$long" "${4-1}")
    awk "BEGIN { printf \"%.1f\", ($of_long - $of_short) / ($long - $short) }"
}

# instructions APPLICATION CASE COUNT CONNECTIONS
instructions()
{
    start "$1" valgrind --tool=callgrind --callgrind-out-file="$work/callgrind"
    send "$1" "$2" "$3" "$4"
    stop_application || true
    sed -n 's/^totals: //p' "$work/callgrind"
}

# syscalls APPLICATION CASE COUNT CONNECTIONS
syscalls()
{
    start "$1" strace -f -c -o "$work/strace"
    send "$1" "$2" "$3" "$4"
    # strace writes its counts when the application ends.
    kill "$(cat "/proc/$application_pid/task/$application_pid/children")"
    wait "$application_pid" || true
    application_pid=
    awk '$NF == "total" { print $4 }' "$work/strace"
}
