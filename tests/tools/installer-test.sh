#!/usr/bin/env bash
# Makes the packages for Windows, installs Wavo under Wine without a question, over itself too, runs
# what was installed, and takes it away again. Nothing stays but what somebody else has put there.
#
#   installer-test.sh BUILD-FOLDER VERSION
#
# Under tools/windows/wine-place.sh.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=$1
version=$2
work=$(mktemp -d)
drive=$WINEPREFIX/drive_c
place=$drive/"Program Files"/Wavo
menu="$drive/ProgramData/Microsoft/Windows/Start Menu/Programs/Wavo"
classes='HKLM\Software\Classes'
trap 'rm -rf "$work"' EXIT
fail() { echo "installer-test: $*" >&2; exit 1; }

# A text of the registry; without a name the key's own. Empty where there is none.
value_of() {  # value_of KEY [NAME]
    local which=(/ve)
    [ $# -eq 1 ] || which=(/v "$2")
    wine reg query "$1" "${which[@]}" 2>/dev/null | tr -d '\r' |
        sed -n 's/^ \{4\}.* \{4\}REG_[A-Z]* \{4\}//p' | grep -v '^(value not set)$' || true
}
has_key() { wine reg query "$1" >/dev/null 2>&1; }
expect() {  # expect WHAT FOUND WANTED
    [ "$2" = "$3" ] || fail "$1 is '$2', not '$3'"
}

# What there is beside the folders of the user and of the system's own work. Settings and logs are
# the user's: programs that run make them.
look() {
    (cd "$drive" && find . -path ./windows -prune -o -path ./ProgramData/Velk -prune -o \
        -path '*/Temp/*' -prune -o -print | sort) >"$work/files.$1"
    rm -f "$work/registry.$1"
    wine reg export 'HKLM\Software' "$(winepath -w "$work/registry.$1")" /y >/dev/null 2>&1
    grep -ai 'wavo\|velk\|mcap' <(iconv -f UTF-16 -t UTF-8 "$work/registry.$1" | tr -d '\r') \
        >"$work/keys.$1" || true
}

# What is handed out is packed tighter, and takes half a minute more.
(cd "$build" && cpack -B "$work" -D CPACK_NSIS_COMPRESSOR=zlib >"$work/log") ||
    { cat "$work/log"; fail "no package"; }
[ -f "$work/wavo-$version-win64-relink.zip" ] || fail "nothing to link the programs again from"
installer=$work/wavo-$version-win64.exe
mkdir "$work/zip"
(cd "$work/zip" && cmake -E tar xf "$work/wavo-$version-win64.zip") || fail "no ZIP"

# What a run that was interrupted has left.
rm -rf "$place" "$menu"
for key in 'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\Wavo' \
    'HKLM\Software\Velk' "$classes\\Wavo.Recording" "$classes\\.mcap"; do
    wine reg delete "$key" /f >/dev/null 2>&1 || true
done
look before
wine "$installer" /S
touch "$place/docs/report-json.md" || fail "not installed"
rm "$place/docs/third-party.md"  # as an update that adds a file finds it
printf 'mine' >"$place/data/graphs/mine.ini"
wine "$installer" /S  # over itself, as an update does
expect "what a user has put there" "$(cat "$place/data/graphs/mine.ini")" mine

# The installer and the ZIP hold the same, and all programs that the Debian packages have.
(cd "$work/zip"/* && find . -type f | sort) >"$work/zipped"
(cd "$place" && find . -type f ! -name Uninstall.exe ! -name mine.ini | sort) >"$work/installed"
diff "$work/zipped" "$work/installed" || fail "ZIP and installer differ"
programs=$(sed -n 's|^usr/bin/||p' debian/*.install | grep -v linuxcnc)
for program in $programs; do
    [ -f "$place/$program.exe" ] || fail "no $program"
    # They need nothing but what every Windows has.
    foreign=$(x86_64-w64-mingw32-objdump -p "$place/$program.exe" | sed -n 's/.*DLL Name: //p' |
        grep -iE '^(lib|qt6|zlib|icu|msvcp|vcruntime)' || true)
    [ -z "$foreign" ] || fail "$program needs" $foreign
    said=$(wine "$place/$program.exe" --version | tr -d '\r')
    expect "what $program says" "${said,,}" "${program} $version"
done
cmp "$build/src/ui/shell/wavo.exe" "$place/wavo.exe" || fail "not the program of this build"
for file in manual/index.html manual/wavo-manual.pdf docs/third-party.md docs/licences/{GPL-3,LGPL-3,MPL-2.0}.txt \
    data/graphs/circle.ini examples/recording/read_recording.py Uninstall.exe; do
    [ -f "$place/$file" ] || fail "not installed: $file"
done
for link in "Wavo" "Manual of Wavo"; do
    [ -f "$menu/$link.lnk" ] || fail "not in the Start menu: $link"
done

# Recordings may be opened with it; what opens them by default, and graph files, are as before.
expect "the command" "$(value_of "$classes\\Wavo.Recording\\shell\\open\\command")" \
    '"C:\Program Files\Wavo\wavo.exe" "%1"'
wine reg query "$classes\\.mcap\\OpenWithProgids" /v Wavo.Recording >/dev/null 2>&1 ||
    fail "recordings do not offer Wavo"
expect "the default of recordings" "$(value_of "$classes\\.mcap")" ""
if wine reg query "$classes\\.ini" /s 2>/dev/null | grep -qi wavo; then fail "graph files are taken"; fi
expect "the version in the list of programs" "$(value_of \
    'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\Wavo' DisplayVersion)" "$version"

# Somebody else opens recordings, too, and something of the user's stands in our folder.
wine reg add "$classes\\.mcap" /ve /d Other.Recording /f >/dev/null 2>&1
# A copy of the uninstaller does the work, so that the file itself can go; the menu goes last.
uninstall() {
    wine "$place/Uninstall.exe" /S
    for ((i = 0; i < 300; ++i)); do
        [ -e "$menu" ] || return 0
        sleep 0.1
    done
    fail "left behind: $(ls "$place" "$menu")"
}
uninstall
expect "what stays" "$(cd "$place" && find . -type f)" ./data/graphs/mine.ini
expect "who opens recordings" "$(value_of "$classes\\.mcap")" Other.Recording
wine reg delete "$classes\\.mcap" /f >/dev/null 2>&1
rm -r "$place"
look after
diff "$work/files.before" "$work/files.after" || fail "files are left or gone"
diff "$work/keys.before" "$work/keys.after" || fail "keys of the registry are left"

# The keys that it made go with it where nobody else uses them.
wine "$installer" /S
has_key "$classes\\.mcap" || fail "not installed again"
uninstall
look again
diff "$work/files.before" "$work/files.again" || fail "files are left or gone"
diff "$work/keys.before" "$work/keys.again" || fail "keys of the registry are left"
echo "installed, updated and removed Wavo $version"
