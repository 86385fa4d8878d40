#!/bin/sh
# Prints how much of all lines of code is test code. Between a quarter and a third is wanted.
# Sources and scripts count; documents, build descriptions, data and vendored files don't.
set -eu
cd "$(dirname "$0")/.."

# lines FOLDER: all lines of code below it
lines() {
    find "$1" \( -name build -o -name out -o -name vendor -o -name '.?*' \) -prune \
        -o -regex '.*\(\.\(cpp\|hpp\|h\|c\|cs\|py\|js\|css\|sh\)\|/check\|/demo\)' -type f -print0 | xargs -0 cat | wc -l
}

tests=$(lines ./tests)
all=$(lines .)
permille=$((1000 * tests / all))
echo "test code: $tests of $all lines, $((permille / 10)).$((permille % 10)) % (wanted: a quarter to a third)"
