# Speed over the size of a block, for the integration guide.
set terminal svg size 720,360 font "sans-serif,13" background "#fbfcfd"
set datafile separator ","
set logscale x 2
set xtics ("16 KiB" 16, "32" 32, "64" 64, "128" 128, "256" 256, "512" 512, "1 MiB" 1024, "2" 2048, "4" 4096, "8 MiB" 8192)
set xlabel "size of a block" textcolor "#1d2b33"
set ylabel "MiB/s" textcolor "#1d2b33"
set yrange [0:*]
set xrange [13:10000]
set grid ytics linecolor "#d5dde2"
set border 3 linecolor "#41606f"
set tics nomirror textcolor "#1d2b33"
set key top left textcolor "#1d2b33"
plot data using 1:3 every ::1 with linespoints linewidth 2 pointtype 7 pointsize 0.6 linecolor "#2a6f97" title "LargeFileDownload", \
     data using 1:2 every ::1 with linespoints linewidth 2 pointtype 5 pointsize 0.6 linecolor "#b3541e" title "LargeFileUpload"
