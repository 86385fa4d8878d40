#!/bin/sh
# The whole road on the virtual table: a list of colours becomes a chart, two prints of it are scanned and judged, a good
# one and a spoilt one, and each gets its report. Fails unless the verdicts are right. The prints are simulated.
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
for print in good:0.02:0 spoilt:0.2:12; do
    name=${print%%:*}
    share=${print#*:}
    wanted=${share#*:}
    echo
    thinner "${share%:*}" <"$folder/reference.cgats" >"$folder/$name-print.cgats"
    "$@" --option Simulator.Noise=0.0005 --virtual --chart "$folder/$name-print.cgats" scan "$folder/layout.cgats" \
        -o "$folder/$name.cgats" --force
    code=0
    "$@" judge "$folder/$name.cgats" --reference "$folder/reference.cgats" --tolerances tolerances/iso12647-7.toml || code=$?
    [ "$code" = "$wanted" ] || { echo "the verdict on the $name print has exit code $code and not $wanted" >&2; exit 1; }
    "$@" report "$folder/$name.cgats" --reference "$folder/reference.cgats" -o "$folder/$name.html" --force
done
cat <<END

the colours                $folder/colours.cgats
the page to print          $folder/chart.pdf
its layout for the scan    $folder/layout.cgats
what it should measure     $folder/reference.cgats, a simulated print
the good print, measured   $folder/good.cgats, with its report in $folder/good.html
the spoilt one             $folder/spoilt.cgats, with its report in $folder/spoilt.html
END
