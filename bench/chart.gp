# chart.gp ROWS SVG: the ratios as points with their quartiles, 1 as a line.
# A row: 0 for a heading, its text, median, quartiles.
set datafile separator "\t"
stats ARG1 using 1 nooutput
rows = STATS_records
set terminal svg size 950, 18 * rows + 60 dynamic enhanced background "white" font "sans-serif,11"
set output ARG2
set lmargin 68
set logscale x
set xrange [0.3 : 40]
set xtics (0.5, 1, 2, 5, 10, 20)
set yrange [rows - 0.3 : -0.7]
set grid x
set arrow from 1, graph 0 to 1, graph 1 nohead lw 1.5
set ytics scale 0
unset key
plot ARG1 using 3:0:4:5:ytic(2) with xerrorbars pt 7 ps 0.5 lc rgb "#1f5fa8"
