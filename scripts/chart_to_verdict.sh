#!/bin/sh
# The whole road on the virtual table: a list of colours becomes a chart, prints of it are scanned and judged, a good one
# and a spoilt one, and each gets its report; what was measured is handed over, and prints of six weeks become a trend.
# Fails unless the verdicts are right. The prints are simulated.
# usage: chart_to_verdict.sh FOLDER [TOOL...]
#   FOLDER  receives all files
#   TOOL    runs j4tavla; by default the one that was built for this machine
set -eu
cd "$(dirname "$0")/.."
folder=$1
shift
[ $# -gt 0 ] || set -- build/linux/bin/j4tavla
mkdir -p "$folder"

# thinner SHARE: the print of standard input with so much less density of magenta
thinner() {
    LC_ALL=C awk -v share="$1" 'BEGIN { FS = OFS = "\t" }
        /^SAMPLE_ID/ { for (i = 1; i <= NF; ++i) if ($i == "CMYK_M") ink = i; else if ($i ~ /^SPECTRAL_NM(4[5-9]|5)/) band[i] = 1 }
        ink && NF >= ink && $ink + 0 > 0 { for (i in band) $i = sprintf("%.5f", 0.88 * ($i / 0.88) ^ (1 - share)) }
        { print }'
}

cp examples/charts/colours.cgats "$folder/colours.cgats"
"$@" chart "$folder/colours.cgats" -o "$folder/chart.pdf" --layout "$folder/layout.cgats" --force \
    --simulated-print "$folder/reference.cgats"

# measure NAME SHARE: what the table finds on a print with so much less magenta
measure() {
    name=$1
    thinner "$2" <"$folder/reference.cgats" >"$folder/$name-print.cgats"
    shift 2
    "$@" --option Simulator.Noise=0.0005 --virtual --chart "$folder/$name-print.cgats" scan "$folder/layout.cgats" \
        -o "$folder/$name.cgats" --force
}

# verdict CODE COMMAND...: the command has to end with this code
verdict() {
    wanted=$1
    shift
    code=0
    "$@" || code=$?
    [ "$code" = "$wanted" ] || { echo "exit code $code and not $wanted: $*" >&2; exit 1; }
}

for print in good:0.02:0 spoilt:0.2:12; do
    name=${print%%:*}
    share=${print#*:}
    echo
    measure "$name" "${share%:*}" "$@"
    reference="--reference $folder/reference.cgats --tolerances tolerances/iso12647-7.toml"
    # shellcheck disable=SC2086
    verdict "${share#*:}" "$@" judge "$folder/$name.cgats" $reference
    # shellcheck disable=SC2086
    verdict "${share#*:}" "$@" report "$folder/$name.cgats" $reference -o "$folder/$name.html" --force >"$folder/report.log"
done

echo
"$@" convert "$folder/good.cgats" -o "$folder/good.cxf" --force
# All of it takes seconds; the prints are dated as if a week lay between them.
week=1
for print in 0.00:03-02 0.02:03-09 0.01:03-16 0.05:03-23 0.09:03-30 0.14:04-06; do
    measure dated "${print%:*}" "$@" >/dev/null
    sed "s/^CREATED .*/CREATED \"2026-${print#*:}T12:00:00Z\"/" "$folder/dated.cgats" >"$folder/week$week.cgats"
    week=$((week + 1))
done
rm "$folder/dated.cgats" "$folder/dated-print.cgats"
rm "$folder/report.log"
"$@" trend "$folder"/week?.cgats --reference "$folder/reference.cgats" --tolerances tolerances/iso12647-7.toml \
    --baseline 3 -o "$folder/trend.html" --force
cat <<END

the colours                $folder/colours.cgats
the page to print          $folder/chart.pdf
its layout for the scan    $folder/layout.cgats
what it should measure     $folder/reference.cgats, a simulated print
the good print, measured   $folder/good.cgats, with its report in $folder/good.html
the spoilt one             $folder/spoilt.cgats, with its report in $folder/spoilt.html
for other software         $folder/good.cxf
six weeks                  $folder/week1.cgats to week6.cgats, over time in $folder/trend.html
END
