#!/usr/bin/env bash
# Builds the API reference of the installed headers with Doxygen into build/docs/: HTML
# (build/docs/html/index.html) and a Qt Help file (build/docs/corvane-core.qch) for Qt Creator
# and Qt Assistant. Fails, listing them, when a public member of a header is undocumented or a
# comment is malformed. Runs as root on Debian 12; installs Doxygen when it is missing.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
output="$root/build/docs"
bash "$root/tools/install-dependencies.sh" doxygen qttools5-dev-tools

version="$(sed -n 's/^ *VERSION \([0-9.]*\)$/\1/p' "$root/CMakeLists.txt" | head -1)"
qhelpgenerator="$(command -v qhelpgenerator || echo /usr/lib/qt5/bin/qhelpgenerator)"
rm -rf "$output"
mkdir -p "$output"
sed -e "s|@ROOT@|$root|g" -e "s|@OUTPUT@|$output|g" -e "s|@VERSION@|$version|g" \
    -e "s|@VERSION_NODOTS@|${version//./}|g" -e "s|@QHELPGENERATOR@|$qhelpgenerator|g" \
    "$root/docs/api/Doxyfile.in" > "$output/Doxyfile"

if ! (cd "$output" && doxygen Doxyfile > doxygen.log 2>&1) || [ -s "$output/warnings.txt" ]; then
    echo "Undocumented or wrongly documented public members ($(wc -l < "$output/warnings.txt")):" >&2
    sed "s|$root/||" "$output/warnings.txt" >&2
    exit 1
fi
[ -f "$output/corvane-core.qch" ] || { echo "no Qt Help file written" >&2; exit 1; }
members="$(grep -c 'class="memItemLeft"' "$output"/html/class*.html | awk -F: '{s+=$2} END {print s}')"
echo "API reference: $output/html/index.html, $output/corvane-core.qch ($members documented members)"
