#!/bin/sh
# Tries the wheel as who gets it would, outside the source tree: alone in an environment of its own, without network and
# without numpy; and in one with Debian's numpy and pytest, where the package's tests run on it.
# usage: check_wheel.sh [FOLDER [LINUX_BUILD]]   FOLDER has the wheel; out/linux when it is missing
set -eu
cd "$(dirname "$0")/.."
tree=$PWD
wheel=$(echo "$(realpath "${1-out/linux}")"/j4tavla-*.whl)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
unset PYTHONPATH J4TAVLA_LIBRARY J4TAVLA_OPTIONS LD_LIBRARY_PATH
export PYTHONDONTWRITEBYTECODE=1

# install NAME [OPTION]: an environment with the wheel in it
install() {
    /usr/bin/python3 -m venv ${2+"$2"} "$work/$1"
    "$work/$1/bin/python" -m pip install --quiet --no-index --disable-pip-version-check "$wheel"
    "$work/$1/bin/python" -c "import j4tavla, sys; sys.exit(not j4tavla.__file__.startswith('$work/$1/'))" ||
        { echo "the package does not come from the wheel" >&2; exit 1; }
}

install alone
"$tree/scripts/make_tcs_chart.sh" /usr/share/colord/ref/CIE-TCS.sp >chart.cgats
J4TAVLA_LIBRARY=virtual J4TAVLA_OPTIONS=Simulator.ChartFile=chart.cgats \
    alone/bin/python "$tree/examples/scan_chart.py" 199.5,250,356.5,250,5 >spectra
echo "wheel alone: $(wc -l <spectra) patches"

install tested --system-site-packages
REAL_LIBRARY=$(echo "$work"/tested/lib/python3*/site-packages/j4tavla/lib/libj4tavla64.so) \
    tested/bin/python -m pytest -q -p no:cacheprovider "$tree/tests/python"
