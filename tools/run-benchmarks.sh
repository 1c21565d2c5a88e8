#!/usr/bin/env bash
# Builds the benchmarks in an optimised build (build/bench) and runs them; each prints the
# ratios it is judged by. Arguments are passed to every benchmark program.
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
for program in "$build"/bin/bench_*; do
    "$program" "$@"
done
