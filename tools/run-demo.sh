#!/usr/bin/env bash
# Builds and runs the demo application. The demo arrives together with the framework runner;
# until then this only builds the library.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${CORVANE_DEMO_BUILD_DIR:-$root/build/demo}"

bash "$root/tools/install-dependencies.sh"

cmake -S "$root" -B "$build" -G Ninja \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
    -DCORVANE_BUILD_TESTS=OFF
cmake --build "$build" -j2
echo "There is no demo application yet: it comes with the framework runner. The library is built in $build/bin."
