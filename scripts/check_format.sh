#!/bin/sh
# Tests that every C and C++ source is as clang-format writes it.
set -eu
cd "$(dirname "$0")/.."
find . \( -name build -o -name out -o -name vendor -o -name '.?*' \) -prune \
    -o -regex '.*\.\(cpp\|hpp\|h\|c\)' -print0 | xargs -0 -P 2 -n 50 clang-format --dry-run -Werror
echo "every source is formatted"
