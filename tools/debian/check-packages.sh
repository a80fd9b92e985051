#!/usr/bin/env bash
# Looks for what is wrong with Debian packages, without installing them:
#
#   tools/debian/check-packages.sh FOLDER
#
# FOLDER has the packages and their .changes. Each finding is printed; the last line says whether there
# were any.
set -uo pipefail
folder=$(realpath "$1")
cd "$(dirname "$0")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
wrong=0
fails() { echo "check-packages: $*" >&2; wrong=$((wrong + 1)); }

echo "lintian"
lintian --allow-root --fail-on error,warning "$folder"/*.changes || fails "lintian has findings"

for package in wavo wavo-masters wavo-dev; do
    dpkg-deb -x "$folder/${package}"_*_*.deb "$work/$package" || fails "no package $package"
done

echo "desktop-file-validate, appstreamcli, xmllint"
desktop-file-validate "$work"/wavo/usr/share/applications/*.desktop || fails "the desktop entry"
appstreamcli validate --no-net --pedantic "$work"/wavo/usr/share/metainfo/*.xml || fails "the metainfo"
xmllint --noout "$work"/wavo/usr/share/mime/packages/*.xml || fails "the MIME types"

echo "man --warnings"
programs=0
for program in "$work"/*/usr/bin/*; do
    programs=$((programs + 1))
    page=${program%/bin/*}/share/man/man1/$(basename "$program").1.gz
    [ -f "$page" ] || { fails "no manual page of $(basename "$program")"; continue; }
    said=$(LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" \
        2>&1 >/dev/null)
    [ -z "$said" ] || fails "$(basename "$page"): $said"
done
[ $programs = 6 ] || fails "$programs programs, not 6"

echo "the manual"
tools/check-manual.py "$work/wavo/usr/share/doc/wavo/manual" || fails "the manual"

echo "hardening-check"
for program in "$work"/*/usr/bin/*; do
    # A program without a large frame does not show whether such frames would be probed.
    said=$(hardening-check --nocfprotection "$program" | grep -v 'Stack clash protection: unknown')
    grep -qE ': (no|unknown)' <<<"$(grep -v '(ignored)' <<<"$said")" && fails "$said"
    readelf -S "$program" | grep -q '\.symtab' && fails "$(basename "$program") is not stripped"
done
[ -z "$(dpkg-deb -f "$folder"/wavo-masters_*.deb Depends | grep linuxcnc)" ] ||
    fails "wavo-masters depends on a controller"

# Graph files are INI files among others; only recordings offer Wavo to be opened with.
grep -qx 'MimeType=application/x-mcap;' "$work"/wavo/usr/share/applications/wavo.desktop ||
    fails "which files are opened with Wavo"

echo "a master with the library for masters"
cmake -S "$work/wavo-dev/usr/share/doc/wavo-dev/examples/master-cmake" -B "$work/master" \
    -DCMAKE_PREFIX_PATH="$work/wavo-dev/usr" >"$work/log" 2>&1 &&
    cmake --build "$work/master" >>"$work/log" 2>&1 || { cat "$work/log"; fails "cannot be built"; }
mkdir -m 700 "$work/run"
said=$(XDG_RUNTIME_DIR=$work/run "$work/master/two_sines" 0.1 2>&1) || fails "does not run: $said"
grep -q ' 0 overruns$' <<<"$said" || fails "two_sines says: $said"

[ $wrong = 0 ] && echo "check-packages: nothing is wrong" || { echo "check-packages: $wrong findings"; exit 1; }
