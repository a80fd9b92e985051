#!/usr/bin/env bash
# Runs clang-format and clang-tidy over every source file.
#
#   tools/lint.sh <build folder with compile_commands.json> [FILE...]
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
shift
tools/check-format.sh
tidy=$(command -v clang-tidy-14 || command -v clang-tidy)
files=("$@")
if [ ${#files[@]} -eq 0 ]; then
    mapfile -t files < <(sed -n 's/^ *"file": "\(.*\.cpp\)",\{0,1\}$/\1/p' "$build/compile_commands.json" |
        grep -v _autogen | sort -u)
fi
echo "==> clang-tidy over ${#files[@]} files"
status=0
# Headers that only GCC brings (libbacktrace), behind clang's own.
gcc_headers=$(dirname "$(gcc -print-file-name=include/backtrace.h)")
# The compiler's own warning options are not all known to clang.
printf '%s\n' "${files[@]}" |
    xargs -P "$(nproc)" -n 2 "$tidy" -p "$build" --quiet --extra-arg=-Wno-unknown-warning-option \
        --extra-arg=-idirafter"$gcc_headers" \
        2>/dev/null || status=$?
if [ $status -ne 0 ]; then
    echo "clang-tidy found something" >&2
    exit 1
fi
echo "clang-tidy found nothing"
