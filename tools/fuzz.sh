#!/usr/bin/env bash
# Builds every fuzzer and runs each on its corpus for some time. What it finds stays in the build
# folder; the corpus in the repository is not changed. An input that takes 10 seconds is a
# hang and fails.
#
#   tools/fuzz.sh <build folder of the preset fuzz> <seconds>
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
seconds=$2
mapfile -t fuzzers < <(find tests/fuzz -name 'fuzz_*.cpp' -printf '%f\n' | sed 's/\.cpp$//' | sort)
echo "==> Building ${fuzzers[*]}"
cmake --build "$build" --target "${fuzzers[@]}"
for fuzzer in "${fuzzers[@]}"; do
    found=$build/fuzz/$fuzzer
    mkdir -p "$found/corpus" "$found/crashes"
    echo "==> $fuzzer for $seconds seconds"
    "$build/tests/fuzz/$fuzzer" -max_total_time="$seconds" -timeout=10 -artifact_prefix="$found/crashes/" \
        -print_final_stats=1 "$found/corpus" "tests/fuzz/corpus/${fuzzer#fuzz_}" 2>"$found/log" ||
        { tail -n 40 "$found/log"; exit 1; }
    grep -E 'number_of_executed_units|peak_rss' "$found/log"
done
