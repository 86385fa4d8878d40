#!/bin/sh
# Lays the CIE test colour samples out as a chart, scans it on the virtual table with the example program, and
# compares what was measured with what lies on the chart.
# usage: scan_samples.sh FOLDER [PROGRAM...]
#   FOLDER   receives chart.cgats and measured.cgats
#   PROGRAM  runs the example; by default the one that was built for this machine
set -eu
cd "$(dirname "$0")/.."
folder=$1
shift
[ $# -gt 0 ] || set -- build/linux/bin/scan_chart
mkdir -p "$folder"
scripts/make_tcs_chart.sh /usr/share/colord/ref/CIE-TCS.sp >"$folder/chart.cgats"
"$@" -o "Simulator.ChartFile=$folder/chart.cgats" "$folder/chart.cgats" "$folder/measured.cgats"
echo "The measured spectra are in $folder/measured.cgats"
