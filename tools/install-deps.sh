#!/usr/bin/env bash
# Installs what KextKeeper needs to build, run and test, if it is missing.
# Debian/Ubuntu: apt-get (as root, or through sudo). macOS: Homebrew.
set -euo pipefail

if [[ "$(uname -s)" == Darwin ]]; then
    command -v brew >/dev/null || { echo "Homebrew is needed: https://brew.sh" >&2; exit 1; }
    brew list qt >/dev/null 2>&1 || brew install qt
    for f in libplist cmake ninja pkg-config; do
        brew list "$f" >/dev/null 2>&1 || brew install "$f"
    done
    exit 0
fi

# sudo runs root tasks; util-linux (runuser, setsid, unshare) and passwd (useradd) serve
# the test that tries the real sudo as a user of its own.
packages=(build-essential cmake ninja-build pkg-config qt6-base-dev qt6-base-dev-tools
          libplist-dev zlib1g-dev libgl-dev xvfb xauth dbus file
          dpkg-dev desktop-file-utils appstream man-db zsh fish
          qt6-l10n-tools qt6-tools-dev
          sudo util-linux passwd)
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

sudo=()
[[ $(id -u) -ne 0 ]] && sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
