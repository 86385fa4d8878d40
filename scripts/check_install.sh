#!/bin/sh
# Installs the Linux package for developers into a scratch folder and uses it as an application's author would: a
# program outside the source tree is built against it with pkg-config and with find_package, and runs, with and
# without an instrument's library. Also tests what the installed library shows and where it searches.
# usage: check_install.sh [BUILD]
set -eu
cd "$(dirname "$0")/.."
build=${1:-build/linux}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root
mkdir "$work/program"

fail() { echo "check_install: $*" >&2; exit 1; }

cmake --install "$build" --component sdk --prefix "$root" >"$work/log" || { cat "$work/log"; exit 1; }
library=$root/lib/libj4tavla64.so
for file in "$library" "$root/include/j4tavla.h" "$root/lib/udev/rules.d/70-j4tavla.rules" \
    "$root/lib/j4tavla64/virtual/libj4tavla64.so" "$root/lib/j4tavla64/virtual/libsorvane64.so"; do
    [ -f "$file" ] || fail "$file is not installed"
done

path=$(readelf -d "$library" | sed -n 's/.*(\(RPATH\|RUNPATH\)).*\[\(.*\)\]/\2/p')
[ "$path" = '$ORIGIN' ] || fail "the library searches in '$path'"
# Absent where no device manager runs, and no part of the test then.
if command -v udevadm >/dev/null && udevadm --help | grep -q '^ *verify'; then
    udevadm verify "$root/lib/udev/rules.d/70-j4tavla.rules"
fi
sed -n 's/^J4T_API.*[ *]\(J4_[A-Za-z]*\)(.*/\1/p' "$root/include/j4tavla.h" | sort >"$work/header"
nm -D --defined-only "$library" | awk '{ print $NF }' | sed 's/@.*//' | sort >"$work/names"
diff "$work/header" "$work/names" || fail "the library shows other names than its header"
[ "$(wc -l <"$work/names")" -eq 22 ] || fail "the header does not have 22 functions"

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

export PKG_CONFIG_PATH="$root/lib/pkgconfig"
[ "$(pkg-config --modversion j4tavla64)" = 1.1.4.104 ] || fail "pkg-config gives another version"
# shellcheck disable=SC2046
gcc -std=c11 -Wall -Wextra -Werror "$work/program/program.c" $(pkg-config --cflags --libs j4tavla64) \
    -o "$work/with_pkg_config"
cmake -S "$work/program" -B "$work/build" -DCMAKE_PREFIX_PATH="$root" -DCMAKE_BUILD_WITH_INSTALL_RPATH=ON \
    >"$work/log" 2>&1 && cmake --build "$work/build" >>"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
mv "$work/build/program" "$work/with_cmake"

# expect PROGRAM PATH: compares what the program prints with standard input
expect() {
    LD_LIBRARY_PATH=$2 "$1" >"$work/printed" || fail "$(basename "$1") ended with $?"
    diff - "$work/printed" || fail "$(basename "$1") printed something else"
}
for program in "$work/with_pkg_config" "$work/with_cmake"; do
    # Without an instrument's library every call says so.
    LD_LIBRARY_PATH=$root/lib "$program" >"$work/printed"
    [ "$(grep -c ' 104$' "$work/printed")" -eq 4 ] || fail "without an instrument's library: $(cat "$work/printed")"
    grep -q "^version .*sorvane64.dll" "$work/printed" || fail "the failure does not name the instrument's library"
    # With the stand-in, and no table: the instrument measures.
    expect "$program" "$root/lib:$root/lib/j4tavla64/virtual" <<'END'
table 2
version Version 1.1.4  Build 104
calibrated 0
measured 0
spectrum 0
END
    # The same program on the virtual table.
    expect "$program" "$root/lib/j4tavla64/virtual" <<'END'
table 0
version Version 1.1.4  Build 104
calibrated 0
measured 0
spectrum 0
END
done
echo "installed package: 22 names, pkg-config and find_package, programs run with and without instrument and table"
