#!/usr/bin/env bash
# Links the Windows programs of Wavo again, with the static Qt in a folder; see README.md.
#
#   relink.sh QT-FOLDER OUTPUT-FOLDER [PROGRAM...]
#
# CXX names the compiler.
set -euo pipefail
[ $# -ge 2 ] || { sed -n '2,6s/^# \{0,1\}//p' "$0" >&2; exit 2; }
mkdir -p "$2"
qt=$(cd "$1" && pwd)
out=$(cd "$2" && pwd)
shift 2
cd "$(dirname "$0")"
if command -v cygpath >/dev/null 2>&1; then  # a shell on Windows
    qt=$(cygpath -m "$qt")
    out=$(cygpath -m "$out")
fi
[ $# -gt 0 ] || set -- $(cd commands && ls | sed 's/\.txt$//')
words=$(mktemp)
trap 'rm -f "$words"' EXIT
for program; do
    echo "==> $program"
    while IFS= read -r word; do
        word=${word//@QT@/$qt}
        printf '%s\n' "${word//@OUT@/$out}"
    done <"commands/$program.txt" >"$words"
    "${CXX:-x86_64-w64-mingw32-g++-posix}" "@$words"
done
