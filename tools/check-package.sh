#!/usr/bin/env bash
# Packs build/ into kextkeeper_<version>_<arch>.deb, installs it with apt-get as a user
# would, tries the installed program on a fresh sandbox Mac, and removes it again.
# Needs root or sudo (it installs into the system); tools/build.sh must have run.
set -euo pipefail
cd "$(dirname "$0")/.."
sudo=()
[[ $(id -u) -ne 0 ]] && sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive

rm -f build/package/kextkeeper_*.deb
(cd build && cpack -G DEB >/dev/null)
debs=(build/package/kextkeeper_*_*.deb)
[[ ${#debs[@]} -eq 1 && -f ${debs[0]} ]] || { echo "no single .deb in build/package" >&2; exit 1; }
deb="$PWD/${debs[0]}"
echo "== $(basename "$deb"): $(dpkg-deb -f "$deb" Depends)"

# Dependencies come from the archive; its lists may be missing on a machine that had
# everything the build needs already.
"${sudo[@]}" apt-get install -y -qq "$deb" >/dev/null ||
    { "${sudo[@]}" apt-get update -qq && "${sudo[@]}" apt-get install -y -qq "$deb" >/dev/null; }

work=$(mktemp -d)
trap '"${sudo[@]}" apt-get remove -y -qq kextkeeper >/dev/null; rm -rf "$work"' EXIT
installed=$(command -v kextkeeper)
[[ $installed == /usr/bin/kextkeeper ]] || { echo "kextkeeper is $installed" >&2; exit 1; }
kextkeeper --version
# What the package adds besides the program: its manual, its shell completions.
[[ $(man -w kextkeeper) == /usr/share/man/man1/kextkeeper.1* ]]
for f in /usr/share/bash-completion/completions/kextkeeper /usr/share/zsh/vendor-completions/_kextkeeper \
         /usr/share/fish/vendor_completions.d/kextkeeper.fish /usr/share/applications/kextkeeper.desktop; do
    [[ -f $f ]] || { echo "the package lacks $f" >&2; exit 1; }
done
kextkeeper sandbox create "$work/mac"
kextkeeper --root "$work/mac" volumes
kextkeeper --root "$work/mac" maintain --help >/dev/null
echo "== the installed package works"
