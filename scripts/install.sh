#!/bin/sh
# Installs what is missing of the Debian packages that building for this machine (build), building for all and testing (check),
# or looking for faults with arbitrary input (fuzz), needs.
# usage: install.sh build|check|fuzz
set -eu

build="g++ cmake ninja-build colord-data pkg-config libusb-1.0-0-dev help2man libcli11-dev nlohmann-json3-dev libeigen3-dev librapidxml-dev libtomlplusplus-dev"
fuzz="$build googletest clang libclang-rt-14-dev"
check="$build g++-mingw-w64-x86-64-posix llvm-14 clang libclang-rt-14-dev clang-format file dpkg-dev googletest liblcms2-dev libcolord-dev libbenchmark-dev wine wine64 umockdev libumockdev-dev strace libxml2-utils doxygen python3 python3-numpy python3-pytest python3-setuptools python3-venv python3-wheel mypy mono-mcs chromium qpdf ghostscript poppler-utils"

case "${1-}" in
build) wanted=$build ;;
check) wanted=$check ;;
fuzz) wanted=$fuzz ;;
*) echo "usage: $0 build|check|fuzz" >&2; exit 2 ;;
esac

missing=
for package in $wanted; do
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

echo "Installing:$missing"
asroot=
if [ "$(id -u)" -ne 0 ]; then
    asroot="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
$asroot apt-get update -q
# shellcheck disable=SC2086
$asroot apt-get install -q -y --no-install-recommends $missing
