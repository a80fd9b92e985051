#!/usr/bin/env bash
# Compares our recordings with the official MCAP reader and writer, value by value, both ways. The
# library comes from npm's registry. Exit status 3: the registry does not answer, nothing was compared.
#
#   tests/interop/run.sh <build folder>
set -euo pipefail
cd "$(dirname "$0")/../.."
tool=$PWD/$1/tests/interop/interop_tool
check=$PWD/tests/interop/check.mjs
place=$PWD/$1/interop
mkdir -p "$place"
cd "$place"
if [ ! -d node_modules/@mcap/core ] &&
    ! npm install --no-save --no-audit --no-fund --silent --fetch-retries=1 --fetch-timeout=20000 \
        @mcap/core@2.2.2; then
    echo "THE OFFICIAL READER WAS NOT TRIED: npm's registry does not answer." >&2
    exit 3
fi

same() {
    cmp -s "$1" "$2" && { echo "$3: $(wc -l <"$1") lines of the dumps are the same"; return; }
    echo "$3: the dumps differ" >&2
    diff "$1" "$2" | head >&2
    exit 1
}

rm -f ./*.mcap
"$tool" write ours.mcap ours-cut.mcap >ours.txt
node "$check" dump ours.mcap >official-of-ours.txt
same ours.txt official-of-ours.txt "The official reader of our recording"

# Without an end: in the order of the file, so lines and events are compared apart.
node "$check" repair ours-cut.mcap >official-of-cut.txt
for kind in line event; do
    grep "^$kind" ours.txt >expected.txt
    grep "^$kind" official-of-cut.txt >found.txt
    same expected.txt found.txt "The official stream reader of our cut recording, ${kind}s"
done

node "$check" write official.mcap >official.txt
"$tool" dump official.mcap >ours-of-official.txt
same official.txt ours-of-official.txt "Our reader of the official writer's recording"
