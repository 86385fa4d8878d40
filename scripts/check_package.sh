#!/bin/sh
# Makes the packages and tries them as who gets them would. The Debian package is unpacked into a scratch root: programs
# outside the source tree are built against it with pkg-config and with find_package and run, with and without an
# instrument's library, and its tool and examples run on the virtual table that it brings. The Python package is unpacked
# beside it and its tests run on it. Of the Windows package the parts are compared. The first programs in four languages
# print what their page has, those in C and C++ under Wine too. The recipe for continuous integration is run as its page
# has it, for Linux and under Wine. What the documents in the packages name is in them.
# usage: check_package.sh [LINUX_BUILD [WINDOWS_BUILD]]
set -eu
cd "$(dirname "$0")/.."
linux=$(realpath "${1-build/linux}")
windows=$(realpath "${2-build/windows}")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root

fail() { echo "$1" >&2; exit 1; }

# quietly COMMAND...: shows what the command says only when it fails
quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log" >&2; fail "failed: $*"; }; }

# pack BUILD ENDING: makes the packages of a build and prints the name of the library's
pack() {
    rm -rf "$1/package"
    quietly cpack --config "$1/CPackConfig.cmake"
    echo "$1"/package/j4tavla64*."$2"
}

# require_parts FOUND: every line of standard input is a line of the file FOUND
require_parts() {
    while read -r part; do
        grep -qxF "$part" "$1" || fail "the $(basename "$1") package lacks $part"
    done
}

# require_named README ROOT: every link of a document, and every place in its tables, leads to something below ROOT
require_named() {
    for document in "$1" "$(dirname "$1")"/docs/*.md; do
        for link in $(sed 's/](\([^)#]*\)/\n=\1\n/g' "$document" | sed -n 's/^=\(.\)/\1/p'); do
            [ -e "$(dirname "$document")/$link" ] || fail "$document: the link $link leads nowhere"
        done
    done
    places=$(sed -n 's/^| `\([^`]*\)` |.*/\1/p' "$1")
    [ -n "$places" ] || fail "$1 names no places"
    for place in $places; do
        [ -e "$2/$place" ] || fail "$1: there is no $place"
    done
}

# block LANGUAGE NUMBER: that block of code of the page on continuous integration
block() {
    awk -v language="\140\140\140$1" -v wanted="$2" '/^```/ { inside = 0 } inside && found == wanted
        $0 == language { ++found; inside = 1 }' docs/continuous_integration.md | grep . || fail "the page has no block $2 of $1"
}

# run_block LANGUAGE NUMBER: runs it as it stands, in the folder of the recipe
run_block() {
    block "$1" "$2" >"$work/block"
    (cd "$work/recipe" && sh -eu "$work/block") >"$work/log" 2>&1 || { cat "$work/log" >&2; fail "block $2 failed"; }
}

debian=$(pack "$linux" deb)
dpkg-deb -x "$debian" "$root"
for library in libc6 libstdc++6 libgcc-s1 libusb-1.0-0; do
    dpkg-deb -f "$debian" Depends | grep -qF "$library (>=" || fail "the package does not depend on $library"
done
(cd "$root" && find . ! -type d | sed 's|^\./||') >"$work/Debian"
require_parts "$work/Debian" <<'END'
usr/bin/j4tavla
usr/include/j4tavla.h
usr/include/j4tavla.hpp
usr/lib/cmake/j4tavla64/j4tavla64Config.cmake
usr/lib/j4tavla64/virtual/libj4bench.so
usr/lib/j4tavla64/virtual/libj4tavla64.so
usr/lib/j4tavla64/virtual/libsorvane64.so
usr/lib/pkgconfig/j4tavla64-virtual.pc
usr/lib/udev/rules.d/70-j4tavla.rules
usr/share/doc/j4tavla64/examples/charts/chart.cgats
usr/share/doc/j4tavla64/examples/charts/chart.pdf
usr/share/doc/j4tavla64/examples/charts/colours.cgats
usr/share/doc/j4tavla64/licenses/CLI11.txt
usr/share/doc/j4tavla64/licenses/nlohmann-json.txt
usr/share/doc/j4tavla64/licenses/rapidxml.txt
usr/share/doc/j4tavla64/licenses/tomlplusplus.txt
usr/share/doc/j4tavla64/licenses/uPlot.txt
usr/share/doc/j4tavla64/tolerances/iso12647-7.toml
END
require_named "$root/usr/share/doc/j4tavla64/README.md" "$root"
echo "$(basename "$debian"): $(dpkg-deb -f "$debian" Depends)"

library=$root/usr/lib/libj4tavla64.so
virtual=$root/usr/lib/j4tavla64/virtual
path=$(readelf -d "$library" | sed -n 's/.*(\(RPATH\|RUNPATH\)).*\[\(.*\)\]/\2/p')
[ "$path" = '$ORIGIN' ] || fail "the library searches in '$path'"
# Absent where no device manager runs, and no part of the test then.
if command -v udevadm >/dev/null && udevadm --help | grep -q '^ *verify'; then
    udevadm verify "$root/usr/lib/udev/rules.d/70-j4tavla.rules"
fi
sed -n 's/^J4T_API.*[ *]\(J4_[A-Za-z]*\)(.*/\1/p' "$root/usr/include/j4tavla.h" | sort >"$work/header"
nm -D --defined-only "$library" | awk '{ print $NF }' | sed 's/@.*//' | sort >"$work/names"
diff "$work/header" "$work/names" || fail "the library shows other names than its header"
[ "$(wc -l <"$work/names")" -eq 22 ] || fail "the header does not have 22 functions"

# A program of somebody else, built in both ways.
mkdir "$work/program"
cat >"$work/program/program.c" <<'END'
#include <j4tavla.h>
#include <stdio.h>

int main(void)
{
    float spectrum[J4_SPECTRUM_LENGTH];
    int connected = J4_IsTableConnected();
    printf("table %d\n", connected);
    printf("version %s\n", J4_GetOption("J4TVersion"));
    J4_SetOption("MeasurementMode", "SingleReflectance");
    printf("calibrated %d\n", J4_Calibrate());
    printf("measured %d\n", J4_TriggerMeasurement());
    printf("spectrum %d\n", J4_GetSpectrum(spectrum, 0));
    return 0;
}
END
cat >"$work/program/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(program LANGUAGES C)
find_package(j4tavla64 1.1 REQUIRED)
add_executable(program program.c)
target_link_libraries(program PRIVATE j4tavla64::j4tavla64)
END
export PKG_CONFIG_PATH="$root/usr/lib/pkgconfig"
version=$(dpkg-deb -f "$debian" Version)
[ "$(pkg-config --modversion j4tavla64)" = "$version" ] || fail "pkg-config gives another version than $version"
flags=$(pkg-config --cflags --libs j4tavla64)
# shellcheck disable=SC2086
gcc -std=c11 -Wall -Wextra -Werror "$work/program/program.c" $flags -o "$work/with_pkg_config"
quietly cmake -S "$work/program" -B "$work/build" -DCMAKE_PREFIX_PATH="$root/usr" -DCMAKE_BUILD_WITH_INSTALL_RPATH=ON
quietly cmake --build "$work/build"
mv "$work/build/program" "$work/with_cmake"

# With the stand-in and no table the instrument measures; the same program works on the virtual table.
for program in "$work/with_pkg_config" "$work/with_cmake"; do
    LD_LIBRARY_PATH=$root/usr/lib "$program" >"$work/printed"
    [ "$(grep -c ' 104$' "$work/printed")" -eq 4 ] || fail "without an instrument's library: $(cat "$work/printed")"
    grep -q "^version .*sorvane64.dll" "$work/printed" || fail "the failure does not name the instrument's library"
    for run in "2 $root/usr/lib:$virtual" "0 $virtual"; do
        LD_LIBRARY_PATH=${run#* } "$program" >"$work/printed" || fail "$program ended with $?"
        printf '%s\n' "table ${run%% *}" "version Version ${version%.*}  Build ${version##*.}" \
            "calibrated 0" "measured 0" "spectrum 0" |
            diff - "$work/printed" || fail "$program printed something else"
    done
done
echo "library: 22 names, pkg-config and find_package, programs run with and without instrument and table"

# The examples as they are shipped, and the tool.
scripts/make_tcs_chart.sh /usr/share/colord/ref/CIE-TCS.sp >"$work/chart.cgats"
examples=$root/usr/share/doc/j4tavla64/examples
# shellcheck disable=SC2086
gcc "$examples"/*.c -o "$work/scan_chart" -I"$examples" $flags -lm
quietly env LD_LIBRARY_PATH="$virtual" "$work/scan_chart" -o "Simulator.ChartFile=$work/chart.cgats" \
    "$work/chart.cgats" "$work/measured.cgats"
echo "scan_chart.c: $(tail -n 1 "$work/log")"
# shellcheck disable=SC2086
g++ -std=c++17 "$examples/scan_rows.cpp" $flags -o "$work/scan_rows"
quietly mcs -out:"$work/ScanChart.exe" "$examples/ScanChart.cs" "$examples/J4Tavla.cs"

python=$(echo "$linux"/package/python3-j4tavla_*_all.deb)
dpkg-deb -x "$python" "$root"
dpkg-deb -f "$python" Depends | grep -qF "j4tavla64 (>= $version)" || fail "the Python package does not depend on j4tavla64"
export PYTHONPATH="$root/usr/lib/python3/dist-packages" PYTHONDONTWRITEBYTECODE=1
J4TAVLA_LIBRARY=virtual J4TAVLA_OPTIONS="Simulator.ChartFile=$work/chart.cgats" \
    python3 "$examples/scan_chart.py" 199.5,250,356.5,250,5 >"$work/spectra" 2>"$work/log" ||
    { cat "$work/log" >&2; exit 1; }
# The example in C has rounded to five digits.
sed '1,/^BEGIN_DATA$/d' "$work/measured.cgats" | head -n 5 | cut -f 2- >"$work/spectra_of_c"
cut -f 3- "$work/spectra" | paste - "$work/spectra_of_c" |
    awk 'NF != 72 { exit 1 } { for (i = 1; i <= 36; ++i) if (($i - $(i + 36)) ^ 2 > 1e-10) exit 1 }' ||
    fail "the examples in C and Python measure differently"
for program in "$work/scan_rows" "mono $work/ScanChart.exe"; do
    # shellcheck disable=SC2086
    LD_LIBRARY_PATH=$virtual $program -o "Simulator.ChartFile=$work/chart.cgats" 199.5,250,356.5,250,5 2>"$work/log" |
        diff "$work/spectra" - || fail "$program does not measure as the example in Python: $(cat "$work/log")"
done
echo "scan_chart.py: $(wc -l <"$work/spectra") patches, as scan_chart.c, scan_rows.cpp and ScanChart.cs"
(cd "$work" && quietly env REAL_LIBRARY="$library" pytest-3 -q -p no:cacheprovider "$OLDPWD/tests/python/test_table.py")
echo "$(basename "$python"): $(tail -n 1 "$work/log")"

# The first programs of the page that is shipped, built from what is shipped.
programs=$work/first
mkdir "$programs"
python3 tests/examples/first_programs.py --extract "$root/usr/share/doc/j4tavla64/docs/languages.md" "$programs"
export J4TAVLA_OPTIONS="Simulator.ChartFile=$work/chart.cgats"

# prints_the_same COMMAND...: what it prints is what stands on the page
prints_the_same() {
    "$@" >"$work/printed" 2>"$work/log" || { cat "$work/log" >&2; fail "failed: $*"; }
    tr -d '\r' <"$work/printed" | diff "$programs/expected.txt" - || fail "$* printed something else"
}

# shellcheck disable=SC2086
gcc -std=c11 "$programs/first.c" $flags -o "$programs/first_c"
{
    printf 'cmake_minimum_required(VERSION 3.25)\nproject(first LANGUAGES CXX)\n'
    cat "$programs/first.cmake"
} >"$programs/CMakeLists.txt"
quietly cmake -S "$programs" -B "$programs/build" -DCMAKE_PREFIX_PATH="$root/usr" -DCMAKE_BUILD_WITH_INSTALL_RPATH=ON
quietly cmake --build "$programs/build"
quietly mcs -out:"$programs/first_cs.exe" "$programs/first.cs" "$examples/J4Tavla.cs"
prints_the_same env LD_LIBRARY_PATH="$virtual" "$programs/first_c"
prints_the_same env LD_LIBRARY_PATH="$virtual" "$programs/build/first"
prints_the_same env J4TAVLA_LIBRARY=virtual python3 "$programs/first.py"

# Mono looks into the library folder of its own installation. One beside the package has the real library there, which
# finds no table: a program that imports it by name gets that, unless a map says otherwise, and J4Tavla.cs does not.
cp "$(command -v mono)" "$root/usr/bin/mono"
ln -s /usr/lib/mono /usr/lib/libmono* "$root/usr/lib"
export MONO_CFG_DIR=/etc
cat >"$work/import.cs" <<'END'
static class Import {
    [System.Runtime.InteropServices.DllImport("j4tavla64")] static extern int J4_IsTableConnected();
    static int Main() { return J4_IsTableConnected(); }
}
END
quietly mcs -out:"$work/import.exe" "$work/import.cs"
status=0
LD_LIBRARY_PATH="$virtual" "$root/usr/bin/mono" "$work/import.exe" || status=$?
[ "$status" -eq 2 ] || fail "an import without a map ended with $status instead of 2: Mono no longer looks beside itself"
sed "s|/usr/lib/|$root/usr/lib/|" "$examples/virtual.exe.config" >"$work/import.exe.config"
quietly "$root/usr/bin/mono" "$work/import.exe"
prints_the_same env LD_LIBRARY_PATH="$virtual" "$root/usr/bin/mono" "$programs/first_cs.exe"
unset J4TAVLA_OPTIONS
echo "first programs: C, C++, C# and Python print the same, also where Mono finds a real library first"

tool=$root/usr/bin/j4tavla
quietly "$tool" --virtual scan "$work/chart.cgats" -o "$work/scanned.cgats"
grep -q 'NUMBER_OF_SETS 15' "$work/scanned.cgats" || fail "the tool did not measure the 15 patches"
gzip -dc "$root/usr/share/man/man1/j4tavla.1.gz" >"$work/manual"
for command in $("$tool" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z][a-z]*\) .*/\1/p'); do
    grep -q "^\.SS \"Command $command:\"" "$work/manual" || fail "the manual lacks the command $command"
    commands="${commands-} $command"
done
grep -q '^130$' "$work/manual" || fail "the manual lacks the exit codes"
echo "j4tavla: scanned 15 patches; manual:$commands"

zip=$(pack "$windows" zip)
mkdir "$work/zip"
(cd "$work/zip" && cmake -E tar xf "$zip")
folder=$(echo "$work"/zip/*)
(cd "$folder" && find . ! -type d | sed 's|^\./||') >"$work/Windows"
require_parts "$work/Windows" <<'END'
bin/j4tavla.exe
bin/j4tavla64.dll
bin/j4tavla64.dll.debug
examples/J4Tavla.cs
examples/ScanChart.cs
examples/charts/chart.cgats
examples/charts/chart.pdf
examples/charts/colours.cgats
examples/scan_chart.c
examples/scan_chart.py
include/j4tavla.h
include/j4tavla.hpp
lib/cmake/j4tavla64/j4tavla64Config.cmake
lib/j4tavla64.lib
lib/libj4tavla64.dll.a
lib/pkgconfig/j4tavla64-virtual.pc
licenses/CLI11.txt
licenses/nlohmann-json.txt
licenses/rapidxml.txt
licenses/tomlplusplus.txt
licenses/uPlot.txt
python/j4tavla/__init__.py
tolerances/iso12647-7.toml
virtual/j4bench.dll
virtual/j4tavla64.dll
virtual/sorvane64.dll
END
require_named "$folder/README.md" "$folder"

# Two first programs, with the virtual table's DLLs beside them; the folder shares the Wine of the build's tests.
run=$windows/first
rm -rf "$run"
mkdir "$run"
cp "$folder"/virtual/*.dll "$run"
x86_64-w64-mingw32-gcc -std=c11 "$programs/first.c" -I"$folder/include" -L"$folder/lib" -lj4tavla64 -o "$run/first_c.exe"
x86_64-w64-mingw32-g++-posix -std=c++17 -static "$programs/first.cpp" -I"$folder/include" "$folder/lib/libj4tavla64.dll.a" \
    -o "$run/first_cpp.exe"
export J4TAVLA_OPTIONS="Simulator.ChartFile=$work/chart.cgats"
for program in first_c first_cpp; do
    prints_the_same scripts/wine.sh "$run/$program.exe"
done
rm -rf "$run"
echo "first programs: C and C++ under Wine"
echo "$(basename "$zip"): $(wc -l <"$work/Windows") files"

# The recipe for continuous integration, in a folder that has the packages and a chart, and nothing else.
mkdir "$work/recipe" "$work/recipe/program" "$work/bin"
block c 1 >"$work/recipe/table_test.c"
block cmake 1 >"$work/recipe/CMakeLists.txt"
cp "$debian" "$zip" "$work/chart.cgats" "$work/recipe"
unset PKG_CONFIG_PATH J4TAVLA_OPTIONS
measured="0.220 at 380 nm, 0.470 at 730 nm"
run_block sh 1
grep -q '100% tests passed, 0 tests failed out of 2' "$work/log" || fail "the recipe ran no tests: $(cat "$work/log")"
run_block sh 2
[ "$(cat "$work/log")" = "$measured" ] || fail "without CMake it printed $(cat "$work/log")"
ln -s "$PWD/scripts/wine.sh" "$work/bin/wine"
ln -s "$windows/wine" "$work/recipe/wine"
export PATH="$work/bin:$PATH"
run_block sh 3
grep -q '100% tests passed, 0 tests failed out of 2' "$work/log" || fail "no tests ran under Wine: $(cat "$work/log")"
# A program that has no DLL beside it.
cp "$work/recipe/build-windows/table_test.exe" "$work/chart.cgats" "$work/recipe/program"
{ printf "set SDK=%%CD%%\\..\\%s\n" "$(basename "$folder")" && block bat 1; } | sed 's/$/\r/' >"$work/recipe/program/run.bat"
(cd "$work/recipe/program" && wine cmd /c run.bat) >"$work/log" 2>&1
tr -d '\r' <"$work/log" | grep -qxF "$measured" || fail "in Windows' command prompt: $(cat "$work/log")"
echo "recipe for continuous integration: on Linux with CMake and pkg-config, under Wine, at the command prompt"
