#!/usr/bin/env bash
# Runs a command whose Windows programs run under Wine:
#
#   tools/windows/with-wine.sh ctest --preset windows
#   tools/windows/with-wine.sh tools/windows/wine-place.sh wine PROGRAM
#
# Names of mappings and windows exist once per Wine server. Programs that run beside each other
# therefore get places: folders of Wine's, each with a server and a display of its own that serve all
# programs that run there one after another. wine-place.sh finds a free one. They are made at first
# use in build/wine; WAVO_WINE_PLACES says how many (3).
set -euo pipefail
cd "$(dirname "$0")/../.."
export WAVO_WINE_FOLDER=${WAVO_WINE_FOLDER:-$PWD/build/wine}
number=${WAVO_WINE_PLACES:-3}
export WINEDEBUG=${WINEDEBUG:--all}
# Wine keeps variables of Qt to itself and hands WINEQT_x on as QT_x. The platform for tests finds
# its fonts in a folder; what Qt and its tests say goes to standard error.
export WINEQT_QPA_FONTDIR=Z:/usr/share/fonts/truetype/dejavu
export WINEQT_FORCE_STDERR_LOGGING=1
mkdir -p "$WAVO_WINE_FOLDER"

exec 9>"$WAVO_WINE_FOLDER/.wavo-lock"
flock -n 9 || { echo "with-wine.sh: waiting for another run in $WAVO_WINE_FOLDER"; flock 9; }

place() { echo "$WAVO_WINE_FOLDER/place$1"; }
displays=()
starting=()
end_wine() {
    for i in $(seq "$number"); do
        [ ! -d "$(place "$i")" ] || WINEPREFIX=$(place "$i") wineserver -k || true  # fails when none runs
    done
    [ ${#displays[@]} -eq 0 ] || kill "${displays[@]}" 2>/dev/null || true
}
end_wine  # what an interrupted run has left
trap end_wine EXIT
trap 'exit 130' INT TERM

make_first() {
    echo "==> Making Wine's folder"
    # Windows draw their own frames: there is no window manager. A program that crashes ends instead
    # of waiting for a debugger. The fonts of Windows are not here; one that is takes their place.
    WINEPREFIX=$1 xvfb-run -a sh -c '
        wine wineboot -i &&
        wine reg add "HKCU\\Software\\Wine\\X11 Driver" /v Managed /d N /f &&
        wine reg add "HKLM\\Software\\Microsoft\\Windows NT\\CurrentVersion\\AeDebug" \
            /v Auto /d 0 /f &&
        for font in "MS Shell Dlg" "MS Shell Dlg 2" "Segoe UI" Tahoma; do
            wine reg add "HKCU\\Software\\Wine\\Fonts\\Replacements" /v "$font" \
                /d "DejaVu Sans" /f || exit
        done' >/dev/null 2>&1 9>&-
    WINEPREFIX=$1 wineserver -w
}

# The files of the system, which nobody changes, are there once.
make_copy() {
    mkdir -p "$2/drive_c"
    cp -a "$1"/*.reg "$1"/.update-timestamp "$1"/dosdevices "$2"
    for part in "$1"/drive_c/*; do
        case $part in
            */windows) cp -al "$part" "$2/drive_c" ;;
            *) cp -a "$part" "$2/drive_c" ;;
        esac
    done
}

for i in $(seq "$number"); do
    folder=$(place "$i")
    if [ ! -f "$folder/.wavo-ready" ]; then
        rm -rf "$folder"
        if [ "$i" = 1 ]; then make_first "$folder"; else make_copy "$(place 1)" "$folder"; fi
        touch "$folder/.wavo-ready"
    fi
done

for i in $(seq "$number"); do
    folder=$(place "$i")
    rm -f "$folder/.display"
    Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp -noreset 3>"$folder/.display" >/dev/null 2>&1 9>&- &
    displays+=($!)
done
for i in $(seq "$number"); do
    folder=$(place "$i")
    until [ -s "$folder/.display" ]; do sleep 0.1; done
    WINEPREFIX=$folder wineserver -p 9>&-
    WINEPREFIX=$folder DISPLAY=:$(cat "$folder/.display") \
        wine cmd /c exit >/dev/null 2>&1 </dev/null 9>&- &
    starting+=($!)
done
wait "${starting[@]}"
status=0
"$@" 9>&- || status=$?
exit $status
