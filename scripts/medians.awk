# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# Reads the turns that scripts/benchmark measured, and prints for each case and application the
# medians over the rounds: microseconds of CPU per request, their ratio to those of libfcgi in the
# same round, requests per second, and the web server's microseconds per request.

BEGIN { FS = OFS = "\t" }

FNR == 1 { next }

{
    if (!($2 in seen)) { names[++cases] = $2 }
    seen[$2]
    rounds[$1]
    cpu[$2, $3, $1] = $6 / $4 / 1000
    rate[$2, $3, $1] = $4 / $5 * 1000000
    front[$2, $3, $1] = $7 / $4 / 1000
}

END {
    print "case", "application", "cpu us", "ratio", "requests/s", "nginx us"
    split("bwebapi libfcgi go php", applications, " ")
    for (i = 1; i <= cases; ++i) {
        for (j = 1; j in applications; ++j) { print_medians(names[i], applications[j]) }
    }
}

function print_medians(name, application,    group, round) {
    group = name SUBSEP application
    for (round in rounds) { ratio[group, round] = cpu[group, round] / cpu[name, "libfcgi", round] }
    printf "%s\t%s\t%.1f\t%.2f\t%.0f\t%.1f\n", name, application, median(cpu, group),
        median(ratio, group), median(rate, group), median(front, group)
}

function median(values, group,    round, sorted, count, i) {
    count = 0
    for (round in rounds) {
        for (i = count++; i > 0 && sorted[i] > values[group, round]; --i) { sorted[i + 1] = sorted[i] }
        sorted[i + 1] = values[group, round]
    }
    return count % 2 ? sorted[(count + 1) / 2] : (sorted[count / 2] + sorted[count / 2 + 1]) / 2
}
