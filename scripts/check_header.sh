#!/bin/sh
# Tests that the public headers compile on their own, for both platforms, with GNU's compilers and with clang and all its
# warnings: j4tavla.h as C11, C++11, C++17 and C++20, also without exceptions; j4tavla.hpp as C++17 and C++20. The examples
# in the comments of j4tavla.h compile too, that of j4tavla.hpp as well.
set -eu
cd "$(dirname "$0")/.."

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
gnu="-pedantic -Wall -Wextra -Wconversion -Wshadow -Werror"
# What clang says of every header: that old standards and other compilers exist, and how records are laid out.
clang="-Weverything -Werror -Wno-padded -Wno-c++98-compat -Wno-c++98-compat-pedantic"
# clang does not find GNU's C++ library for Windows by itself.
library=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)")/include/c++
windows="--target=x86_64-w64-mingw32 -isystem $library -isystem $library/x86_64-w64-mingw32"

# compile_all FILE STANDARD ARGUMENT...: for both platforms with both families of compilers
compile_all() {
    file=$1 standard=$2
    shift 2
    case $file in
    *.c) gnu_compiler=gcc clang_compiler=clang ;;
    *) gnu_compiler=g++ clang_compiler=clang++ ;;
    esac
    for compiler in "$gnu_compiler $gnu" "x86_64-w64-mingw32-$gnu_compiler-posix $gnu" "$clang_compiler $clang" \
        "$clang_compiler $clang $windows"; do
        # shellcheck disable=SC2086
        $compiler "-std=$standard" "$@" -Ic_sdk/include -fsyntax-only "$work/$file"
    done
}

# examples_of HEADER: the code of its comments
examples_of() { sed -n '/@code/,/@endcode/s/^ \* \{0,1\}//p' "$1" | grep -v '^@'; }

printf '#include "j4tavla.h"\nint main(void) { return sizeof(J4PrivateTableRequest) != 32; }\n' >"$work/header.c"
cp "$work/header.c" "$work/header.cpp"
{
    printf '#include <stdio.h>\n#include "j4tavla.h"\n'
    examples_of c_sdk/include/j4tavla.h
} >"$work/examples.c"
{
    printf '#include "j4tavla.hpp"\n#include <iostream>\nint main() {\n'
    examples_of c_sdk/include/j4tavla.hpp
    printf '}\n'
} >"$work/cpp_header.cpp"
[ "$(grep -c '^static' "$work/examples.c")" -ge 8 ] || { echo "j4tavla.h has lost its examples" >&2; exit 1; }
grep -q Calibrate "$work/cpp_header.cpp" || { echo "j4tavla.hpp has lost its example" >&2; exit 1; }

compile_all header.c c11
# Windows marks printf in its headers as unused.
compile_all examples.c c11 -Wno-unused-function -Wno-used-but-marked-unused
for standard in c++11 c++17 c++20; do
    compile_all header.cpp "$standard" -fno-exceptions -fno-rtti
done
for standard in c++17 c++20; do
    compile_all cpp_header.cpp "$standard"
done
gcc -std=c11 -Ic_sdk/include "$work/header.c" -o "$work/header"
"$work/header" || { echo "J4PrivateTableRequest is not 32 bytes" >&2; exit 1; }
echo "j4tavla.h: C11, C++11, C++17, C++20, also without exceptions; j4tavla.hpp: C++17, C++20; GNU and clang, both platforms"
