#!/bin/sh
# Lays colour samples out as a chart for the bench and for the example: rows of five patches on white paper.
# Reads the spectra from a file in the form of colord's CIE-TCS.sp (steps of 5 nm) and writes CGATS.17 with a
# layout (steps of 10 nm, 380 to 730).
# usage: make_tcs_chart.sh SAMPLES.sp > CHART.cgats
set -eu
[ $# -eq 1 ] || { echo "usage: $0 SAMPLES.sp > CHART.cgats" >&2; exit 2; }

LC_ALL=C awk '
BEGIN {
    # Millimetres: middle of the first patch, size of a patch, white between patches, patches in a row.
    firstX = 220; firstY = 250; size = 25; gap = 4; inRow = 5
    from = 380; to = 730; step = 10
}
{ gsub(/\r/, "") }
$1 == "BEGIN_DATA_FORMAT" { inFormat = 1; next }
$1 == "END_DATA_FORMAT" { inFormat = 0; next }
$1 == "BEGIN_DATA" { inData = 1; next }
$1 == "END_DATA" { inData = 0; next }
inFormat { for (i = 1; i <= NF; ++i) column[$i] = ++fields; next }
inData && NF > 0 {
    if (NF != fields) {
        print FILENAME ":" NR ": " NF " values instead of " fields > "/dev/stderr"
        failed = 1
        exit 1
    }
    row = sprintf("%s\t%d\t%d\t%d\t%d", $(column["SAMPLE_ID"]), firstX + (count % inRow) * (size + gap),
                  firstY + int(count / inRow) * (size + gap), size, size)
    for (w = from; w <= to; w += step) {
        if (!(("SPEC_" w) in column)) {
            print FILENAME ": no values at " w " nm" > "/dev/stderr"
            failed = 1
            exit 1
        }
        row = row "\t" $(column["SPEC_" w])
    }
    rows[count++] = row
}
END {
    if (failed || count == 0) {
        if (!failed) print "no samples found" > "/dev/stderr"
        exit 1
    }
    print "CGATS.17"
    print "DESCRIPTOR \"Colour samples as a chart\""
    print "KEYWORD \"LAYOUT_ORIGIN\""
    print "LAYOUT_ORIGIN \"CENTRE\""
    print "KEYWORD \"PAPER_REFLECTANCE\""
    print "PAPER_REFLECTANCE \"0.88\""
    print "NUMBER_OF_FIELDS " 5 + (to - from) / step + 1
    print "BEGIN_DATA_FORMAT"
    line = "SAMPLE_NAME\tX\tY\tWIDTH\tHEIGHT"
    for (w = from; w <= to; w += step) line = line "\tSPECTRAL_NM" w
    print line
    print "END_DATA_FORMAT"
    print "NUMBER_OF_SETS " count
    print "BEGIN_DATA"
    for (i = 0; i < count; ++i) print rows[i]
    print "END_DATA"
}' "$1"
