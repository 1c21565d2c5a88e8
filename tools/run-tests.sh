#!/usr/bin/env bash
# Installs what is missing and runs every test, in three builds below build/tests (override with
# CORVANE_TEST_BUILD_DIR):
#   qt5    Qt 5.15, AddressSanitizer and UndefinedBehaviorSanitizer, with the benchmarks built
#   qt6    Qt 6, the same sanitizers; also installs itself beside the qt5 build
#   arm64  Qt 5 cross-built for 64-bit ARM, its tests run under qemu-aarch64
# Then the Debian packages of both majors are built and tested (tools/build-packages.sh), the API
# reference is built (tools/build-docs.sh, which fails on an undocumented public member), and
# every fuzzer runs briefly (tools/run-fuzzers.sh, build/fuzz): CORVANE_FUZZ_SECONDS each, 10 by
# default, from a fixed seed (CORVANE_FUZZ_SEED, 1 by default) so that a smoke run repeats what
# the last one did; longer runs of run-fuzzers.sh explore. Every step runs even when an earlier
# one failed; the command fails when any did. CORVANE_TEST_BUILDS="qt5 qt6" runs only those
# builds.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${CORVANE_TEST_BUILD_DIR:-$root/build/tests}"
read -r -a builds <<< "${CORVANE_TEST_BUILDS:-qt5 qt6 arm64}"
started=$SECONDS

bash "$root/tools/install-dependencies.sh" \
    g++-aarch64-linux-gnu qemu-user qemu-user-binfmt \
    qtbase5-dev:arm64 liblog4cplus-dev:arm64 libsystemd-dev:arm64
bash "$root/tools/enable-arm64-emulation.sh"

# Compiled objects are shared by every checkout of the tree: ccache hashes the paths below it
# relative to it.
export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=true

configure()
{
    local name="$1"
    shift
    cmake -S "$root" -B "$build/$name" -G Ninja \
        -DCMAKE_BUILD_TYPE=Debug \
        -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
        -DCORVANE_BUILD_TESTS=ON "$@" > /dev/null
}

for name in "${builds[@]}"; do
    case "$name" in
    qt5) configure qt5 -DCORVANE_QT_MAJOR=5 -DCORVANE_SANITIZE=ON -DCORVANE_BUILD_BENCHMARKS=ON \
             -DCORVANE_OTHER_MAJOR_BUILD_DIR="$build/qt6" ;;
    qt6) configure qt6 -DCORVANE_QT_MAJOR=6 -DCORVANE_SANITIZE=ON \
             -DCORVANE_OTHER_MAJOR_BUILD_DIR="$build/qt5" -DCORVANE_SIDE_BY_SIDE_INSTALL=ON ;;
    arm64) configure arm64 -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchains/aarch64-linux-gnu.cmake" ;;
    *) echo "run-tests: unknown build '$name' (qt5, qt6 or arm64)" >&2; exit 2 ;;
    esac
done
for name in "${builds[@]}"; do
    echo "== Building $name"
    cmake --build "$build/$name" -j2
done

failed=()
for name in "${builds[@]}"; do
    echo "== Tests of the $name build"
    # Emulated programs need a core each: the arm64 tests run one at a time.
    jobs=2
    [ "$name" = arm64 ] && jobs=1
    (cd "$build/$name" && ctest --output-on-failure -j"$jobs") || failed+=("$name")
done

# The Debian packages of both majors, unpacked and used by a consumer, and checked by lintian.
echo "== Packages"
CORVANE_QT_MAJORS="5 6" bash "$root/tools/build-packages.sh" || failed+=(packages)

# The API reference: fails on any undocumented public member of the installed headers.
echo "== API reference"
bash "$root/tools/build-docs.sh" || failed+=(docs)

CORVANE_FUZZ_SEED="${CORVANE_FUZZ_SEED:-1}" bash "$root/tools/run-fuzzers.sh" "${CORVANE_FUZZ_SECONDS:-10}" \
    || failed+=(fuzzers)

echo "== Done in $(((SECONDS - started) / 60)) min $(((SECONDS - started) % 60)) s"
if [ ${#failed[@]} -gt 0 ]; then
    echo "Failed: ${failed[*]}"
    exit 1
fi
