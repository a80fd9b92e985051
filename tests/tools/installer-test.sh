#!/usr/bin/env bash
# Makes the installer, installs Wavo with it under Wine, runs what was installed, and takes it away
# again:
#
#   installer-test.sh BUILD-FOLDER VERSION
#
# Under tools/windows/wine-place.sh.
set -euo pipefail
build=$1
version=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "installer-test: $*" >&2; exit 1; }

(cd "$build" && cpack -B "$work" >"$work/log") || { cat "$work/log"; fail "no package"; }
zip=$work/wavo-$version-win64.zip
[ -f "$zip" ] || fail "no $zip"
zipped=$(cmake -E tar tf "$zip")

place=$WINEPREFIX/drive_c/"Program Files"/Wavo
rm -rf "$place"  # of a run that was interrupted
wine reg delete 'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\Wavo' /f >/dev/null 2>&1 ||
    true
wine "$work/wavo-$version-win64.exe" /S
touch "$place/docs/manual/README.md" || fail "not installed"
wine "$work/wavo-$version-win64.exe" /S  # over itself, as an update does
for file in wavo.exe demo_master.exe wavo_pipe.exe wavo_report.exe manual/index.html docs/manual/README.md data/graphs/circle.ini Uninstall.exe; do
    [ -f "$place/$file" ] || fail "not installed: $file"
    [ "$file" = Uninstall.exe ] || grep -q "/$file\$" <<<"$zipped" ||
        fail "not in the ZIP: $file"
done
cmp "$build/src/ui/shell/wavo.exe" "$place/wavo.exe" || fail "not the program of this build"
# The programs need nothing but what every Windows has.
for program in wavo.exe demo_master.exe wavo_pipe.exe wavo_report.exe; do
    foreign=$(x86_64-w64-mingw32-objdump -p "$place/$program" | sed -n 's/.*DLL Name: //p' |
        grep -iE '^(lib|qt6|zlib|icu|msvcp|vcruntime)' || true)
    [ -z "$foreign" ] || fail "$program needs" $foreign
done
[ "$(wine "$place/demo_master.exe" --version | tr -d '\r')" = "demo_master $version" ] ||
    fail "demo_master does not run"
menu=$(find "$WINEPREFIX/drive_c" -name Wavo.lnk)
[ -n "$menu" ] || fail "nothing in the Start menu"

# A copy of the uninstaller does the work, so that the file itself can go.
wine "$place/Uninstall.exe" /S
for ((i = 0; i < 100; ++i)); do
    [ -d "$place" ] || { echo "installed and removed Wavo $version"; exit 0; }
    sleep 0.1
done
fail "left behind: $(ls "$place")"
