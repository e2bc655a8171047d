#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# transcript.sh SHOWCASE SERVER: every request of the showcase's transcript, behind that server as
# examples/deploy sets it up.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

begin_serving
start_showcase_behind "$2" "$1"

check_transcript "$root/examples/showcase/transcript.txt" "http://127.0.0.1:$port/api" "$2"

stop_application || fail "the application ended with status $?"
