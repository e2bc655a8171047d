# SPDX-FileCopyrightText: The Brindo Web API authors
# SPDX-License-Identifier: MIT

# Draws the reports of scripts/benchmark; run in the folder that holds them.

set terminal svg size 760,360 font "sans-serif,12" background "white"
set datafile separator "\t"
set style data histograms
set style histogram clustered gap 1
set style fill solid 0.9 noborder
set boxwidth 0.9
set grid ytics linecolor rgb "#dddddd" linetype 1
set border 3
set tics nomirror
set key below samplen 1
set linetype 1 linecolor rgb "#1f6feb"
set linetype 2 linecolor rgb "#8c959f"
set linetype 3 linecolor rgb "#2da44e"
set linetype 4 linecolor rgb "#bf8700"
set linetype 5 linecolor rgb "#79c0ff"
applications = "bwebapi bwebapi-kept libfcgi go php"
array colors[5] = [1, 5, 2, 3, 4]
rows(application) = sprintf("< awk -F '\\t' '$2 == 8 && $3 == \"%s\"' requests.tsv", application)

set output "requests.svg"
set title "CPU per request behind nginx, 8 clients; libfcgi alone = 1"
set logscale y 2
set yrange [0.5:64]
plot for [i = 1:words(applications)] rows(word(applications, i)) \
    using 5:xtic(1) linetype colors[i] title word(applications, i)

set output "syscalls.svg"
set title "System calls per request, one at a time"
set yrange [4:2048]
plot for [i = 1:words(applications)] "syscalls.tsv" skip 1 \
    using (column(i + 1)):xtic(1) linetype colors[i] title word(applications, i)
unset logscale y
set autoscale y
set yrange [0:*]

set output "instructions.svg"
set title "Thousand instructions per request"
plot "< grep -v upload instructions.tsv" skip 1 using ($2 / 1000):xtic(1) linetype 1 title "bwebapi", \
    "" skip 1 using ($3 / 1000) linetype 5 title "bwebapi-kept", \
    "" skip 1 using ($4 / 1000) linetype 2 title "libfcgi"

set output "memory.svg"
set title "Resident memory in MB"
plot "memory.tsv" skip 1 using ($2 / 1024):xtic(1) linetype 1 title "idle", \
    "" skip 1 using ($3 / 1024) linetype 2 title "after 1000 hello", \
    "" skip 1 using ($4 / 1024) linetype 3 title "peak of 3 uploads of 10 MB"
