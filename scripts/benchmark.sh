#!/bin/sh
# Runs the benchmarks, which report ratios measured side by side.
set -eu
cd "$(dirname "$0")/.."
for program in call channel table scan; do
    "build/linux/bin/${program}_benchmarks" "$@" 2>/dev/null
done
