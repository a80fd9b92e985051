#!/usr/bin/env bash
# Runs clang-format and clang-tidy over every source file.
#
#   tools/lint.sh <build folder with compile_commands.json>
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
tools/check-format.sh
tidy=$(command -v clang-tidy-14 || command -v clang-tidy)
mapfile -t files < <(find src master tests bench -name '*.cpp' |
    grep -Fxf <(sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' "$build/compile_commands.json" |
        sed "s|^$PWD/||") | sort)
echo "==> clang-tidy over ${#files[@]} files"
printf '%s\n' "${files[@]}" |
    xargs -P "$(nproc)" -n 4 "$tidy" -p "$build" --quiet 2> >(grep -v 'warnings generated\|^Suppressed\|^Use -header' >&2 || true)
echo "clang-tidy found nothing"
