#!/usr/bin/env bash
# Starts a simulated mill on LinuxCNC with a program in a loop, wavo_linuxcnc on it, and the viewer. As
# root all of it runs as an ordinary user.
#
#   tools/linuxcnc/demo.sh <build folder> yes|no <screenshot>     yes: headless
set -euo pipefail
cd "$(dirname "$0")/../.."
bin=$PWD/$1
headless=$2
screenshot=$3
tools=$PWD/tools/linuxcnc

folder=$(mktemp -d /tmp/wavo-cnc.XXXXXX)
mill_pid=
end_all() {
    trap - EXIT INT TERM HUP
    touch "$folder/mill/stop" 2>/dev/null || true
    [ -z "$mill_pid" ] || wait "$mill_pid" 2>/dev/null || true
    rm -rf "$folder"
}
trap end_all EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP
as_user() { "$tools/as-user.sh" "$folder" "$@"; }

as_user "$tools/start.sh" --check || { echo "No LinuxCNC controller can run here" >&2; exit 1; }
echo "==> Starting a simulated mill on LinuxCNC: circles and drilling in a loop"
# What a user does once: the wiring is made, here it is loaded into the running controller.
setup="'$bin/master/linuxcnc/wavo_linuxcnc' --setup sim.ini --write && exec halcmd -f wavo.hal"
as_user "$tools/start.sh" -w "$folder/mill" -l -b "$setup" circles.ngc drill.ngc >"$folder/log" 2>&1 &
mill_pid=$!
for _ in $(seq 120); do
    grep -q '^wavo_linuxcnc: window' "$folder/log" && break
    kill -0 $mill_pid 2>/dev/null || break
    sleep 0.5
done
grep '^wavo_linuxcnc: window' "$folder/log" ||
    { tail -n 20 "$folder/log" >&2; echo "The controller did not start" >&2; exit 1; }

graphs=$PWD/data/graphs/linuxcnc_mill.ini
viewer=("$bin/src/ui/shell/wavo")
if [ "$headless" = yes ]; then
    mkdir -p "$(dirname "$screenshot")"
    echo "==> No display: running the viewer headless for some seconds"
    # The warnings are those of a window system that is not there.
    as_user env QT_QPA_PLATFORM=offscreen QT_LOGGING_RULES=default.warning=false timeout 90 \
        "${viewer[@]}" --screenshot "$folder/shot.png" --after-lines 14000 "$graphs" ||
        { echo "The viewer got no values" >&2; exit 1; }
    cp "$folder/shot.png" "$screenshot"
    echo "Screenshot: $screenshot"
else
    echo "==> Starting the viewer: close its window or press Ctrl-C here to end all"
    # The ordinary user needs the key of the display, too.
    key=${XAUTHORITY:-$HOME/.Xauthority}
    if [ "$(id -u)" = 0 ] && [ -r "$key" ]; then
        install -o 65534 -m 600 "$key" "$folder/Xauthority"
        export XAUTHORITY=$folder/Xauthority
    fi
    as_user "${viewer[@]}" "$graphs" || true
fi
