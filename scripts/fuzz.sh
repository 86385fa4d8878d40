#!/bin/sh
# Looks for inputs that break a promise, with clang's libFuzzer: so many minutes for each target.
# What is found lies in build/fuzz/found, and belongs into fuzz/corpus once it is mended. Exit code 1 when there is any.
# usage: fuzz.sh MINUTES [TARGET...]
set -eu
cd "$(dirname "$0")/.."
minutes=$1
shift
[ $# -gt 0 ] || set -- chart colours report tolerances trace block wire options library
scripts/install.sh fuzz
cmake -S . -B build/fuzz -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_FLAGS_DEBUG=-O1 -DJ4T_SANITIZE=ON -DJ4T_FUZZ=ON >build/configure-fuzz.log
cmake --build build/fuzz --target fuzzer
mkdir -p build/fuzz/found
found=0
for target in "$@"; do
    grown="build/fuzz/corpus/$target"
    mkdir -p "$grown"
    dictionary=
    [ ! -f "fuzz/$target.dict" ] || dictionary="-dict=fuzz/$target.dict"
    # shellcheck disable=SC2086
    J4_FUZZ_TARGET="$target" build/fuzz/bin/fuzzer "$grown" "fuzz/corpus/$target" $dictionary \
        -max_total_time=$((60 * minutes)) -rss_limit_mb=1024 -malloc_limit_mb=256 -timeout=20 -max_len=4096 \
        -artifact_prefix="build/fuzz/found/$target-" -print_final_stats=1 2>"build/fuzz/$target.log" || found=1
    echo "$target: $(grep -o 'number_of_executed_units: [0-9]*' "build/fuzz/$target.log" || tail -n 1 "build/fuzz/$target.log")"
done
ls build/fuzz/found
exit "$found"
