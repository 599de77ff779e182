#!/usr/bin/env bash
# Builds the libFuzzer targets with clang into build-fuzz/ and runs each from its seeds
# for KK_FUZZ_SECONDS seconds (20 unless set). Fails on a crash, a sanitizer report, a
# leak or an input that takes longer than 10 seconds; the input that did it is kept in
# build-fuzz/artifacts/. What each run finds stays in build-fuzz/corpus/ for the next.
#   fuzz/smoke.sh                        every target, 20 s each (what CI runs)
#   KK_FUZZ_SECONDS=3600 fuzz/smoke.sh fuzz_plist_file   one target for an hour
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${KK_FUZZ_SECONDS:-20}
out=build-fuzz
targets=("$@")
[[ ${#targets[@]} -gt 0 ]] || targets=(fuzz_mkext_reader fuzz_iokit_plist fuzz_plist_file
    fuzz_macho_describer fuzz_kextstat_text fuzz_diskutil_text fuzz_profiler_text
    fuzz_mkextunpack_text)

# clang and its fuzzing runtime, from the distribution (Debian). On macOS use Homebrew's
# llvm with CC and CXX pointing at its clang.
if [[ "$(uname -s)" != Darwin ]]; then
    missing=()
    for p in clang libclang-rt-dev; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" ||
            missing+=("$p")
    done
    if [[ ${#missing[@]} -gt 0 ]]; then
        sudo=()
        [[ $(id -u) -ne 0 ]] && sudo=(sudo)
        export DEBIAN_FRONTEND=noninteractive
        "${sudo[@]}" apt-get update -qq
        "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
    fi
fi

if [[ ! -f $out/CMakeCache.txt ]]; then
    CC=${CC:-clang} CXX=${CXX:-clang++} cmake -S . -B $out -G Ninja -DKK_BUILD_FUZZERS=ON -DBUILD_TESTING=OFF \
        -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS="-O1" >/dev/null
fi
cmake --build $out --target fuzzers -j 2

# Seeds: those kept in fuzz/seeds, the fixtures of the text parsers, every archive the
# archive tests build (when they are built) and the property lists beside them.
seeds=$out/seeds
rm -rf "$seeds"
mkdir -p "$seeds" $out/artifacts
cp -r fuzz/seeds/. "$seeds"/
for pair in kextstat:fuzz_kextstat_text diskutil:fuzz_diskutil_text \
            system_profiler:fuzz_profiler_text; do
    mkdir -p "$seeds/${pair#*:}"
    cp tests/fixtures/"${pair%%:*}"/* "$seeds/${pair#*:}"/
done
mkdir -p "$seeds/fuzz_iokit_plist" "$seeds/fuzz_mkext_reader"
cp fuzz/seeds/fuzz_plist_file/*.plist "$seeds/fuzz_iokit_plist"/
if [[ -x build/tests/mkext/tst_mkext ]]; then
    KK_MKEXT_CORPUS="$seeds/fuzz_mkext_reader" QT_QPA_PLATFORM=offscreen \
        build/tests/mkext/tst_mkext -silent >/dev/null
fi

failed=()
for target in "${targets[@]}"; do
    corpus=$out/corpus/$target
    mkdir -p "$corpus" "$seeds/$target"
    options=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048
             -artifact_prefix="$out/artifacts/$target-" -print_final_stats=1)
    # Deep nesting needs room: 200,000 nested arrays are 1.4 MB.
    [[ $target == fuzz_plist_file ]] && options+=(-max_len=2097152)
    log=$out/$target.log
    echo "== $target, ${seconds} s"
    if "$out/fuzz/$target" "${options[@]}" "$corpus" "$seeds/$target" >"$log" 2>&1; then
        grep -E '^(stat::number_of_executed_units|stat::peak_rss_mb)' "$log" || true
    else
        tail -n 60 "$log"
        failed+=("$target")
    fi
done
if [[ ${#failed[@]} -gt 0 ]]; then
    echo "fuzzing found problems in: ${failed[*]} (inputs in $out/artifacts)" >&2
    exit 1
fi
