#!/bin/sh
# Looks at what is shipped, once all of it is built: names, hardening, header, documents, packages, examples, and the road
# from a list of colours to a verdict.
set -eu
cd "$(dirname "$0")/.."

echo "-- exported names, hardening, public header"
scripts/check_exports.sh
scripts/check_hardening.sh
scripts/check_header.sh
echo "-- documents, API reference"
scripts/check_documents.sh
echo "-- packages, unpacked and tried"
scripts/check_package.sh
echo "-- Python: the wheel, installed and tried"
scripts/make_wheel.sh
scripts/check_wheel.sh
echo "-- the example, on both platforms"
scripts/scan_samples.sh build/linux/samples
scripts/scan_samples.sh build/windows/samples scripts/wine.sh build/windows/bin/scan_chart.exe
echo "-- from a list of colours to a verdict, on both platforms"
scripts/chart_to_verdict.sh build/linux/demo
scripts/chart_to_verdict.sh build/windows/demo scripts/wine.sh build/windows/bin/j4tavla.exe
