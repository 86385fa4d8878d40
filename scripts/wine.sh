#!/bin/sh
# Runs a Windows program under Wine, in a prefix beside the program's build, or in that of J4T_WINE_PREFIX, without
# windows, sound or messages of Wine's own.
# usage: wine.sh PROGRAM.exe [ARGUMENT...]
set -eu
program=$1
shift
build=$(cd "$(dirname "$program")/.." && pwd)
export WINEPREFIX="${J4T_WINE_PREFIX:-$build/wine}" WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" DISPLAY=
wine=$(command -v wine64 || echo /usr/lib/wine/wine64)
# A server that ends can meet the next program, which then fails: this one stays for a quarter of an hour, longer than
# tests of other builds take that run in between. What it starts stays too, and must not hold the program's output open.
server=/usr/lib/wine/wineserver64
mkdir -p "$WINEPREFIX"
if [ -x "$server" ] && "$server" -p900 </dev/null >/dev/null 2>&1; then
    "$wine" wineboot </dev/null >/dev/null 2>&1 || true
fi
exec "$wine" "$program" "$@"
