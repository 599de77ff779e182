#!/usr/bin/env bash
# Pictures each page of the window on a fresh sandbox Mac into docs/screenshots/*.png.
# Runs under Xvfb, so it works on a machine without a display.
set -euo pipefail
cd "$(dirname "$0")/.."
build="${KK_BUILD_DIR:-build}"
tools/install-deps.sh
[[ -f "$build/CMakeCache.txt" ]] || cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" --target kextkeeper kk_screenshots -j "${KK_JOBS:-2}"

# A fixed place rather than a random one: its paths show in the pictures.
work=/tmp/kextkeeper-screenshots
rm -rf "$work"
trap 'rm -rf "$work"' EXIT
"$build/kextkeeper" sandbox create "$work/sandbox" >/dev/null
home="$work/Users/admin"
mkdir -p "$home/Desktop" "$home/Downloads"
# The kexts the installation picture lists (and installs, for the Log and restore pictures).
cp -R "$work/sandbox/Extra/Extensions/ExampleSensors.kext" \
      "$work/sandbox/Extra/Extensions/ExampleEthernet.kext" "$home/Downloads/"
# A home and settings of its own: the pictures never show the user's own choices.
HOME="$home" XDG_CONFIG_HOME="$home/.config" \
    xvfb-run -a -s "-screen 0 1280x900x24" \
    "$build/tools/screenshots/kk_screenshots" "$work/sandbox" docs/screenshots
ls docs/screenshots/*.png
