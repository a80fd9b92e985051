#!/usr/bin/env bash
# Fails when a source file is not formatted as .clang-format says. With --fix it formats instead.
set -euo pipefail
cd "$(dirname "$0")/.."
tool=$(command -v clang-format-14 || command -v clang-format)
mapfile -t files < <(find src master programs tests bench examples -name '*.h' -o -name '*.cpp' -o -name '*.c' | sort)
if [ "${1:-}" = --fix ]; then
    exec "$tool" -i "${files[@]}"
fi
"$tool" --dry-run -Werror "${files[@]}"
echo "${#files[@]} files are formatted"
