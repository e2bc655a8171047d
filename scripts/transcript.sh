# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# Replays a transcript: a text of shell commands and of what they print.
#
#     # A sentence that says what the next commands show
#     $ curl -s "$api/echo?tea=green"
#     {"query":{"tea":["green"]}}
#
# A line "$ ..." is a command; the lines up to the next command, heading or empty line are its
# output, in which the line "\" stands for an empty one. Commands share one shell, so one may set a
# variable for the next. The commands under a heading that ends in "[try]" are those shown to a
# newcomer; a heading that ends in names of front servers, "[lighttpd nginx]", holds for these only.
# Sourced after lib.sh and serving.sh.

# commands_to_try FILE BASE-ADDRESS
commands_to_try()
{
    sed -n -e '/^# .*\[try\]$/,/^$/ {' -e 's/^# \(.*\) \[try\]/\n  # \1/p' -e "s|\\\$api|$2|g" -e 's/^\$ /  /p' -e '}' "$1"
}

# check_transcript FILE BASE-ADDRESS SERVER: fails at the first difference and shows it. The part of
# SERVER before a "-" is the name that headings use.
check_transcript()
{
    local api=$2 server=$3 # the commands use $api
    local line heading='' command='' checked=0
    : >"$work/expected"
    while IFS= read -r line; do
        case $line in
        '' | '#'* | '$ '*) replay_command ;;&
        '#'*) heading=$line ;;
        '$ '*) command=${line#??} ;;
        \\) echo >>"$work/expected" ;;
        ?*) printf '%s\n' "$line" >>"$work/expected" ;;
        esac
    done < <(cat "$1" && echo)
    [ $checked -gt 0 ] || fail "$1 contains no command for $server"
    say "$checked commands behind $server gave the expected answers"
}

# Runs $command and compares its output with $work/expected; then empties both.
replay_command()
{
    if [ -n "$command" ] && heading_applies; then
        eval "$command" >"$work/printed" 2>&1 </dev/null || true
        # The end of the last line is not compared: most answers have none.
        # shellcheck disable=SC1003 # sed's way to end the last line
        [ ! -s "$work/printed" ] || sed -i -e '$a\' "$work/printed"
        if ! diff -u --label expected --label answered "$work/expected" "$work/printed" >"$work/difference"; then
            printf '%s\n$ %s\n' "$heading" "$command" | cat - "$work/difference" >&2
            fail "another answer than expected behind $server on $api"
        fi
        checked=$((checked + 1))
    fi
    command=
    : >"$work/expected"
}

heading_applies()
{
    local names=" ${heading##*[} "
    case $heading in
    *'[try]') return 0 ;;
    *']') [[ ${names/]/ } == *" ${server%%-*} "* ]] ;;
    esac
}
