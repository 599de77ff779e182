#!/usr/bin/env bash
# Installs what is missing, builds and starts KextKeeper. On a Mac it works on the real
# system; anywhere else on a sandbox Mac made on first start (pass --fresh for a new one).
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install-deps.sh
tools/build.sh
if [[ "$(uname -s)" == Darwin ]]; then
    exec build/kextkeeper "$@"
fi
sandbox="${KEXTKEEPER_SANDBOX:-$HOME/.local/share/kextkeeper/sandbox}"
if [[ "${1:-}" == --fresh ]]; then
    shift
    rm -rf "$sandbox"
fi
if [[ ! -d "$sandbox" ]]; then
    mkdir -p "$(dirname "$sandbox")"
    build/kextkeeper sandbox create "$sandbox"
fi
exec build/kextkeeper --root "$sandbox" "$@"
