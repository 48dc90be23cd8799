# written by scripts/perf.sh
set terminal pngcairo size 900,560 font ",10"
set output "scale.png"
set title "qdsh on the simulated switch: cost by chassis size"
set logscale xy
set xlabel "interfaces"
set ylabel "CPU ms (median)"
set y2label "peak resident MB"
set y2tics
set logscale y2
set key left top
set grid
set xtics (192, 3072, 12288)
plot "scale.dat" using 1:2 with linespoints title "load the chassis", \
     "" using 1:3 with linespoints title "show queuing interface (all)", \
     "" using 1:4 with linespoints dashtype 2 title "its snprintf baseline", \
     "" using 1:5 with linespoints title "show queuing", \
     "" using 1:6 axes x1y2 with linespoints dashtype 3 title "peak MB, load only (right)", \
     "" using 1:7 axes x1y2 with linespoints dashtype 4 title "peak MB, show queuing interface (right)"
