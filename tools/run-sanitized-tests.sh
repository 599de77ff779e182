#!/usr/bin/env bash
# Builds the program and its tests with the address and undefined-behaviour sanitizers
# into build-sanitize/ and runs the unit tests there (the end-to-end tests are left to
# the ordinary build). Any report fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install-deps.sh
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
[[ -f build-sanitize/CMakeCache.txt ]] || cmake --preset sanitize "${launcher[@]}" >/dev/null
cmake --build build-sanitize -j "$(getconf _NPROCESSORS_ONLN 2>/dev/null || echo 2)"
ctest --preset sanitize -j 2 "$@"
