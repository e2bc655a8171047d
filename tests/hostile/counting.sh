# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# What the checks share. Sourced, never run. Instructions do not depend on what else the machine
# does, and the same work takes the same number of them every time.

# instructions PROGRAM FORM SIZE: prints how many the library takes for it. Of copies that the
# processor makes in one instruction, as glibc has it do from some size on, each byte would count.
instructions()
{
    local file tunables=glibc.cpu.x86_rep_movsb_threshold=1073741824:glibc.cpu.x86_rep_stosb_threshold=1073741824
    file=$(mktemp)
    QT_HASH_SEED=0 LD_BIND_NOW=1 GLIBC_TUNABLES=$tunables valgrind --quiet --tool=callgrind --callgrind-out-file="$file" \
        --collect-atstart=no --toggle-collect='callMeasured*' "$@" >/dev/null
    awk '/^totals:/ { print $2 }' "$file"
    rm "$file"
}

# Of each form, whose name and sizes stand in a line: that line, and the instructions of each size.
# All processors count.
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
