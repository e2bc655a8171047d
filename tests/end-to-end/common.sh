# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# What the end-to-end tests share. Sourced, never run.

set -euo pipefail
scripts=$(dirname "${BASH_SOURCE[0]}")/../../scripts
# shellcheck source-path=SCRIPTDIR source=../../scripts/lib.sh
. "$scripts/lib.sh"
# shellcheck source-path=SCRIPTDIR source=../../scripts/serving.sh
. "$scripts/serving.sh"
# shellcheck source-path=SCRIPTDIR source=../../scripts/transcript.sh
. "$scripts/transcript.sh"

# start_showcase PROGRAM [OPTION...]: its database outlives it, until the test ends
start_showcase()
{
    start_application "$1" --socket "$work/api.sock" --database "$work/notes.db" \
        --files "$root/examples/showcase/files" "${@:2}"
}

# Prints what the authorization header must hold from then on.
log_in()
{
    curl -s --max-time 20 --json '{"user": "demo", "password": "tea and biscuits"}' "$api/session" |
        authorization
}

authorization()
{
    grep -o 'SESSION-TOKEN [^"]*'
}

# status_of [CURL-ARGUMENT...]
status_of()
{
    curl -s -o /dev/null --max-time 20 -w '%{http_code}' "$@"
}

# expect_equal WHAT EXPECTED ACTUAL
expect_equal()
{
    [ "$2" = "$3" ] || fail "$1: expected '$2', got '$3'"
}
