#!/bin/sh
# Puts what is shipped into out/, from the given built presets.
# usage: ship.sh PRESET...
set -eu
cd "$(dirname "$0")/.."
for preset in "$@"; do
    cmake --install "build/$preset" --component out --strip --prefix out >/dev/null
done
