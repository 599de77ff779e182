#!/usr/bin/env bash
# Renders the application icon (dist/icons/kextkeeper.svg) into the PNG sizes of the
# hicolor theme and into the macOS bundle's .icns. The results are committed, so a build
# needs no SVG renderer; run this after changing the SVG. Needs rsvg-convert
# (Debian: librsvg2-bin) and python3.
set -euo pipefail
cd "$(dirname "$0")/../dist"
svg=icons/kextkeeper.svg
for size in 16 22 24 32 48 64 128 256 512; do
    mkdir -p "icons/hicolor/${size}x${size}/apps"
    rsvg-convert -w "$size" -h "$size" "$svg" -o "icons/hicolor/${size}x${size}/apps/kextkeeper.png"
done

# An .icns is a list of (type, length, PNG) records behind an "icns" header; each type
# names one pixel size.
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
rsvg-convert -w 1024 -h 1024 "$svg" -o "$tmp/1024.png"
python3 - "$tmp/1024.png" macos/KextKeeper.icns <<'PY'
import struct, sys
pngs = {16: "icons/hicolor/16x16/apps/kextkeeper.png", 32: "icons/hicolor/32x32/apps/kextkeeper.png",
        64: "icons/hicolor/64x64/apps/kextkeeper.png", 128: "icons/hicolor/128x128/apps/kextkeeper.png",
        256: "icons/hicolor/256x256/apps/kextkeeper.png", 512: "icons/hicolor/512x512/apps/kextkeeper.png",
        1024: sys.argv[1]}
types = [(b"icp4", 16), (b"icp5", 32), (b"icp6", 64), (b"ic07", 128), (b"ic08", 256),
         (b"ic09", 512), (b"ic10", 1024)]
body = b""
for kind, size in types:
    data = open(pngs[size], "rb").read()
    body += kind + struct.pack(">I", len(data) + 8) + data
open(sys.argv[2], "wb").write(b"icns" + struct.pack(">I", len(body) + 8) + body)
PY
