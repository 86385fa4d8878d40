#!/bin/sh
# Tests that the public header compiles on its own as C11 and C++11, for both platforms.
set -eu
cd "$(dirname "$0")/.."

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
printf '#include "j4tavla.h"\nint main(void) { return (int)sizeof(J4PrivateTableRequest) - 32; }\n' >"$work/header.c"
cp "$work/header.c" "$work/header.cpp"

for prefix in "" x86_64-w64-mingw32-; do
    "${prefix}gcc" -std=c11 -pedantic -Wall -Wextra -Werror -Ic_sdk/include -fsyntax-only "$work/header.c"
    "${prefix}g++" -std=c++11 -pedantic -Wall -Wextra -Werror -Ic_sdk/include -fsyntax-only "$work/header.cpp"
done
gcc -std=c11 -Ic_sdk/include "$work/header.c" -o "$work/header"
"$work/header" || { echo "J4PrivateTableRequest is not 32 bytes" >&2; exit 1; }
echo "j4tavla.h: C11 and C++11, both platforms"
