#!/usr/bin/env bash
# Makes the archive that the Windows programs are linked again from, links them out of it, and runs
# them under Wine:
#
#   relink-test.sh BUILD-FOLDER QT-FOLDER VERSION
#
# Under tools/windows/wine-place.sh.
set -euo pipefail
cd "$(dirname "$0")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "relink-test: $*" >&2; exit 1; }

tools/windows/relink-archive.py "$1" "$2" "$work/relink.zip"
(cd "$work" && cmake -E tar xf relink.zip)
if grep -l '"/' "$work"/relink/commands/*; then fail "leads out of the archive"; fi
bash "$work/relink/relink.sh" "$2" "$work/linked again"
for program in $(sed -n 's|^usr/bin/||p' debian/*.install | grep -v linuxcnc); do
    said=$(wine "$work/linked again/$program.exe" --version | tr -d '\r')
    [ "${said,,}" = "$program $3" ] || fail "$program says '$said'"
done
