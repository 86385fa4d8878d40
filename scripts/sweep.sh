#!/bin/sh
# Fails each operation of a whole session in each way, and prints the counts: sessions, findings, and how often the
# call in which it failed gave which status. Exit code 1 when there is a finding.
# usage: sweep.sh [BUILD] [ARGUMENT...]    arguments are those of the program sweep, for instance --way usb-once
set -eu
cd "$(dirname "$0")/.."
build=${1-build/linux}
[ $# -eq 0 ] || shift
cmake --build "$build" --target sweep >/dev/null
LD_LIBRARY_PATH="$build/bin" "$build/bin/sweep" "$@"
