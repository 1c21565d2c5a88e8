#!/usr/bin/env bash
# Builds the Debian packages (.deb) of the library for each Qt major in CORVANE_QT_MAJORS
# ("5" by default, "5 6" for both) into build/packages/, then tests them without installing
# anything on the machine: every package is unpacked with dpkg-deb -x into a temporary root, a
# consumer application with a plug-in is built against that root with find_package and run,
# from its build tree and installed; dpkg-deb -I shows each package's dependencies, and lintian
# checks them (errors fail the run; warnings are listed). Runs as root on Debian 12.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
output="$root/build/packages"
majors="${CORVANE_QT_MAJORS:-5}"

extra=(dpkg-dev fakeroot file lintian)
for major in $majors; do
    [ "$major" = 6 ] && extra+=(qt6-base-dev qt6-tools-dev-tools qt6-l10n-tools)
done
bash "$root/tools/install-dependencies.sh" "${extra[@]}"

rm -rf "$output"
mkdir -p "$output"
for major in $majors; do
    build="$root/build/package-qt$major"
    cmake -S "$root" -B "$build" -G Ninja \
        -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
        -DCMAKE_INSTALL_PREFIX=/usr \
        -DCORVANE_QT_MAJOR="$major" \
        -DCORVANE_BUILD_TESTS=OFF \
        -DCORVANE_BUILD_EXAMPLES=OFF \
        -DCORVANE_BUILD_BENCHMARKS=OFF > /dev/null
    cmake --build "$build" -j2
    (cd "$build" && cpack -G DEB -B "$output/cpack-qt$major" > /dev/null)
    mv "$output/cpack-qt$major"/*.deb "$output/"
    rm -rf "$output/cpack-qt$major"
done

echo "Packages in $output:"
for package in "$output"/*.deb; do
    printf '  %-48s %8s bytes\n' "$(basename "$package")" "$(stat -c %s "$package")"
    dpkg-deb -I "$package" | sed -n 's/^ \(Package\|Depends\):/    \1:/p'
done

for major in $majors; do
    suffix=""
    [ "$major" = 6 ] && suffix=6
    cmake -DDEB_DIR="$output" -DPACKAGE="CorvaneCore$suffix" \
        -DCONSUMER_SOURCE_DIR="$root/Core/tests/Packaging/consumer" \
        -DWORK_DIR="$root/build/package-test-qt$major" -DGENERATOR=Ninja \
        -P "$root/Core/tests/Packaging/InstalledPackageTest.cmake"
done

echo "lintian:"
lintian --tag-display-limit 0 "$output"/*.deb | tee "$output/lintian.txt" || true
if grep -q '^E:' "$output/lintian.txt"; then
    echo "lintian reports errors" >&2
    exit 1
fi
echo "Packages built and tested: $output"
