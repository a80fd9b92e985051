#!/usr/bin/env bash
# Runs a simulated mill on LinuxCNC, without display and without realtime kernel, as an ordinary user.
#
#   tools/linuxcnc/start.sh [-b COMMAND] [-l] -w FOLDER [PROGRAM.ngc ...]
#   tools/linuxcnc/start.sh --check     only says whether it could, by its exit status
#
#   -w FOLDER    where it runs: sim.ini, sim.hal and the like are copied there once; what is there
#                already stays. The file `stop` in it ends the run in order
#   -b COMMAND   runs beside it in FOLDER, from when the machine is switched on and homed until the
#                end; its exit status is written to the file `beside`
#   -l           runs the programs again and again until the end; without it the machine stays on
#                behind the last one
#
# Says "machine: on" when the machine is switched on and homed. SIGTERM and SIGINT end it in order, too.
# Exit status 0: everything worked; 77: there is no LinuxCNC here, or it cannot run beside others.
set -u
if [ "${1:-}" = --inside ]; then
    # The lock of the package's own script is one for the whole computer.
    sed "s|^LOCKFILE=.*|LOCKFILE='$PWD/linuxcnc.lock'|" "$(command -v linuxcnc)" >linuxcnc.sh
    exec bash linuxcnc.sh -r "$PWD/sim.ini"
fi
here=$(cd "$(dirname "$0")" && pwd)
folder=
export SIM_BESIDE='' SIM_LOOP='' SIM_PROGRAMS
check=
[ "${1:-}" != --check ] || { check=1; shift; }
while getopts w:b:l option; do
    case $option in
        w) folder=$OPTARG ;;
        b) SIM_BESIDE=$OPTARG ;;
        l) SIM_LOOP=1 ;;
        *) exit 2 ;;
    esac
done
shift $((OPTIND - 1))
SIM_PROGRAMS="$*"
[ -n "$folder$check" ] || { echo "start.sh: -w FOLDER is missing" >&2; exit 2; }
export PATH=$PATH:/usr/sbin:/sbin
command -v linuxcnc >/dev/null || { echo "start.sh: there is no LinuxCNC here" >&2; exit 77; }
[ "$(id -u)" != 0 ] || { echo "start.sh: not as root; see as-user.sh" >&2; exit 77; }

# Its shared memory, the names of its processes and its network port are one set per computer.
apart=(unshare --map-current-user -i -m -p -n -f --mount-proc --kill-child)
"${apart[@]}" true || { echo "start.sh: namespaces are not allowed here" >&2; exit 77; }
[ -z "$check" ] || exit 0

mkdir -p "$folder" || exit 1
cp -n "$here"/sim.* "$here"/*.ngc "$here"/drive.py "$folder" || exit 1
cd "$folder" || exit 1
rm -f stop beside linuxcnc.lock
socket=$(mktemp -d /tmp/sim.XXXXXX) || exit 1 # the path of a socket is short
export RTAPI_FIFO_PATH=$socket/rtapi HOME=$PWD
unset DISPLAY WAYLAND_DISPLAY
"${apart[@]}" bash "$here/start.sh" --inside </dev/null &
child=$!
trap 'touch stop' TERM INT
wait $child
result=$?
while kill -0 $child 2>/dev/null; do
    wait $child
    result=$?
done
rm -rf "$socket"
exit $result
