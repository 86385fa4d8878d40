#!/bin/sh
# Fails each operation of a whole session in each way, and prints the counts: sessions, findings, and how often the
# call in which it failed gave which status. Then the same for the files of a scan. Exit code 1 when there is a finding.
# usage: sweep.sh [BUILD]
set -eu
cd "$(dirname "$0")/.."
build=${1-build/linux}
cmake --build "$build" --target sweep j4tavla >/dev/null
LD_LIBRARY_PATH="$build/bin" "$build/bin/sweep"
tests/tools/file_sweep.py "$build/bin/j4tavla" "$build/file-sweep"
