# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2154

# How many descriptors the application of serving.sh has open. Sourced, never run.

open_descriptors()
{
    find "/proc/$application_pid/fd" -mindepth 1 | wc -l
}

# As many as $descriptors.
as_many_descriptors_as_before()
{
    [ "$(open_descriptors)" -eq "$descriptors" ]
}
