#!/bin/sh
# Tests that the documents tell all that the sources have, and builds the API reference without a warning.
# usage: check_documents.sh [BUILD]
set -eu
cd "$(dirname "$0")/.."
build=${1-build/linux}
scripts/compare_documents.py
doxygen "$build/generated/Doxyfile"
echo "API reference: $build/reference/html/index.html"
