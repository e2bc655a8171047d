#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# units.sh SHOWCASE: systemd finds nothing wrong with the units, and how exposed they leave the system
# stays below 0.6 of 10.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# check_units DIRECTORY SERVICE: of examples, with the drop-in
check_units()
{
    local units=$work/units unit verdict
    mkdir -p "$units/$2.d"
    for unit in "$root/examples/$1"/*.{service,socket}; do
        [ ! -f "$unit" ] || sed "s|/usr/local/bin/app |$program |" "$unit" >"$units/${unit##*/}"
    done
    cp "$root/examples/deploy/systemd/hardening.conf" "$units/$2.d"
    verdict=$(SYSTEMD_UNIT_PATH=$units: systemd-analyze verify "$units/${2/@/@1}" 2>&1) || fail "$1: $verdict"
    expect_equal "what systemd says of $1" "" "$verdict"
    verdict=$(SYSTEMD_UNIT_PATH=$units: systemd-analyze security --offline=true --threshold=6 --no-pager "$2" 2>&1) ||
        fail "$1: ${verdict##*→ }"
    say "$1: ${verdict##*→ }"
    rm -r "$units"
}

begin_serving
program=$1
check_units deploy/systemd/own-socket app.service
check_units deploy/systemd/socket-activated app.service
check_units scale-out app@.service
check_units scale-out/redis app@.service
