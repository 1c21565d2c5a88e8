#!/usr/bin/env bash
# Installs what is missing (lcov too), builds everything with gcov instrumentation in a build
# folder of its own (build/coverage, or CORVANE_COVERAGE_BUILD_DIR), runs the whole test suite
# and prints the line and function coverage of Core/src, with an HTML report in
# <build>/coverage-html. Then prints the test/code ratio: non-blank lines of the .h and .cpp
# files under Core/tests and fuzz against those under Core/src, examples, tools and bench.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${CORVANE_COVERAGE_BUILD_DIR:-$root/build/coverage}"

bash "$root/tools/install-dependencies.sh" lcov

cmake -S "$root" -B "$build" -G Ninja \
    -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
    -DCORVANE_COVERAGE=ON \
    -DCORVANE_BUILD_TESTS=ON \
    -DCORVANE_BUILD_EXAMPLES=ON > /dev/null
cmake --build "$build" -j2

lcov --quiet --zerocounters --directory "$build"
(cd "$build" && ctest --output-on-failure -j2) || echo "Some tests failed; coverage is of the run as it went."

lcov --quiet --capture --directory "$build" --output-file "$build/all.info" 2> /dev/null
lcov --quiet --extract "$build/all.info" "$root/Core/src/*" --output-file "$build/core.info"
genhtml --quiet "$build/core.info" --output-directory "$build/coverage-html" \
    --title "Corvane Core" > /dev/null
echo "Coverage of Core/src (report: $build/coverage-html/index.html):"
lcov --summary "$build/core.info" 2>&1 | grep -E 'lines|functions'

count() {
    find "$@" -type f \( -name '*.h' -o -name '*.cpp' \) -exec cat {} + 2> /dev/null |
        grep -c '[^[:space:]]' || true
}
cd "$root"
tests=$(count Core/tests fuzz)
code=$(count Core/src examples tools bench)
awk -v t="$tests" -v c="$code" \
    'BEGIN { printf "Test/code ratio: %d test lines / %d code lines = %.2f\n", t, c, t / c }'
