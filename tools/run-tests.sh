#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite through ctest.
# Widget tests run offscreen: no display is needed.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install-deps.sh
tools/build.sh
ctest --test-dir build --output-on-failure -j 2 "$@"
