#!/bin/sh
# Renders reports in headless Chromium, uses them (probe.js), compares what there is to see with what has to be
# there, and leaves screenshots to look at. Fails on anything the browser writes to its console. A start of the browser
# costs more than all that is done in it, so there is one for each page.
# usage: browser_test.sh TOOL FOLDER
#   TOOL    the command-line tool
#   FOLDER  receives charts, reports and screenshots
set -eu
tool=$1
folder=$2
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$folder"
mkdir -p "$folder"
cd "$folder"
folder=$(pwd)
export HOME="$folder" XDG_CONFIG_HOME="$folder/config" XDG_CACHE_HOME="$folder/cache" XDG_STATE_HOME="$folder/state"

fail() { echo "$1" >&2; exit 1; }

# browse PAGE OPTION...: runs the browser; standard output is its own, its console goes to PAGE.console
browse() {
    opened=$1
    shift
    rm -rf profile
    chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking \
        --disable-component-update --disable-sync --hide-scrollbars --virtual-time-budget=5000 \
        --window-size=1300,2600 --user-data-dir="$folder/profile" --enable-logging=stderr --log-level=0 \
        "$@" "file://$folder/$opened" 2>"$opened.log"
    grep 'CONSOLE' "$opened.log" >"$opened.console" || true
}

# see PAGE: the lines that the probe wrote into a copy of the page; the picture is taken behind it
see() {
    { cat "$1"; echo "<script>"; cat "$here/probe.js"; echo "</script>"; } >"probed-$1"
    browse "probed-$1" --dump-dom --screenshot="$folder/${1%.html}.png" >"probed-$1.dom"
    [ -s "${1%.html}.png" ] || fail "no screenshot of $1"
    if [ -s "probed-$1.console" ]; then
        cat "probed-$1.console" >&2
        fail "$1 wrote to the console"
    fi
    sed -n '/<pre id="probe"/,/<\/pre>/p' "probed-$1.dom" | grep ': ' |
        sed 's/&lt;/</g; s/&gt;/>/g; s/&amp;/\&/g' || fail "$1 could not be used"
}

# expect PAGE: compares what is seen with standard input, whose lines may be some of those seen
expect() {
    cat >"$1.expected"
    see "$1" >"$1.seen"
    grep -Fxf "$1.expected" "$1.seen" >"$1.found" || true
    diff -u "$1.expected" "$1.found" >&2 || { cat "$1.seen" >&2; fail "$1 does not show what it has to"; }
    echo "$1: $(wc -l <"$1.expected") things seen as expected, $(wc -c <"$1") bytes"
}

# chart COLUMNS ROWS SHIFT: a chart of smooth spectra whose patches the shift makes lighter, one more than the other
chart() {
    awk -v columns="$1" -v rows="$2" -v shift="$3" 'BEGIN {
        print "CGATS.17\nKEYWORD \"SCAN_SPEED\"\nSCAN_SPEED \"160\"\nKEYWORD \"INTEGRATION_TIME\""
        print "INTEGRATION_TIME \"0.005\"\nBEGIN_DATA_FORMAT\nSAMPLE_NAME X Y WIDTH HEIGHT SCAN_ROW SCAN_COLUMN"
        print "SCAN_WAY SCAN_SAMPLES SCAN_SPREAD SCAN_RESIDUAL CMYK_C CMYK_M CMYK_Y CMYK_K"
        for (w = 380; w <= 730; w += 10) printf "SPECTRAL_NM%d ", w
        print "\nEND_DATA_FORMAT\nBEGIN_DATA"
        for (i = 0; i < columns * rows; ++i) {
            column = i % columns
            row = int(i / columns)
            name = sprintf("P%d_%d", row + 1, column + 1)
            if (i == 2) name = "</script><script>console.error(1)</script>"
            if (i == columns - 1) name = "a name that is longer than the names of patches are"
            if (i == 3) name = "<img src=x>&amp;"
            printf "\"%s\" %d %d 12 12 %d %d FITTED 7 0.1 0.02", name, 200 + 14 * column, 200 + 14 * row, row + 1, column + 1
            # the last row of the small chart is a ramp of cyan, which covers 1.2 times what it should up to 83 percent
            ramp = row == 7 && columns == 12
            printf ramp ? " %d 0 0 0" : " 5 %d 5 5", ramp ? (column > 9 ? 100 : 10 * column) : 5
            covered = column > 8 ? 1 : 0.12 * column
            for (w = 380; w <= 730; w += 10) {
                top = 400 + (i * 37) % 300
                if (ramp) printf " %.5f", covered * (w > 590 ? 0.05 : 0.8) + (1 - covered) * 0.85
                else printf " %.5f", 0.1 + 0.6 * exp(-((w - top) / (40 + i % 60)) ^ 2) + shift * (1 + i % 5)
            }
            print ""
        }
        print "END_DATA"
    }'
}

# The browser's complaints are noticed: a page that logs an error, throws, or asks for anything outside of it, which
# the report's policy forbids.
policy=$(sed -n '/http-equiv/,/">/p' "$here/../../tools/report/template.html")
printf '<!DOCTYPE html><meta charset="utf-8"><link rel="icon" href="data:,">%s%s%s%s' "$policy" \
    '<script>console.error("complaint")</script>' '<script>undefined.member</script>' '<img src="missing.png">' >control.html
browse control.html --dump-dom >/dev/null
for fault in 'complaint' 'reading .member' 'missing\.png'; do
    grep -q "$fault" control.html.console || fail "the control page's fault '$fault' was not noticed"
done

# Colours with known differences (Sharma, Wu and Dalal 2005), without places, spectra or speed.
head='CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_NAME LAB_L LAB_A LAB_B\nEND_DATA_FORMAT\nBEGIN_DATA\n'
printf "$head"'A1 50 0 -82.7485\nA2 50 -1 2\nA3 73 25 -18\nA4 50 0 0\nEND_DATA\n' >pairs.cgats
printf "$head"'A1 50 2.6772 -79.7751\nA2 50 0 0\nA3 50 2.5 0\nEND_DATA\n' >pairs-reference.cgats
printf '%s\n' 'title = "Trial"' 'subset = true' '[[rule]]' 'name = "<b>all</b>"' 'mean = 12' 'maximum = 27.14' >limits.toml
status=0
"$tool" report pairs.cgats --reference pairs-reference.cgats --tolerances limits.toml -o pairs.html >/dev/null 2>&1 || status=$?
[ $status -eq 12 ] || fail "a report of a chart that fails ended with $status"
expect pairs.html <<'EXPECTED'
subject: 4 patches of pairs.cgats, compared with pairs-reference.cgats
patches: 4
names: A1, CIEDE2000 2.04 | A2, CIEDE2000 2.37 | A3, CIEDE2000 27.15 | A4
verdict: shown
summary: shown
readings: hidden
travel: hidden
told verdict: fail 1 of 2 limits not held. Rules cover 3 of 4 patches.
limits: <b>all</b>CIEDE2000, mean 12.00 10.52 pass 3 A3 27.15A2 2.37A1 2.04 | <b>all</b>CIEDE2000, maximum 27.14 27.15 fail 3 A3 27.15A2 2.37A1 2.04
marks: 3
marks beyond their patches: 0
spectrum plot: no canvas
histogram plot: drawn
hover: Patch A1
left: Patch A3
summary table: CIEDE2000 3 10.52 24.67 27.15 | CIE 1976 3 14.37 33.58 36.87
overlays: CIEDE2000 | CIE 1976 | Off
CIE 1976: A1, CIE 1976 4.00 | Patches by difference (CIE 1976) | A3
off: figures plain
EXPECTED

chart 12 8 0.01 >chart.cgats
chart 12 8 0 >reference.cgats
"$tool" report chart.cgats --reference reference.cgats -o chart.html >/dev/null
expect chart.html <<'EXPECTED'
patches: 96
verdict: hidden
summary: shown
differences: shown
worst: shown
tones: shown
readings: shown
travel: shown
conditions: shown
marks beyond their patches: 0
tone values: C 0 0.0 0.0 | C 10 12.0 2.0 | C 20 24.0 4.0 | C 30 36.0 6.0 | C 40 48.0 8.0 | C 50 60.0 10.0
sideways: 
spectrum plot: drawn
histogram plot: drawn
tones plot: drawn
travel plot: drawn
hover: Patch P1_1
in tab order: 1
right: Patch P1_2
down: Patch P2_2
end: Patch P8_12
focus: 95
rows to choose: 8
travel table: filled
EXPECTED
grep -q '</script><script>console.error(1)</script>, CIEDE2000' chart.html.seen || fail "a name was changed"
grep -q '<img src=x>&amp;, CIEDE2000' chart.html.seen || fail "a name was changed"

"$tool" report chart.cgats -o alone.html >/dev/null
expect alone.html <<'EXPECTED'
subject: 96 patches of chart.cgats, without a reference
patches: 96
summary: hidden
differences: hidden
worst: hidden
travel: shown
spectrum plot: drawn
histogram plot: no canvas
travel plot: drawn
EXPECTED

chart 100 100 0.002 >large.cgats
chart 100 100 0 >large-reference.cgats
"$tool" report large.cgats --reference large-reference.cgats -o large.html >/dev/null
# Only what differs by more than the first limit has a mark.
marked=$(grep -o '"differences":\[[0-9.]*' large.html | awk -F'[' '$2 > 1' | wc -l)
expect large.html <<EXPECTED
patches: 10000
marks: $marked
histogram plot: drawn
right: Patch P1_2
down: Patch P2_2
end: Patch P100_100
rows to choose: 100
EXPECTED

# Several measurements, given in another order than that of time; the last is lighter, which its curves show.
for day in 3 1 2 4; do
    chart 6 2 "0.00$((day == 4 ? 9 : 2 + day % 2))$day" |
        sed "s/^CGATS.17/&\nCREATED \"2026-03-0${day}T12:00:00Z\"/" >"<b>$day.cgats"
done
chart 6 2 0 >trend-reference.cgats
"$tool" trend '<b>3.cgats' '<b>1.cgats' '<b>4.cgats' '<b>2.cgats' --reference trend-reference.cgats --baseline 3 \
    -o trend.html >/dev/null
expect trend.html <<'EXPECTED'
subject: 4 measurements of 12 patches, 2026-03-01T12:00:00Z to 2026-03-04T12:00:00Z, compared with trend-reference.cgats
notices: The control limits are of 3 measurements only: they are rough.
sideways: 
curves: all patches: CIEDE2000, mean | all patches: CIEDE2000, 95th percentile | all patches: CIEDE2000, maximum
curve plots: drawn drawn drawn
rings: 1 1 1
patch plots: 12 drawn
patch table: 12
tones: hidden
order: <b>1.cgats <b>2.cgats <b>3.cgats <b>4.cgats
EXPECTED
# With the ramp of an ink, which yellows from one to the next.
for day in 1 2 3; do {
    printf "${head%%LAB_L*}CMYK_C CMYK_M CMYK_Y CMYK_K LAB_L${head#*LAB_L}"
    printf 'T%d %d 0 0 0 %d %d %d\n' 0 0 95 0 -2 1 25 84 -9 $((day - 16)) 2 50 73 -19 $((day - 29)) \
        3 75 63 -28 $((day - 41)) 4 100 55 -36 -50
    echo END_DATA
} >tones.$day.cgats; done
"$tool" trend tones.2.cgats tones.3.cgats --reference tones.1.cgats -o tones.html >/dev/null
expect tones.html <<'EXPECTED'
tones: C drawn 5 rows
EXPECTED
grep -q '</script><script>console.error(1)</script>: ' trend.html.seen || fail "a name was changed"

# What was said in a scan of two rows of this chart, and a text that is no element.
chart 12 2 0 >rows.cgats
"$tool" --virtual rows.cgats --option Simulator.TraceFile=trace.jsonl scan rows.cgats --trust-place -o rows-measured.cgats >/dev/null
printf '{"time":60000000,"kind":"return","name":"</script><script>console.error(1)</script>","status":1}\n' >>trace.jsonl
"$tool" trace trace.jsonl -o trace.html >/dev/null
expect trace.html <<'EXPECTED'
subject: trace.jsonl: 60.000 s, 10 motions, 584 samples, 3 failures
sideways: 
rows in tables: 2 3
begin: Where the instrument is is not known yet. 0 of 2 rows done, 0 samples taken.
end: The instrument is at x 200.0 mm, y 217.5 mm. 2 of 2 rows done, 584 samples taken.
end of dialogue: 60.000</script><script>console.error(1)</script> = 1
bed plot: drawn
last failure: 2.176instrument J4_TriggerMeasurement() = 3: Instrument 240118 is not calibrated in the mode SingleReflectance.
row 1: The instrument is at x 186.0 mm, y 200.0 mm. 0 of 2 rows done, 5 samples taken.
half-way: The instrument is at x 277.0 mm, y 200.0 mm. 0 of 2 rows done, 128 samples taken.
button: Pause
playing: time goes on
EXPECTED

# On a phone. The browser makes no window that narrow, so the page stands in a frame.
for page in chart trend trace; do
    cat >$page-phone.html <<PAGE
<!DOCTYPE html><meta charset="utf-8"><link rel="icon" href="data:,">
<body style="margin:0"><iframe src="probed-$page.html" width="320" height="2600" style="border:0"></iframe>
<script>addEventListener('message', event => {
    document.body.append(Object.assign(document.createElement('pre'), {id: 'seen', textContent: event.data}));
});</script>
PAGE
    browse $page-phone.html --dump-dom --screenshot="$folder/$page-phone.png" >phone.dom
    grep -qxF 'sideways: ' phone.dom || { grep 'sideways' phone.dom >&2; fail "$page.html does not fit a phone"; }
    grep -qE '^(travel plot: drawn|curve plots: drawn.*|bed plot: drawn)$' phone.dom || fail "$page.html does not draw itself on a phone"

    browse probed-$page.html --blink-settings=preferredColorScheme=0 --screenshot="$folder/$page-dark.png" \
        --no-pdf-header-footer --print-to-pdf="$folder/$page.pdf" >/dev/null
    ! cmp -s $page.png $page-dark.png || fail "the dark scheme of $page.html looks like the light one"
    [ -s $page.pdf ] || fail "$page.html can't be printed"
done
rm -rf profile config cache
