#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# tutorial.sh PROGRAM STEP: the requests that the tutorial shows for that step.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

begin_serving
start_application "$1" "$work/api.sock"
start_front lighttpd

check_transcript "$root/examples/tutorial/$2/transcript.txt" "http://127.0.0.1:$port/api" lighttpd
