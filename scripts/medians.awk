# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# Reads the turns that scripts/benchmark measured, and prints for each case, number of clients and
# application the medians over the rounds: microseconds of CPU per request, their ratio to those of the
# application "floor" in the same round, requests per second, their ratio, and the web server's
# microseconds per request. The variable "applications" names the applications in their order.

BEGIN { FS = OFS = "\t" }

FNR == 1 { next }

{
    load = $2 OFS $3
    if (!(load in seen)) { names[++loads] = load }
    seen[load]
    rounds[$1]
    cpu[load, $4, $1] = $7 / $5 / 1000
    rate[load, $4, $1] = $5 / $6 * 1000000
    front[load, $4, $1] = $8 / $5 / 1000
}

END {
    print "case", "clients", "application", "cpu us", "ratio", "requests/s", "rate ratio", "nginx us"
    split(applications, ordered, " ")
    for (i = 1; i <= loads; ++i) {
        for (j = 1; j in ordered; ++j) { print_medians(names[i], ordered[j]) }
    }
}

function print_medians(load, application,    group, divisor, round) {
    group = load SUBSEP application
    divisor = load SUBSEP floor
    for (round in rounds) {
        if (!((group, round) in cpu)) { return }
        ratio[group, round] = cpu[group, round] / cpu[divisor, round]
        rate_ratio[group, round] = rate[group, round] / rate[divisor, round]
    }
    printf "%s\t%s\t%.1f\t%.2f\t%.0f\t%.2f\t%.1f\n", load, application, median(cpu, group),
        median(ratio, group), median(rate, group), median(rate_ratio, group), median(front, group)
}

function median(values, group,    round, sorted, count, i) {
    count = 0
    for (round in rounds) {
        for (i = count++; i > 0 && sorted[i] > values[group, round]; --i) { sorted[i + 1] = sorted[i] }
        sorted[i + 1] = values[group, round]
    }
    return count % 2 ? sorted[(count + 1) / 2] : (sorted[count / 2] + sorted[count / 2 + 1]) / 2
}
