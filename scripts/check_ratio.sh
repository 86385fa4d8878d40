#!/bin/sh
# Prints how much of all lines of code is test code, and fails unless it is a quarter to a third.
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
figure="test code: $tests of $all lines, $((permille / 10)).$((permille % 10)) %"
if [ $((4 * tests)) -lt "$all" ] || [ $((3 * tests)) -gt "$all" ]; then
    echo "$figure; it has to be a quarter to a third, $(((all + 3) / 4)) to $((all / 3)) lines" >&2
    exit 1
fi
echo "$figure (a quarter to a third)"
