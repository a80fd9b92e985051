#!/usr/bin/env bash
# Walks the viewer as what reads the screen does: from another process, over AT-SPI, on a display
# of its own. Exit status 77: something that this takes is not installed.
#
#   tests/ui/access/at_spi.sh <viewer> <graph file>
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
python=/usr/bin/python3 # the system's own: the libraries are installed for that one

missing=()
for tool in Xvfb dbus-run-session "$python"; do
    command -v "$tool" >/dev/null || missing+=("$tool")
done
launcher=
for folder in /usr/libexec /usr/lib/at-spi2-core; do
    [ -x "$folder/at-spi-bus-launcher" ] && launcher=$folder/at-spi-bus-launcher
done
[ -n "$launcher" ] || missing+=(at-spi2-core)
if [ ${#missing[@]} -eq 0 ] &&
    ! "$python" -c "import gi; gi.require_version('Atspi', '2.0')" 2>/dev/null; then
    missing+=(python3-gi gir1.2-atspi-2.0)
fi
if [ ${#missing[@]} -ne 0 ]; then
    echo "THE PROGRAM WAS NOT WALKED OVER AT-SPI: missing are ${missing[*]}" >&2
    exit 77
fi

place=$(mktemp -d)
display_process=
clean() {
    if [ -n "$display_process" ]; then
        kill "$display_process" 2>/dev/null
        wait "$display_process" 2>/dev/null || true # it takes its number's socket away at its end
    fi
    rm -rf "$place"
}
trap clean EXIT
mkdir -m 700 "$place/run"
export HOME=$place XDG_RUNTIME_DIR=$place/run XDG_DATA_HOME=$place/data \
    XDG_CONFIG_HOME=$place/config XDG_STATE_HOME=$place/state XDG_CACHE_HOME=$place/cache
# The display takes a number that is free and tells it. It must not start anew when the last of its
# clients leaves (what serves AT-SPI looks in and leaves): who comes at that moment is turned away.
mkfifo "$place/number"
Xvfb -displayfd 3 -screen 0 1366x768x24 -nolisten tcp -noreset 3>"$place/number" 2>/dev/null &
display_process=$!
read -r number <"$place/number"
export DISPLAY=:$number QT_QPA_PLATFORM=xcb QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 LC_ALL=C.UTF-8
status=0
dbus-run-session -- "$python" "$here/at_spi.py" "$@" 2>"$place/said" || status=$?
grep -vE '^(dbus-daemon|SpiRegistry|X connection)' "$place/said" >&2 || true
exit $status
