#!/usr/bin/env bash
# Builds the benchmarks in an optimised build (build/bench) and runs them, each measured five
# times (the median counts). Every program prints the ratios and goals it is judged by; the run
# ends with one table of all of them: name, measured, goal, met or MISSED. Arguments are passed
# to every benchmark program.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${CORVANE_BENCH_BUILD_DIR:-$root/build/bench}"

bash "$root/tools/install-dependencies.sh"

cmake -S "$root" -B "$build" -G Ninja \
    -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
    -DCORVANE_BUILD_TESTS=OFF \
    -DCORVANE_BUILD_BENCHMARKS=ON
cmake --build "$build" -j2

results="$(mktemp)"
trap 'rm -f "$results"' EXIT
for program in "$build"/bin/bench_*; do
    "$program" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true "$@" \
        | tee -a "$results"
done

echo
echo "== Every goal"
sed -E 's/\x1b\[[0-9;]*m//g' "$results" | grep -E '^(RATIO|GOAL) ' | awk '
    {
        line = $0
        sub(/^(RATIO|GOAL) /, "", line)
        result = "-"; goal = "-"
        if (match(line, /\(goal: at most [0-9.]+, (met|MISSED)\)$/)) {
            target = substr(line, RSTART, RLENGTH)
            line = substr(line, 1, RSTART - 2)
            split(target, parts, /[ ,)]+/)
            goal = parts[4]; result = parts[5]
        }
        n = split(line, sides, / = /)
        printf "%-92s %8s %6s  %s\n", sides[1], sides[n], goal, result
    }'
