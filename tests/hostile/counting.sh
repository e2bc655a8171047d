# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# What the checks share. Sourced, never run. They count instructions, because the same work takes the
# same number of them in every run, also on a busy machine.

# instructions PROGRAM FORM SIZE: prints how many the library takes for it. The tunables turn off
# "rep movsb" and "rep stosb", with which glibc copies large blocks: callgrind counts one instruction
# for each byte of these.
instructions()
{
    local file tunables=glibc.cpu.x86_rep_movsb_threshold=1073741824:glibc.cpu.x86_rep_stosb_threshold=1073741824
    file=$(mktemp)
    QT_HASH_SEED=0 LD_BIND_NOW=1 GLIBC_TUNABLES=$tunables valgrind --quiet --tool=callgrind --callgrind-out-file="$file" \
        --collect-atstart=no --toggle-collect='callMeasured*' "$@" >/dev/null
    awk '/^totals:/ { print $2 }' "$file"
    rm "$file"
}

# count_all PROGRAM: reads lines with the name of a form and its sizes, and prints each line with the
# instructions for each size added. Uses all processors.
count_all()
{
    local program=$1
    export -f instructions
    # shellcheck disable=SC2016 # the inner shell's
    xargs -P "$(nproc)" -L 1 bash -c '
        set -eo pipefail
        counts=
        for size in "${@:3}"; do
            count=$(instructions "$1" "$2" "$size")
            [ "${count:-0}" -gt 0 ]
            counts+=" $count"
        done
        echo "$2 ${*:3}$counts"' bash "$program"
}
