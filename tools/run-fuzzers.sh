#!/usr/bin/env bash
# Installs what is missing, builds the libFuzzer harnesses of fuzz/ with clang, AddressSanitizer
# and UndefinedBehaviorSanitizer (build folder build/fuzz, or CORVANE_FUZZ_BUILD_DIR), and runs
# each in turn for the given number of seconds (default 30; 0 only builds), one process at a
# time. Each starts from its seeds in fuzz/corpus/<harness>; what it learns and what it finds
# stay in the build folder (corpus/, findings/, logs/). Exits non-zero when any harness found
# something.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${CORVANE_FUZZ_BUILD_DIR:-$root/build/fuzz}"
seconds="${1:-30}"
# CORVANE_FUZZERS="Configuration Environment" runs only those; CORVANE_FUZZ_SEED fixes
# libFuzzer's random seed (a run of the same length then mostly takes the same path).
read -r -a harnesses <<< "${CORVANE_FUZZERS:-LocalSocketMessages Configuration Environment FileSignature FilterProcessor ServiceControl}"
# Configurations nested deeper than the XML parser's stack allows are not what this looks for;
# signatures need inputs of several 1024-byte blocks from the start.
declare -A options=([Configuration]="-max_len=4096" [FileSignature]="-max_len=5000 -len_control=0")

bash "$root/tools/install-dependencies.sh"

cmake -S "$root" -B "$build" -G Ninja \
    -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_FLAGS_DEBUG="-g -O1" \
    -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
    -DCORVANE_BUILD_TESTS=OFF \
    -DCORVANE_BUILD_EXAMPLES=OFF \
    -DCORVANE_BUILD_FUZZERS=ON > /dev/null
cmake --build "$build" -j2 --target "${harnesses[@]/#/fuzz_}"
if [ "$seconds" -le 0 ]; then
    exit 0
fi

export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS=detect_leaks=1:check_initialization_order=1
export LSAN_OPTIONS="suppressions=$root/Core/tests/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

failed=()
for harness in "${harnesses[@]}"; do
    corpus="$build/corpus/$harness"
    findings="$build/findings/$harness"
    log="$build/logs/$harness.log"
    mkdir -p "$corpus" "$findings" "$(dirname "$log")"
    arguments=(-max_total_time="$seconds" -timeout=30 -rss_limit_mb=2048 -print_final_stats=1
        -artifact_prefix="$findings/" ${options[$harness]:-})
    if [ -n "${CORVANE_FUZZ_SEED:-}" ]; then
        arguments+=(-seed="$CORVANE_FUZZ_SEED")
    fi
    if [ -f "$root/fuzz/$harness.dict" ]; then
        arguments+=(-dict="$root/fuzz/$harness.dict")
    fi
    echo "Fuzzing $harness for $seconds s (log: $log)"
    if (cd "$build" && "$build/bin/fuzz_$harness" "${arguments[@]}" \
            "$corpus" "$root/fuzz/corpus/$harness") > "$log" 2>&1; then
        grep -E '^#[0-9]+[[:space:]]+DONE' "$log" | tail -n 1 || true
    else
        echo "FINDING in $harness:"
        grep -E 'PROPERTY VIOLATED|ERROR:|runtime error|SUMMARY|Test unit written' -A 2 "$log" |
            head -n 20 || true
        failed+=("$harness")
    fi
done

if [ ${#failed[@]} -gt 0 ]; then
    echo "Fuzzers with findings: ${failed[*]}"
fi
echo "fuzzers: $((${#harnesses[@]} - ${#failed[@]})) passed, ${#failed[@]} failed"
[ ${#failed[@]} -eq 0 ]
