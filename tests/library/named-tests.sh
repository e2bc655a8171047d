#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# Every test and script that a document names exists: `Suite.Test`, `Suite.*`, `tests/...`, `scripts/...`.

set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
# shellcheck disable=SC2016 # the backticks are the documents'
names=$(grep -hoP '`\K([A-Z][A-Za-z0-9]+\.([A-Z][A-Za-z0-9]+|\*)|(tests|scripts|fuzz|examples)/[^` *]+)(?=`| )' "$@" | sort -u)
defined=$(grep -rhoP '^TEST(_[FP])?\(\K\w+, +\w+' --include='*.cpp' "$root/tests" | sed 's/, */./')
registered=$(grep -rhoP '(add_test\(NAME|_test\w*\() *\K[\w.]+' --include=CMakeLists.txt "$root/tests")

exists()
{
    case $1 in
    */*) [ -e "$root/$1" ] ;;
    *.\*) grep -q "^${1%\*}" <<<"$defined" ;;
    *) grep -qxF -e "$1" -e "${1#EndToEnd.}" -e "${1#Faults.}" <<<"$defined
$registered" ;;
    esac
}

missing=0
for name in $names; do
    exists "$name" || { echo "named and not there: $name" && missing=1; }
done
echo "$(wc -w <<<"$names") names"
exit $missing
