#!/usr/bin/env bash
# Runs a command whose Windows programs run under Wine:
#
#   tools/windows/with-wine.sh ctest --preset windows
#
# The command gets a display of its own and one Wine server for all its programs: a server per
# program would cost some seconds each. Wine's folder is build/wine, made at first use.
set -euo pipefail
cd "$(dirname "$0")/../.."
export WINEPREFIX=${WAVO_WINE_FOLDER:-$PWD/build/wine}
export WINEDEBUG=${WINEDEBUG:--all}
# Wine keeps variables of Qt to itself and hands WINEQT_x on as QT_x. The platform for tests finds
# its fonts in a folder; what Qt and its tests say goes to standard error.
export WINEQT_QPA_FONTDIR=Z:/usr/share/fonts/truetype/dejavu
export WINEQT_FORCE_STDERR_LOGGING=1
mkdir -p "$WINEPREFIX"

exec 9>"$WINEPREFIX/.wavo-lock"
flock -n 9 || { echo "with-wine.sh: waiting for another run in $WINEPREFIX"; flock 9; }
end_wine() { wineserver -k || true; }  # fails when none runs
end_wine  # what an interrupted run has left
trap end_wine EXIT
trap 'exit 130' INT TERM

if [ ! -f "$WINEPREFIX/.wavo-ready" ]; then
    echo "==> Making Wine's folder"
    # Windows draw their own frames: there is no window manager. A program that crashes ends instead
    # of waiting for a debugger. The fonts of Windows are not here; one that is takes their place.
    xvfb-run -a sh -c '
        wine wineboot -i &&
        wine reg add "HKCU\\Software\\Wine\\X11 Driver" /v Managed /d N /f &&
        wine reg add "HKLM\\Software\\Microsoft\\Windows NT\\CurrentVersion\\AeDebug" \
            /v Auto /d 0 /f &&
        for font in "MS Shell Dlg" "MS Shell Dlg 2" "Segoe UI" Tahoma; do
            wine reg add "HKCU\\Software\\Wine\\Fonts\\Replacements" /v "$font" \
                /d "DejaVu Sans" /f || exit
        done' >/dev/null 2>&1 9>&-
    wineserver -w
    touch "$WINEPREFIX/.wavo-ready"
fi
status=0
xvfb-run -a -s "-screen 0 1600x1000x24" sh -c '
    wineserver -p
    wine cmd /c exit >/dev/null 2>&1 </dev/null
    exec "$@"' sh "$@" 9>&- || status=$?
exit $status
