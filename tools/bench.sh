#!/usr/bin/env bash
# Builds the benchmarks (Release, in build-bench/), runs each one and prints one table:
# every row measured beside its floor or peer in the same run, the ratio, the goal and
# whether it is met. Absolute times depend on the machine and its load; read the ratios.
#   tools/bench.sh                 # all rows
#   KK_BENCH_JOBS=2 tools/bench.sh # build with two jobs (default one)
#   KK_BENCH_REPETITIONS=5 tools/bench.sh # the median of five runs of each (default three)
#   KK_BENCH_MARKDOWN=1 tools/bench.sh     # the table as Markdown, as in the README
# Needs Google Benchmark (Debian: libbenchmark-dev). Generated material lives in a
# folder below /tmp that each program removes when it ends.
set -euo pipefail
cd "$(dirname "$0")/.."
launcher=()
command -v ccache >/dev/null &&
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DKK_BUILD_BENCHMARKS=ON \
    -DBUILD_TESTING=OFF "${launcher[@]}" >/dev/null
programs=(bench_report bench_index bench_startup bench_mkext bench_unpack_scale)
cmake --build build-bench -j "${KK_BENCH_JOBS:-1}" --target "${programs[@]}" >/dev/null

rows=$(mktemp /tmp/kk-bench-rows.XXXXXX)
trap 'rm -f "$rows"' EXIT
for program in "${programs[@]}"; do
    echo "== $program" >&2
    "build-bench/bench/$program" --benchmark_repetitions="${KK_BENCH_REPETITIONS:-3}" \
        --benchmark_report_aggregates_only=true | while IFS= read -r line; do
        printf '%s\n' "$line" >&2
        case $line in KKROW\|*) printf '%s\n' "${line#KKROW|}" >>"$rows" ;; esac
    done
done
echo
table() {
    echo "row|ours|floor or peer|ratio|goal|met"
    cat "$rows"
}
if [[ -n "${KK_BENCH_MARKDOWN:-}" ]]; then
    table | sed 's/|/ | /g; s/^/| /; s/$/ |/; 1a| --- | --- | --- | --- | --- | --- |'
    exit
fi
table | awk -F'|' '
    { for (i = 1; i <= NF; i++) { cell[NR, i] = $i; if (length($i) > w[i]) w[i] = length($i) } }
    END { for (r = 1; r <= NR; r++) { line = "";
          for (i = 1; i <= 6; i++) line = line sprintf("%-" w[i] + 2 "s", cell[r, i]);
          sub(/ +$/, "", line); print line } }'
