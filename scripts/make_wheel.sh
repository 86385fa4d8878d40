#!/bin/sh
# Makes the wheel of the Python package. It carries the library for real tables and the virtual variant; its name says
# which glibc they need, by the newest version of it that one of them asks for.
# usage: make_wheel.sh [FOLDER]   FOLDER has the libraries and gets the wheel; out/linux when it is missing
set -eu
cd "$(dirname "$0")/.."
folder=$(realpath "${1-out/linux}")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/j4tavla/lib/virtual"
cp python/pyproject.toml python/setup.py python/README.md "$work"
cp python/j4tavla/*.py python/j4tavla/py.typed "$work/j4tavla"
cp "$folder"/libj4tavla64.so "$work/j4tavla/lib"
cp "$folder"/virtual/*.so "$work/j4tavla/lib/virtual"

# newest NAME: the newest version NAME_x.y that the libraries need
newest() {
    readelf -V "$work"/j4tavla/lib/*.so "$work"/j4tavla/lib/virtual/*.so |
        sed -n "s/.*Name: $1_\([0-9.]*\) .*/\1/p" | sort -V | tail -n 1
}
glibc=$(newest GLIBC)
rm -f "$folder"/j4tavla-*.whl
# Debian's Python is the one with Debian's setuptools.
(cd "$work" && /usr/bin/python3 setup.py --quiet bdist_wheel --dist-dir "$folder" \
    --plat-name "manylinux_$(echo "$glibc" | tr . _)_$(uname -m)") 2>"$work/log" || { cat "$work/log" >&2; exit 1; }
echo "$(basename "$folder"/j4tavla-*.whl): glibc $glibc, libstdc++ with GLIBCXX_$(newest GLIBCXX)"
