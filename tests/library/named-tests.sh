#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# Every test and script that a document names exists: `Suite.Test`, `Suite.*`, `Suite.When*Throws`,
# `Instances/Suite.Test`, `tests/...`, `scripts/...`.

set -euo pipefail
set -f # names may have stars
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
# shellcheck disable=SC2016 # the backticks are the documents'
names=$(grep -hoP '`\K(([A-Z]\w+/)?[A-Z]\w+\.[A-Z*][\w*]*|(tests|scripts|fuzz|examples)/[^` *]+)(?=`| )' "$@" | sort -u)
defined=$(grep -rhoP '^TEST(_[FP])?\(\K\w+, +\w+' --include='*.cpp' "$root/tests" | sed 's/, */./')
instances=$(grep -rhzoP 'INSTANTIATE_TEST_SUITE_P\(\s*\K\w+,\s*\w+' --include='*.cpp' "$root/tests" |
    tr -d ' \n' | tr '\0,' '\n/')
registered=$(grep -rhoP '(add_test\(NAME|_test\w*\() *\K[\w.]+' --include=CMakeLists.txt "$root/tests")

exists()
{
    local pattern=${1/./[.]}
    case $1 in
    [A-Z]*/*) grep -qxF "${1%.*}" <<<"$instances" && exists "${1#*/}" ;;
    */*) [ -e "$root/$1" ] ;;
    *\**) grep -qx "${pattern//\*/.*}" <<<"$defined" ;;
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
