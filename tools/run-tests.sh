#!/usr/bin/env bash
# Installs what is missing, builds the library, examples and tests with AddressSanitizer and
# UndefinedBehaviorSanitizer, and runs every test. Build folder: build/tests (override with
# CORVANE_TEST_BUILD_DIR). Then runs every fuzzer briefly (tools/run-fuzzers.sh, build/fuzz):
# CORVANE_FUZZ_SECONDS each, 10 by default, from a fixed seed (CORVANE_FUZZ_SEED, 1 by default)
# so that a smoke run repeats what the last one did; longer runs of run-fuzzers.sh explore.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${CORVANE_TEST_BUILD_DIR:-$root/build/tests}"

bash "$root/tools/install-dependencies.sh"

cmake -S "$root" -B "$build" -G Ninja \
    -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
    -DCORVANE_SANITIZE=ON \
    -DCORVANE_BUILD_TESTS=ON \
    -DCORVANE_BUILD_BENCHMARKS=ON
cmake --build "$build" -j2
(cd "$build" && ctest --output-on-failure -j2)

# The API reference: fails on any undocumented public member of the installed headers.
bash "$root/tools/build-docs.sh"

CORVANE_FUZZ_SEED="${CORVANE_FUZZ_SEED:-1}" bash "$root/tools/run-fuzzers.sh" "${CORVANE_FUZZ_SECONDS:-10}"
