#!/bin/sh
# Configures and builds one preset; further arguments go to the configuration.
# usage: build.sh PRESET [-DOPTION=VALUE...]
set -eu
cd "$(dirname "$0")/.."
preset=$1
shift
mkdir -p build
log=build/configure-$preset.log
cmake --preset "$preset" "$@" >"$log" 2>&1 || { cat "$log"; exit 1; }
cmake --build --preset "$preset"
