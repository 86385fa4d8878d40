#!/bin/sh
# Makes the packages and tries them as who gets them would: the Debian package is unpacked into a scratch root, and its
# tool and examples run on the virtual table that it brings; of the Windows package the parts are compared.
# usage: check_package.sh [LINUX_BUILD [WINDOWS_BUILD]]
set -eu
cd "$(dirname "$0")/.."
linux=$(realpath "${1-build/linux}")
windows=$(realpath "${2-build/windows}")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root

fail() { echo "$1" >&2; exit 1; }

# pack BUILD ENDING: makes the package of a build and prints its name
pack() {
    rm -rf "$1/package"
    cpack --config "$1/CPackConfig.cmake" >"$work/cpack.log" 2>&1 || { cat "$work/cpack.log" >&2; exit 1; }
    echo "$1"/package/*."$2"
}

# require_parts FOUND WHAT: every line of standard input is a line of the file FOUND
require_parts() {
    while read -r part; do
        grep -qxF "$part" "$1" || fail "$2 lacks $part"
    done
}

debian=$(pack "$linux" deb)
dpkg-deb -x "$debian" "$root"
for library in libc6 libstdc++6 libgcc-s1 libusb-1.0-0; do
    dpkg-deb -f "$debian" Depends | grep -qF "$library (>=" || fail "the package does not depend on $library"
done
(cd "$root" && find . ! -type d | sed 's|^\./||') >"$work/debian"
require_parts "$work/debian" "the Debian package" <<'END'
usr/bin/j4tavla
usr/include/j4tavla.h
usr/lib/libj4tavla64.so
usr/lib/j4tavla64/virtual/libj4bench.so
usr/lib/j4tavla64/virtual/libj4tavla64.so
usr/lib/j4tavla64/virtual/libsorvane64.so
usr/lib/udev/rules.d/70-j4tavla.rules
usr/share/doc/j4tavla64/README.md
usr/share/doc/j4tavla64/docs/errors.md
usr/share/doc/j4tavla64/docs/options.md
usr/share/doc/j4tavla64/docs/protocol.md
usr/share/doc/j4tavla64/docs/simulator.md
usr/share/doc/j4tavla64/licenses/CLI11.txt
usr/share/doc/j4tavla64/licenses/nlohmann-json.txt
usr/share/doc/j4tavla64/licenses/uPlot.txt
usr/share/man/man1/j4tavla.1.gz
END
echo "$(basename "$debian"): $(dpkg-deb -f "$debian" Depends)"

scripts/make_tcs_chart.sh /usr/share/colord/ref/CIE-TCS.sp >"$work/chart.cgats"
virtual=$root/usr/lib/j4tavla64/virtual
examples=$root/usr/share/doc/j4tavla64/examples

# The example as it is shipped; other ways to build against the library are tried by check_install.sh.
# shellcheck disable=SC2046
gcc "$examples"/*.c -o "$work/scan_chart" -I"$examples" \
    $(PKG_CONFIG_PATH=$root/usr/lib/pkgconfig pkg-config --cflags --libs j4tavla64) -lm
LD_LIBRARY_PATH=$virtual "$work/scan_chart" -o "Simulator.ChartFile=$work/chart.cgats" "$work/chart.cgats" \
    "$work/measured.cgats" >"$work/log" || { cat "$work/log" >&2; exit 1; }
echo "scan_chart.c: $(tail -n 1 "$work/log")"

python3 "$examples/scan_chart.py" -l "$virtual/libj4tavla64.so" -o "Simulator.ChartFile=$work/chart.cgats" \
    199.5,250,356.5,250,5 >"$work/spectra" 2>"$work/log" || { cat "$work/log" >&2; exit 1; }
echo "scan_chart.py: $(wc -l <"$work/spectra") patches"

tool=$root/usr/bin/j4tavla
"$tool" --virtual info >"$work/log" || { cat "$work/log" >&2; exit 1; }
grep -q '640001' "$work/log" || fail "the tool does not find the virtual table"
"$tool" --virtual scan "$work/chart.cgats" -o "$work/scanned.cgats" >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
grep -q 'NUMBER_OF_SETS 15' "$work/scanned.cgats" || fail "the tool did not measure the 15 patches"
"$tool" report "$work/scanned.cgats" --reference "$work/chart.cgats" -o "$work/report.html" >"$work/log" 2>&1 ||
    { cat "$work/log" >&2; exit 1; }
# The manual has every command that the tool has.
gzip -dc "$root/usr/share/man/man1/j4tavla.1.gz" >"$work/manual"
for command in $("$tool" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z][a-z]*\) .*/\1/p'); do
    grep -q "^\.SS \"Command $command:\"" "$work/manual" || fail "the manual lacks the command $command"
    commands="${commands-} $command"
done
grep -q '^130$' "$work/manual" || fail "the manual lacks the exit codes"
echo "j4tavla: scanned 15 patches and made their report; manual:${commands-}"

zip=$(pack "$windows" zip)
cmake -E tar tf "$zip" | sed 's|^[^/]*/||' >"$work/windows"
require_parts "$work/windows" "the Windows package" <<'END'
README.md
bin/j4tavla.exe
bin/j4tavla64.dll
bin/j4tavla64.dll.debug
docs/errors.md
docs/options.md
docs/protocol.md
docs/simulator.md
examples/ScanChart.cs
examples/scan_chart.c
examples/scan_chart.py
include/j4tavla.h
lib/j4tavla64.lib
lib/libj4tavla64.dll.a
licenses/CLI11.txt
licenses/nlohmann-json.txt
licenses/uPlot.txt
virtual/j4bench.dll
virtual/j4tavla64.dll
virtual/sorvane64.dll
END
echo "$(basename "$zip"): $(grep -c '[^/]$' "$work/windows") files"
