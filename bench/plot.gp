# plot.gp: cost against N, a curve for each side. Variables: data (from report.awk), out, heading,
# unit. gnuplot -e "data='...'; out='...'; heading='...'; unit='...'" plot.gp
set terminal svg size 720,440 font "sans-serif,13" background "white" name "plot" noenhanced
set output out
set title heading
set datafile separator "\t"
set datafile missing "?"
set logscale xy
set xlabel "N"
set ylabel unit
set format x "%.0s%c"
set grid xtics ytics lt 1 lw 1 lc rgb "#dddddd"
set key outside right top
stats data skip 1 nooutput
plot for [i=2:STATS_columns] data using 1:i with linespoints lw 2 pt 7 ps 0.6 title columnheader(i)
