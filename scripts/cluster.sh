# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# Starts what examples/scale-out/redis describes on one machine, on loopback: nginx, four processes of the showcase,
# Redis with two replicas and three Sentinels, PostgreSQL. Sourced after lib.sh and serving.sh, whose
# begin_serving comes first. What ends is started again, as systemd would do it.

declare -A pid_of=()    # name of a part to the process that starts it again when it has ended
declare -A redis_port=() # number of a server of Redis to its port
declare -A sentinel_port=()
process_options=() # further ones for the processes of the showcase

# keeper SIGNAL SECONDS COMMAND...: starts the command again so many seconds after it has ended, until
# SIGTERM, and ends it by the signal.
# shellcheck disable=SC2016 # for another shell
keeper='
end="kill -$1 \$kept; wait \$kept; exit"
pause=$2
shift 2
trap "$end" TERM
while :; do
    "$@" <&0 & kept=$!
    wait $kept
    sleep "$pause" & kept=$!
    wait $kept
done'

# keep NAME SIGNAL SECONDS COMMAND...
keep()
{
    setpriv --pdeathsig TERM bash -c "$keeper" keeper "${@:2}" >>"$work/$1.log" 2>&1 &
    pid_of[$1]=$!
}

# The process that the part NAME consists of; while there is none, the pause.
kept_process()
{
    local children
    read -r -a children <"/proc/${pid_of[$1]}/task/${pid_of[$1]}/children" || true
    echo "${children[0]-}"
}

# Programs of PostgreSQL are not in PATH, and do not run as root.
start_postgresql()
{
    local folder=$work/postgresql programs prefix=()
    programs=$(find /usr/lib/postgresql -name initdb -printf '%h\n' | sort -V | tail -n 1)
    [ -n "$programs" ] || fail "no PostgreSQL in /usr/lib/postgresql"
    mkdir -p "$folder"
    if [ "$(id -u)" = 0 ]; then
        prefix=(setpriv --reuid nobody --regid nogroup --clear-groups)
        chown nobody:nogroup "$folder"
        chmod 711 "$work"
    fi
    "${prefix[@]}" "$programs/initdb" --no-locale --encoding=UTF8 --auth=trust --username=app --no-sync \
        --pgdata="$folder/data" >"$work/initdb.log" || fail "initdb failed: $(tail -n 1 "$work/initdb.log")"
    keep postgresql INT 0.1 "${prefix[@]}" "$programs/postgres" -D "$folder/data" -k "$folder" -c listen_addresses=
    database="postgresql:host=$folder user=app dbname=postgres"
    await postgresql_answers || fail "PostgreSQL did not start: $(tail -n 1 "$work/postgresql.log")"
}

# sql TEXT
sql()
{
    PGOPTIONS='-c client_min_messages=warning' \
        psql -X -q -A -t -v ON_ERROR_STOP=1 -h "$work/postgresql" -U app -d postgres -c "$1"
}

postgresql_answers()
{
    sql 'SELECT 1' >/dev/null 2>&1 || return 1
}

# redis NUMBER COMMAND...
redis()
{
    redis-cli -p "${redis_port[$1]}" "${@:2}" 2>/dev/null
}

# start_redis NUMBER: number 1 is the primary at first, the others are its replicas. A primary that has
# died comes back only after the Sentinels have promoted a replica. Otherwise it could be the primary again
# before they notice.
start_redis()
{
    local folder=$work/redis/$1
    mkdir -p "$folder"
    pick_free_port "redis_port[$1]"
    sed -e "s|^port .*|port ${redis_port[$1]}|" -e "s|^dir .*|dir $folder|" \
        "$root/examples/scale-out/redis/redis.conf" >"$folder/redis.conf"
    [ "$1" = 1 ] || echo "replicaof 127.0.0.1 ${redis_port[1]}" >>"$folder/redis.conf"
    keep "redis-$1" TERM 10 redis-server "$folder/redis.conf"
}

# start_sentinel NUMBER
start_sentinel()
{
    local folder=$work/redis/sentinel-$1
    mkdir -p "$folder"
    pick_free_port "sentinel_port[$1]"
    sed -e "s|^port .*|port ${sentinel_port[$1]}|" -e "s|^dir .*|dir $folder|" \
        -e "s|10.0.0.2 6379|127.0.0.1 ${redis_port[1]}|" \
        "$root/examples/scale-out/redis/sentinel.conf" >"$folder/sentinel.conf"
    keep "sentinel-$1" TERM 0.1 redis-sentinel "$folder/sentinel.conf"
}

# The number of the server that the Sentinels call the primary.
redis_primary()
{
    local address number
    address=$(redis-cli -p "${sentinel_port[1]}" sentinel get-master-addr-by-name app 2>/dev/null | tail -n 1)
    for number in 1 2 3; do
        [ "${redis_port[$number]}" != "$address" ] || echo $number
    done
}

# There is a primary with two replicas, and each Sentinel knows all of them.
redis_is_whole()
{
    local primary number
    primary=$(redis_primary)
    [ -n "$primary" ] || return 1
    [ "$(redis "$primary" info replication | grep -c 'state=online')" = 2 ] || return 1
    for number in 1 2 3; do
        redis-cli -p "${sentinel_port[$number]}" info sentinel 2>/dev/null |
            grep -q 'status=ok,.*slaves=2,sentinels=3' || return 1
    done
}

start_redis_with_sentinels()
{
    local number
    for number in 1 2 3; do
        start_redis $number
    done
    for number in 1 2 3; do
        start_sentinel $number
    done
    await redis_is_whole || fail "Redis did not start: $(tail -qn 1 "$work"/redis-?.log "$work"/sentinel-?.log)"
}

# start_process_number NUMBER ADDRESS [OPTION...]: a process of the showcase; its socket is opened by
# systemd's tool, which hands it over, and stays open while the process is replaced.
start_process_number()
{
    setpriv --pdeathsig TERM systemd-socket-activate --inetd --listen "$2" \
        bash -c "$keeper" keeper TERM 0.1 "$showcase" --database "$database" \
        --files "$root/examples/showcase/files" --demo-accounts --allow-http "${@:3}" >>"$work/process-$1.log" 2>&1 &
    pid_of[process-$1]=$!
}

start_processes()
{
    local options=(--redis-sentinels "127.0.0.1:${sentinel_port[1]},127.0.0.1:${sentinel_port[2]},127.0.0.1:${sentinel_port[3]}"
        --redis-master app --redis-replicas 1 "${process_options[@]}")
    mkdir -p "$work/1" "$work/2"
    pick_free_port process_port_3
    pick_free_port process_port_4
    start_process_number 1 "$work/1/api.sock" "${options[@]}"
    start_process_number 2 "$work/2/api.sock" "${options[@]}"
    start_process_number 3 "127.0.0.1:$process_port_3" "${options[@]}"
    start_process_number 4 "127.0.0.1:$process_port_4" "${options[@]}"
}

# nginx with two processes of its own, of which one may die. Each reply names the process that gave it.
start_cluster_nginx()
{
    deployed deploy/nginx/app_params >"$work/app_params"
    deployed scale-out/redis/nginx.conf |
        sed -e 's/rate=30r\/m/rate=100r\/s/' -e "s/127.0.0.1:9003/127.0.0.1:$process_port_3/" \
            -e "s/127.0.0.1:9004/127.0.0.1:$process_port_4/" \
            -e 's/^ *include app_params;/&\n        add_header X-Process $upstream_addr always;/' >"$work/app.conf"
    nginx_processes="user $(id -un) $(id -gn); worker_processes 2;"
    start_nginx_with "$work/app.conf"
}

# Asks until each process has answered.
all_processes_answer()
{
    local answers
    answers=$(for _ in 1 2 3 4 5 6 7 8; do
        curl -s -o /dev/null --max-time 5 -w '%{http_code} %header{x-process}\n' "http://127.0.0.1:$port/api/echo"
    done | sort -u)
    [ "$(grep -c '^200 ' <<<"$answers")" = 4 ] && [ "$(wc -l <<<"$answers")" = 4 ]
}

start_cluster()
{
    start_postgresql
    start_redis_with_sentinels
    start_processes
    start_front cluster_nginx
    await all_processes_answer || fail "not all processes serve: $(tail -qn 1 "$work"/process-?.log)"
}

# end_parts NAME...
end_parts()
{
    local name
    for name in "$@"; do
        end_process "${pid_of[$name]-}" || true
        unset "pid_of[$name]"
    done
}

# In the order in which they need each other. Instead of end_serving.
end_cluster()
{
    set +e
    trap '' HUP INT TERM
    end_process "$front_pid"
    front_pid=
    end_parts process-{1,2,3,4} sentinel-{1,2,3} redis-{1,2,3} postgresql
    end_serving
}
