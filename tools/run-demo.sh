#!/usr/bin/env bash
# Installs what is missing, builds and installs the library (build/demo/prefix), builds the
# demo application against that installed library only, and runs the console demo, which
# prints its inventory report and ends by itself. Arguments go to the demo, for example
#   bash tools/run-demo.sh -C corvane-demo-audit.xml
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${CORVANE_DEMO_BUILD_DIR:-$root/build/demo}"

bash "$root/tools/install-dependencies.sh"

cmake -S "$root" -B "$build/library" -G Ninja \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
    -DCMAKE_INSTALL_PREFIX="$build/prefix" \
    -DCORVANE_BUILD_TESTS=OFF \
    -DCORVANE_BUILD_EXAMPLES=OFF
cmake --build "$build/library" -j2
cmake --install "$build/library" > /dev/null

cmake -S "$root/examples" -B "$build/application" -G Ninja \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
    -DCMAKE_PREFIX_PATH="$build/prefix"
cmake --build "$build/application" -j2

echo "Running $build/application/bin/corvane-demo $*"
"$build/application/bin/corvane-demo" "$@"
