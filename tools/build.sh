#!/usr/bin/env bash
# Configures (once) and builds KextKeeper into build/.
set -euo pipefail
cd "$(dirname "$0")/.."
prefix=()
[[ "$(uname -s)" == Darwin ]] && prefix=(-DCMAKE_PREFIX_PATH="$(brew --prefix qt)")
[[ -f build/CMakeCache.txt ]] || cmake --preset default "${prefix[@]}" >/dev/null
cmake --build build -j "$(getconf _NPROCESSORS_ONLN 2>/dev/null || echo 2)"
