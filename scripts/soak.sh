#!/bin/sh
# The long run on the virtual table: 10,000 sessions in one process, and 500 scans killed at any moment. Exit code 1 when
# memory or handles grow, or a row that was reported is lost.
# usage: soak.sh [SESSIONS [KILLS]]
set -eu
cd "$(dirname "$0")/.."
cmake --build build/linux --target j4tavla >/dev/null
exec python3 tests/soak/soak.py build/linux build/linux/soak "$@"
