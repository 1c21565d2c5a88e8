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

# Doxygen does not warn about undocumented enum values; its XML output tells them, and gives the
# count of documented public members (functions, signals, variables, types, enums and their
# values of the classes, structs and namespaces, each once).
audit="$(awk '
    /<compounddef / { compound = ($0 ~ /kind="(class|struct|namespace)"/ && $0 !~ /prot="private"/) }
    /<compoundname>/ { name = $0; gsub(/ *<\/?compoundname>/, "", name) }
    !compound { next }
    /<memberdef / || /<enumvalue / {
        public = ($0 ~ /prot="public"/); id = $0; sub(/.* id="/, "", id); sub(/".*/, "", id)
        if (/<enumvalue /) { value = id; valueDocumented = 0 }
        else { member = id; documented = 0; memberPublic = public }
        next
    }
    /<para>/ { if (value != "") valueDocumented = 1; else if (member != "") documented = 1 }
    /<name>/ && value != "" { valueName = $0; gsub(/ *<\/?name>/, "", valueName) }
    /<\/enumvalue>/ {
        if (public && !(value in seen)) {
            seen[value] = 1
            if (valueDocumented) count++; else print "undocumented enum value " name "::" valueName
        }
        value = ""; public = memberPublic
    }
    /<\/memberdef>/ {
        if (public && !(member in seen)) { seen[member] = 1; if (documented) count++ }
        member = ""
    }
    END { print "documented " count + 0 }
' "$output"/xml/*.xml)"
if grep -q '^undocumented' <<< "$audit"; then
    echo "Undocumented public enum values:" >&2
    grep '^undocumented' <<< "$audit" >&2
    exit 1
fi
members="$(sed -n 's/^documented //p' <<< "$audit")"
echo "API reference: $output/html/index.html, $output/corvane-core.qch ($members documented members)"
