#!/usr/bin/env bash
# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# streams.sh GATEWAY SERVER: the server, set up for streams as docs/OPERATION.md says, forwards each event
# at once and serves other requests meanwhile.

# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source-path=SCRIPTDIR source=gateway-client.sh
. "$(dirname "${BASH_SOURCE[0]}")/gateway-client.sh"

deployment_edit='s/enablereuse=on$/& flushpackets=on/'

begin_serving
start_gateway_behind "$2" "$1"
auth=$(log_in)
expect_equal "$auth" "Authorization: SESSION-TOKEN" "${auth% *}"
open_streams
check_streams
